// The answer check must detect each kind of fault: a fuzzer that asserts nothing finds nothing.
#include "answer_check.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

struct Fields {
  std::string line = "0";
  std::string children = "[]";
  std::string id = "0";
  std::string parent = "-1";
  std::string label = "filepath";
  std::string path = "it\\'s.js";
  std::string tags = "[]";
  std::string contents = "a";
  std::string comma = "";
};

std::string record(const Fields& fields) {
  return "  {\n    \"lineNumber\": " + fields.line +
         ",\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n    \"childNodeIDs\": " +
         fields.children + ",\n    \"nodeID\": " + fields.id +
         ",\n    \"parentID\": " + fields.parent +
         ",\n    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n"
         "    \"branchTypeAsString\": \"" +
         fields.label + "\",\n    \"filePath\": \"" + fields.path +
         "\",\n    \"tags\": " + fields.tags + ",\n    \"contents\": \"" + fields.contents +
         "\",\n    \"simpleFunctionName\": \"\",\n    \"calloutIDs\": []\n  }" + fields.comma +
         "\n";
}

const Fields kFile{.children = "[   \n      1\n    ]", .comma = ","};
const Fields kChild{.line = "2", .id = "1", .parent = "0", .label = "line"};

std::string answerOf(const Fields& first, const Fields& second) {
  return "[\n" + record(first) + record(second) + "]\n";
}

std::string faultOf(const std::string& answer) {
  return fuzz::checkAnswer(answer, "it's.js", 3).fault;
}

TEST(AnswerCheck, FindsNothingInAnAnswer) {
  const fuzz::AnswerCheck check = fuzz::checkAnswer(answerOf(kFile, kChild), "it's.js", 3);
  EXPECT_EQ(check.fault, "");
  EXPECT_EQ(check.records, 2u);
}

// Each row changes one field of a good answer's first or second record.
struct Change {
  const char* name;
  std::string Fields::*field;
  std::string value;
  std::string fault;  // how the reported fault begins
};

std::string faultWith(Fields first, Fields second, bool inFirst, const Change& change) {
  (inFirst ? first : second).*change.field = change.value;
  return faultOf(answerOf(first, second)).substr(0, change.fault.size());
}

TEST(AnswerCheck, FindsWhatIsWrongWithTheFile) {
  const Change kChanges[] = {
      {"no comma", &Fields::comma, "", "expected a comma before the record"},
      {"label", &Fields::label, "line", "the first record is the file's"},
      {"parent", &Fields::parent, "0", "the first record is the file's"},
      {"lost child", &Fields::children, "[]", "record 1: the parent names it as a child"},
      {"itself", &Fields::children, "[   \n      0\n    ]", "record 0: a child names it"},
      {"a child too many", &Fields::children, "[   \n      1,\n      2\n    ]",
       "record 0: a child names it"},
      {"not in order", &Fields::children, "[   \n      1,\n      0\n    ]",
       "record 0: the children are in order"},
      {"no comma between children", &Fields::children, "[   \n      1\n      2\n    ]",
       "expected a comma before the child"},
      {"blanks behind the bracket", &Fields::children, "[\n      1\n    ]", "expected    "},
  };
  for (const Change& change : kChanges) {
    EXPECT_EQ(faultWith(kFile, kChild, true, change), change.fault) << change.name;
  }
}

TEST(AnswerCheck, FindsWhatIsWrongWithARecord) {
  const Change kChanges[] = {
      {"comma at the end", &Fields::comma, ",", "expected no comma behind the last record"},
      {"number", &Fields::id, "2", "record 1: the numbers are dense"},
      {"no plain number", &Fields::id, "01", "expected a plain number"},
      {"no number", &Fields::id, "x", "expected a number"},
      {"line", &Fields::line, "4", "record 1: the line is one of the file's"},
      {"line below the file", &Fields::line, "-1", "record 1: the line is one of the file's"},
      {"lost parent", &Fields::parent, "-1", "record 0: a child names it as the parent"},
      {"parent behind it", &Fields::parent, "1", "record 0: a child names it as the parent"},
      {"label", &Fields::label, "lines", "expected a label"},
      {"path", &Fields::path, "it's.js", "expected it\\'s.js"},
      {"tag", &Fields::tags, "[\n      \"tag\"\n]", "expected a tag"},
      {"later tag first", &Fields::tags, "[    \"variable\"\n]", "expected a tag"},
      {"quote", &Fields::contents, "it's", "expected a byte that is escaped"},
      {"line feed", &Fields::contents, "a\nb", "expected a byte that is escaped"},
      {"escape", &Fields::contents, "a\\b", "expected an escape that there is"},
      {"open end", &Fields::contents, "a\\", "expected a byte that is escaped"},
  };
  for (const Change& change : kChanges) {
    EXPECT_EQ(faultWith(kFile, kChild, false, change), change.fault) << change.name;
  }
}

TEST(AnswerCheck, KnowsWhatOnlyLooksWrong) {
  Fields file = kFile;
  Fields child = kChild;
  child.tags = "[\n      \"href\"\n    \"variable\"\n]";
  child.contents = "\\\"\\'\\\\\\n\\r\\t";
  EXPECT_EQ(faultOf(answerOf(file, child)), "") << "tags and escapes";

  child.label = "function";
  child.contents = "TTTTT";
  file.children = "[   \n    ]";
  EXPECT_EQ(faultOf(answerOf(file, child)), "") << "a hidden child";

  child = kChild;
  child.parent = "-1";
  file.children = "[]";
  EXPECT_EQ(faultOf(answerOf(file, child)), "") << "a record without a parent";
}

TEST(AnswerCheck, FindsWhatIsNoArray) {
  EXPECT_EQ(faultOf("[]").substr(0, 10), "expected [");
  EXPECT_EQ(faultOf("[\n]\n"), "the first record is the file's");
  EXPECT_EQ(faultOf(answerOf(kFile, kChild) + "x"), "expected the end of the answer at: x");
}

}  // namespace
