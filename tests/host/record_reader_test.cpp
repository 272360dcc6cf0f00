#include "records/record_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "record_text_of.h"

namespace {

using host::Record;
using host::RecordReader;

std::vector<std::int32_t> childrenOf(const std::string& written) {
  const std::string answer = answerText({{.children = written}});
  RecordReader reader(answer);
  const Record* const record = reader.next();
  return record == nullptr ? std::vector<std::int32_t>{-1} : record->childNodeIds;
}

std::vector<std::string_view> tagsOf(const std::string& answer) {
  RecordReader reader(answer);
  const Record* const record = reader.next();
  return record == nullptr ? std::vector<std::string_view>{"refused"} : record->tags;
}

// The contents that the reader makes of the written text; "refused" if it takes no such record.
std::string contentsOf(const std::string& written) {
  const std::string answer = answerText({{.contents = written}});
  RecordReader reader(answer);
  const Record* const record = reader.next();
  return record == nullptr ? "refused" : std::string(record->contents);
}

TEST(RecordReader, GivesEveryValueOfARecord) {
  const std::string answer = answerText({{.lineNumber = 12,
                                          .children = "   \n      4,\n      5\n    ],\n",
                                          .nodeId = 3,
                                          .parentId = 2,
                                          .label = "function",
                                          .filePath = "src/a.js",
                                          .tags = "\n      \"constructor\"\n",
                                          .contents = "function A() {",
                                          .simpleFunctionName = "A"}});
  RecordReader reader(answer);
  const Record* const record = reader.next();
  ASSERT_NE(record, nullptr) << reader.fault();
  EXPECT_EQ(record->lineNumber, 12);
  EXPECT_EQ(record->childNodeIds, (std::vector<std::int32_t>{4, 5}));
  EXPECT_EQ(record->nodeId, 3);
  EXPECT_EQ(record->parentId, 2);
  EXPECT_EQ(record->functionId, -1);
  EXPECT_EQ(record->label, "function");
  EXPECT_EQ(record->filePath, "src/a.js");
  EXPECT_EQ(record->tags, (std::vector<std::string_view>{"constructor"}));
  EXPECT_EQ(record->contents, "function A() {");
  EXPECT_EQ(record->simpleFunctionName, "A");
  EXPECT_EQ(reader.next(), nullptr);
  EXPECT_EQ(reader.fault(), "");
  EXPECT_EQ(reader.recordCount(), 1U);
}

TEST(RecordReader, KeepsNothingOfTheRecordBefore) {
  const std::string answer = answerText({{.children = "   \n      1\n    ],\n",
                                          .filePath = "it\\'s.js",
                                          .tags = "\n      \"iife\"\n",
                                          .contents = "a\\tb",
                                          .simpleFunctionName = "x\\\\"},
                                         {.nodeId = 1, .parentId = 0, .filePath = "it\\'s.js"},
                                         {.nodeId = 2, .filePath = "it\\'s.jsx"}});
  RecordReader reader(answer);
  ASSERT_NE(reader.next(), nullptr);
  const Record* record = reader.next();
  ASSERT_NE(record, nullptr) << reader.fault();
  EXPECT_TRUE(record->childNodeIds.empty());
  EXPECT_TRUE(record->tags.empty());
  EXPECT_EQ(record->filePath, "it's.js");
  EXPECT_EQ(record->contents, "a;");
  EXPECT_EQ(record->simpleFunctionName, "");
  record = reader.next();
  ASSERT_NE(record, nullptr) << reader.fault();
  EXPECT_EQ(record->filePath, "it's.jsx");
  EXPECT_EQ(reader.next(), nullptr);
  EXPECT_EQ(reader.recordCount(), 3U);
}

TEST(RecordReader, ReadsAnAnswerWithoutRecords) {
  RecordReader reader("[\n]\n");
  EXPECT_EQ(reader.next(), nullptr);
  EXPECT_EQ(reader.fault(), "");
  EXPECT_EQ(reader.recordCount(), 0U);
}

TEST(RecordReader, ReadsChildListsWithTheirQuirks) {
  using Ids = std::vector<std::int32_t>;
  EXPECT_EQ(childrenOf("],\n"), Ids{});
  EXPECT_EQ(childrenOf("   \n      7\n    ],\n"), Ids{7});
  EXPECT_EQ(childrenOf("   \n      7,\n      9\n    ],\n"), (Ids{7, 9}));
  EXPECT_EQ(childrenOf("   ,\n      8,\n      9\n    ],\n"), (Ids{8, 9})) << "hidden first child";
  EXPECT_EQ(childrenOf("   \n    ],\n"), Ids{}) << "the only child is hidden";
  EXPECT_EQ(childrenOf("   \n      7\n      8\n    ],\n"), Ids{-1}) << "no comma";
  EXPECT_EQ(childrenOf("   \n      7,\n    ],\n"), Ids{-1}) << "comma behind the last";
  EXPECT_EQ(childrenOf("   \n      07\n    ],\n"), Ids{-1}) << "leading zero";
  EXPECT_EQ(childrenOf("   \n      +7\n    ],\n"), Ids{-1});
  EXPECT_EQ(childrenOf("   \n      -0\n    ],\n"), Ids{-1});
  EXPECT_EQ(childrenOf("   \n      2147483647\n    ],\n"), Ids{2147483647});
  EXPECT_EQ(childrenOf("   \n      2147483648\n    ],\n"), Ids{-1}) << "more than 32 bits";
  EXPECT_EQ(childrenOf("   \n      -2147483648\n    ],\n"), Ids{-2147483647 - 1});
  EXPECT_EQ(childrenOf("   \n      -2147483649\n    ],\n"), Ids{-1}) << "more than 32 bits";
  EXPECT_EQ(childrenOf("   \n      4294967296\n    ],\n"), Ids{-1}) << "0 in 32 bits";
  EXPECT_EQ(childrenOf("   \n      18446744073709551617\n    ],\n"), Ids{-1}) << "1 in 64 bits";
  EXPECT_EQ(childrenOf("   \n      -\n    ],\n"), Ids{-1}) << "no digits";
}

TEST(RecordReader, ReadsTagsWithTheirQuirks) {
  using Tags = std::vector<std::string_view>;
  struct Case {
    std::string written;
    Tags tags;
    std::string_view why;
  };
  const std::vector<Case> cases = {
      {"", {}, "none"},
      {"\n      \"href\"\n", {"href"}, "one"},
      {"\n      \"iife\"\n\n      \"global-function\"\n", {"iife", "global-function"}, "appended"},
      {"\n      \"auto-generated\"\n      \"scope-wrapper\"\n",
       {"auto-generated", "scope-wrapper"},
       "no empty line"},
      {"\n      \"href\"\n    \"variable\"\n", {"href", "variable"}, "four blanks"},
      {"    \"variable\"\n", {"refused"}, "four blanks at the start"},
      {"\n      \"a\",\n      \"b\"\n", {"refused"}, "a comma"},
      {"\n      \"a\\\"b\"\n", {"refused"}, "a backslash"},
      {"\n      \"\xc3\xa9\"\n", {"refused"}, "no ASCII"}};
  for (const Case& row : cases) {
    const std::string answer = answerText({{.tags = row.written}});
    EXPECT_EQ(tagsOf(answer), row.tags) << row.why;
  }
}

TEST(RecordReader, UndoesEveryEscape) {
  EXPECT_EQ(contentsOf(R"(\"\'\\\n\r\t)"), "\"'\\\n\r\t");
  EXPECT_EQ(contentsOf(R"(\\n)"), "\\n") << "a backslash, then a letter";
  EXPECT_EQ(contentsOf(R"(\\\n)"), "\\\n");
  EXPECT_EQ(contentsOf(R"(\\)"), "\\") << "the quote behind it closes";
  EXPECT_EQ(contentsOf("/\x01\x0b\x0c\x7f\xff"), "/\x01\x0b\x0c\x7f\xff") << "as they are";
  EXPECT_EQ(contentsOf(R"(\",\n    \"simpleFunctionName\": \")"),
            "\",\n    \"simpleFunctionName\": \"")
      << "a text that looks like the layout";
}

TEST(RecordReader, RefusesTextsThatTheModuleDoesNotWrite) {
  for (const std::string_view written :
       {"it's", "a\nb", "a\rb", "a\tb", R"(\u0041)", R"(\/)", R"(\b)", R"(\)", "\""}) {
    EXPECT_EQ(contentsOf(std::string(written)), "refused") << written;
  }
}

TEST(RecordReader, TellsWhereTheTextLeavesTheLayout) {
  const std::string good = answerText({{}, {.nodeId = 1}});
  struct Case {
    std::string text;
    std::string fault;
  };
  const auto sizeOf = [](const std::string& text) { return std::to_string(text.size()); };
  const std::string cut = good.substr(0, good.size() - 3);
  const std::vector<Case> cases = {
      {"", "in record 0, near byte 0 of 0"},
      {"[{\"error\": \"File is empty: a.js\"}]", "in record 0, near byte 0 of 34"},
      {"[\n", "in record 0, near byte 2 of 2"},
      {cut, "in record 1, near byte " + sizeOf(cut) + " of " + sizeOf(cut)},
      {good + "[", "in record 1, near byte " + sizeOf(good) + " of " + sizeOf(good + "[")},
      {"[\n]\n\n", "in record 0, near byte 4 of 5"}};
  for (const Case& row : cases) {
    RecordReader reader(row.text);
    while (reader.next() != nullptr) continue;
    EXPECT_EQ(reader.fault(), "the answer leaves the record format " + row.fault) << row.text;
    EXPECT_EQ(reader.next(), nullptr);
  }
}

std::vector<std::string> caseAnswers() {
  std::vector<std::string> answers;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(QUORL_CASES)) {
    if (entry.path().filename() != "expected.records") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    answers.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  std::sort(answers.begin(), answers.end());  // a folder has its files in any order
  return answers;
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char byte : text) {
    switch (byte) {
      case '\n':
        result += "\\n";
        break;
      case '\r':
        result += "\\r";
        break;
      case '\t':
        result += "\\t";
        break;
      case '"':
      case '\'':
      case '\\':
        result += '\\';
        [[fallthrough]];
      default:
        result += byte;
    }
  }
  return result;
}

// Reads the answer and writes it again without quirks. Empty if it was refused.
std::string rewritten(const std::string& answer) {
  std::vector<TestRecord> records;
  RecordReader reader(answer);
  while (const Record* const record = reader.next()) {
    TestRecord& copy = records.emplace_back();
    copy.lineNumber = record->lineNumber;
    copy.nodeId = record->nodeId;
    copy.parentId = record->parentId;
    copy.functionId = record->functionId;
    copy.label = record->label;
    copy.filePath = escaped(record->filePath);
    copy.contents = escaped(record->contents);
    copy.simpleFunctionName = escaped(record->simpleFunctionName);
    for (const auto child : record->childNodeIds) {
      copy.children = (copy.children.front() == ']' ? "   \n      " : copy.children + ",\n      ") +
                      std::to_string(child);
    }
    if (!record->childNodeIds.empty()) copy.children += "\n    ],\n";
    for (const auto tag : record->tags) {
      copy.tags += (copy.tags.empty() ? "\n      \"" : "      \"") + std::string(tag) + "\"\n";
    }
  }
  return reader.fault().empty() ? answerText(records) : "";
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
    text.replace(at, from.size(), to);
  }
}

// The answer with each quirk of the layout in its plain form. None of the texts that are replaced
// can stand inside a text of a record, since they hold line feeds.
std::string withoutQuirks(std::string answer) {
  replaceAll(answer, "[   ,\n", "[   \n");
  replaceAll(answer, "[   \n    ],\n", "[],\n");
  replaceAll(answer, "\"\n    \"", "\"\n      \"");
  replaceAll(answer, "\"\n\n      \"", "\"\n      \"");
  return answer;
}

TEST(RecordReader, ReadsEveryCaseWhole) {
  const std::vector<std::string> answers = caseAnswers();
  ASSERT_GT(answers.size(), 40U);
  for (const std::string& answer : answers) EXPECT_EQ(rewritten(answer), withoutQuirks(answer));
}

TEST(RecordReader, RefusesEveryAnswerThatIsCut) {
  for (const std::string& answer : caseAnswers()) {
    for (std::size_t size = 0; size < answer.size(); size += 1 + size / 64) {
      EXPECT_EQ(rewritten(answer.substr(0, size)), "") << size;
    }
    EXPECT_EQ(rewritten(answer.substr(0, answer.size() - 1)), "");
  }
}

// Whatever is taken could have been written by the module: writing it again gives the same bytes.
TEST(RecordReader, TakesNothingThatItCouldNotWriteAgain) {
  const std::vector<std::string> answers = caseAnswers();
  constexpr std::string_view kBytes = "\"'\\\n\r\t,[]{}:0123456789-+ abnrtu\x01\x7f\xc3\xff";
  std::mt19937 random(8);
  const auto below = [&random](std::size_t limit) { return random() % limit; };
  std::size_t taken = 0;
  for (int round = 0; round < 20'000; ++round) {
    std::string answer = answers[below(answers.size())].substr(0, 4000);
    const std::size_t end = answer.rfind("  },\n");
    if (end != std::string::npos && answer.size() == 4000) {
      answer.replace(end, std::string::npos, "  }\n]\n");
    }
    for (std::size_t changes = 1 + below(3); changes > 0 && !answer.empty(); --changes) {
      const std::size_t at = below(answer.size());
      switch (below(4)) {
        case 0:
          answer[at] = kBytes[below(kBytes.size())];
          break;
        case 1:
          answer.insert(at, 1, kBytes[below(kBytes.size())]);
          break;
        case 2:
          answer.erase(at, 1 + below(8));
          break;
        default:
          answer.insert(at, answer.substr(below(answer.size()), 1 + below(40)));
      }
    }
    const std::string again = rewritten(answer);
    if (again.empty()) continue;
    ++taken;
    ASSERT_EQ(again, withoutQuirks(answer));
  }
  EXPECT_GT(taken, 100U) << "those changes that hit a text or a number only";
}

}  // namespace
