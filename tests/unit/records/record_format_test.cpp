// The bytes of a record: escaping, the keys and their order, the child list, the tags, and a whole
// answer.
#include "records/record_format.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/plugin_api.h"
#include "records/record_pass.h"
#include "support/capture.h"
#include "support/make_tree.h"
#include "support/temp_dir.h"
#include "tree/object_branch.h"

namespace {

struct EscapeCase {
  std::string_view text;
  std::string_view escaped;
  const char* why;
};

using namespace std::string_view_literals;

constexpr EscapeCase kEscapes[] = {
    {"", "", "nothing"},
    {"abc", "abc", "nothing to escape"},
    {"a\tb", "a\\tb", ""},
    {"it's", "it\\'s", "required: a single quote is escaped in double-quoted text"},
    {"var a = \"x\";", "var a = \\\"x\\\";", ""},
    {"C:\\dir", "C:\\\\dir", ""},
    {"\\n", "\\\\n", "a backslash and an n are two bytes"},
    {"\\\\", "\\\\\\\\", "each backslash for itself"},
    {"\\\"", "\\\\\\\"", ""},
    {"a\nb\r\nc", "a\\nb\\r\\nc", ""},
    {"\n", "\\n", "a lone byte"},
    {"'\"\\\n\r\t", "\\'\\\"\\\\\\n\\r\\t", "all six in a row"},
    {"</script>", "</script>", "a slash stays"},
    {"\b\f\v\x01\x1F\x7F", "\b\f\v\x01\x1F\x7F", "required: other control bytes stay"},
    {"caf\xC3\xA9 \xFF", "caf\xC3\xA9 \xFF", "bytes above 0x7F stay"},
    {"a\0b'\0"sv, "a\0b\\'\0"sv, "a NUL is a byte like others"},
};

TEST(EscapeString, PutsABackslashBeforeSpecialBytes) {
  for (const EscapeCase& row : kEscapes) {
    SCOPED_TRACE(testing::PrintToString(std::string(row.text)) + "  // " + row.why);
    EXPECT_EQ(EscapeString(std::string(row.text)), row.escaped);
  }
}

TEST(EscapeString, ChangesSixOfAllBytes) {
  for (int value = 0; value < 256; ++value) {
    const std::string byte(1, static_cast<char>(value));
    std::string_view expected = byte;
    if (byte == "\"") expected = "\\\"";
    if (byte == "'") expected = "\\'";
    if (byte == "\\") expected = "\\\\";
    if (byte == "\n") expected = "\\n";
    if (byte == "\r") expected = "\\r";
    if (byte == "\t") expected = "\\t";
    EXPECT_EQ(EscapeString(byte), expected) << value;
  }
}

TEST(EscapeString, EscapesALongTextByteByByte) {
  constexpr std::string_view kAlphabet = "\"'\\\n\r\tax/\0\xE9 "sv;
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::string text, expected;
    for (std::size_t length = random() % 40; length > 0; --length) {
      text += kAlphabet[random() % kAlphabet.size()];
      expected += EscapeString(std::string(1, text.back()));
    }
    ASSERT_EQ(EscapeString(text), expected) << testing::PrintToString(text);
  }
}

std::string recordOf(const ObjectBranch& node, std::int32_t hiddenChildId, bool isLast) {
  std::vector<std::int32_t> childIds;
  for (const ObjectBranch* child : node.children) childIds.push_back(child->nodeID);
  records::RecordText out;
  const std::int32_t parentId = node.parent == nullptr ? -1 : node.parent->nodeID;
  records::appendRecord(out, node, EscapeString(node.filePath), {parentId, childIds, hiddenChildId},
                        isLast);
  return std::string(out.view());
}

TEST(Record, WritesFifteenKeysInOrder) {
  ObjectBranch parent;
  parent.nodeID = 12;
  ObjectBranch node;
  node.parent = &parent;
  node.nodeID = 34;
  node.lineNumber = 56;
  node.functionID = 78;
  node.branchType = kBranchLoop;
  node.branchTypeAsString = "a \"label\" isn't escaped";
  node.filePath = "dir/it's.js";
  node.tags = "\n      \"one\"\n";
  node.contents = "x = \"\\\t\";";
  node.simpleFunctionName = "('a')";
  const std::string expected =
      "  {\n"
      "    \"lineNumber\": 56,\n"
      "    \"lineage\": \"\",\n"
      "    \"argumentList\": \"\",\n"
      "    \"childNodeIDs\": [],\n"
      "    \"nodeID\": 34,\n"
      "    \"parentID\": 12,\n"
      "    \"fileID\": 0,\n"
      "    \"functionID\": 78,\n"
      "    \"isCalled\": false,\n"
      "    \"branchTypeAsString\": \"a \"label\" isn't escaped\",\n"
      "    \"filePath\": \"dir/it\\'s.js\",\n"
      "    \"tags\": [\n      \"one\"\n],\n"
      "    \"contents\": \"x = \\\"\\\\\\t\\\";\",\n"
      "    \"simpleFunctionName\": \"(\\'a\\')\",\n"
      "    \"calloutIDs\": []\n"
      "  }";
  EXPECT_EQ(recordOf(node, 0, true), expected + "\n");
  EXPECT_EQ(recordOf(node, 0, false), expected + ",\n");
  records::RecordText out;
  out.append("[\n");
  records::appendRecord(out, node, "dir/it\\'s.js", {12, {}, 0}, true);
  EXPECT_EQ(out.view(), "[\n" + expected + "\n") << "what is there already stays";
}

TEST(Record, OfABareNodeContainsTheDefaults) {
  EXPECT_EQ(recordOf(ObjectBranch{}, 0, true),
            "  {\n"
            "    \"lineNumber\": 0,\n"
            "    \"lineage\": \"\",\n"
            "    \"argumentList\": \"\",\n"
            "    \"childNodeIDs\": [],\n"
            "    \"nodeID\": -1,\n"
            "    \"parentID\": -1,\n"
            "    \"fileID\": 0,\n"
            "    \"functionID\": -1,\n"
            "    \"isCalled\": false,\n"
            "    \"branchTypeAsString\": \"\",\n"
            "    \"filePath\": \"\",\n"
            "    \"tags\": [],\n"
            "    \"contents\": \"\",\n"
            "    \"simpleFunctionName\": \"\",\n"
            "    \"calloutIDs\": []\n"
            "  }\n");
}

TEST(Record, WritesNumbersAsSignedDecimals) {
  ObjectBranch parent;
  parent.nodeID = std::numeric_limits<std::int32_t>::min();
  ObjectBranch node;
  node.parent = &parent;
  node.nodeID = std::numeric_limits<std::int32_t>::max();
  node.lineNumber = -1000000;
  node.functionID = 1234567;
  const std::string text = recordOf(node, 0, true);
  EXPECT_NE(text.find("    \"lineNumber\": -1000000,\n"), std::string::npos) << text;
  EXPECT_NE(text.find("    \"nodeID\": 2147483647,\n"), std::string::npos) << text;
  EXPECT_NE(text.find("    \"parentID\": -2147483648,\n"), std::string::npos) << text;
  EXPECT_NE(text.find("    \"functionID\": 1234567,\n"), std::string::npos) << text;
}

TEST(Record, WritesEveryFunctionNumber) {
  for (const std::int32_t id : {-2, -1, 0, 1}) {
    ObjectBranch node;
    node.functionID = id;
    const std::string line = "    \"functionID\": " + std::to_string(id) + ",\n";
    EXPECT_NE(recordOf(node, 0, true).find(line), std::string::npos) << line;
  }
}

struct ChildListCase {
  std::array<std::int32_t, 4> children;  // up to the first 0
  std::int32_t hidden;
  const char* text;
  const char* why;
};

constexpr ChildListCase kChildLists[] = {
    {{}, 0, "],\n", "no children"},
    {{}, 7, "],\n", "no children, whatever is hidden"},
    {{7}, 0, "   \n      7\n    ],\n", "three blanks end the bracket's line"},
    {{7, 8}, 0, "   \n      7,\n      8\n    ],\n", ""},
    {{7, 8, 9}, 0, "   \n      7,\n      8,\n      9\n    ],\n", ""},
    {{7, 8, 9}, 8, "   \n      7,\n      9\n    ],\n", "hidden in the middle"},
    {{7, 8, 9}, 9, "   \n      7,\n      8\n    ],\n", "hidden at the end"},
    {{7, 8}, 7, "   ,\n      8\n    ],\n", "required: hidden in front leaves its comma"},
    {{7, 8, 9}, 7, "   ,\n      8,\n      9\n    ],\n", "required"},
    {{7}, 7, "   \n    ],\n", "the only child is hidden"},
    {{7, 7}, 7, "   \n    ],\n", "all are hidden"},
    {{7, 8}, 78, "   \n      7,\n      8\n    ],\n", "another id"},
};

// A record with all that makes it long: it takes just as much room as is asked for, and no more.
TEST(Record, FitsIntoTheRoomThatIsAskedFor) {
  constexpr std::int32_t kLong = std::numeric_limits<std::int32_t>::min();
  constexpr std::array<std::int32_t, 3> kChildren{kLong, kLong, kLong};
  const std::string quotes(100, '"');
  const std::string escaped = EscapeString(quotes);
  ObjectBranch node;
  node.lineNumber = node.functionID = node.nodeID = kLong;
  node.contents = node.simpleFunctionName = quotes;
  node.branchTypeAsString = node.tags = "t";
  records::RecordText text;
  records::appendRecord(text, node, escaped, {kLong, kChildren, 0}, false);
  const std::size_t size = text.view().size();
  EXPECT_EQ(std::move(text).take().capacity, size + size / 16 + 1);

  records::MallocText memory(static_cast<char*>(std::malloc(size)));
  const char* const begin = memory.get();
  records::RecordText exact(std::move(memory), size);
  records::appendRecord(exact, node, escaped, {kLong, kChildren, 0}, false);
  EXPECT_EQ(exact.view().size(), size);
  EXPECT_EQ(exact.view().data(), begin) << "more room was asked for than there is";
}

TEST(Record, ListsAllChildrenExceptTheHiddenOne) {
  for (const ChildListCase& row : kChildLists) {
    SCOPED_TRACE(testing::PrintToString(row.children) + " hidden " + std::to_string(row.hidden) +
                 "  // " + row.why);
    std::array<ObjectBranch, 4> nodes;
    ObjectBranch node;
    for (std::size_t i = 0; i < row.children.size() && row.children[i] != 0; ++i) {
      nodes[i].nodeID = row.children[i];
      node.children.push_back(&nodes[i]);
    }
    const std::string text = recordOf(node, row.hidden, true);
    const std::string head = "    \"childNodeIDs\": [";
    const std::size_t from = text.find(head);
    const std::size_t to = text.find("    \"nodeID\": ");
    ASSERT_NE(from, std::string::npos);
    ASSERT_NE(to, std::string::npos);
    EXPECT_EQ(text.substr(from + head.size(), to - from - head.size()), row.text);
  }
}

struct TagsCase {
  const char* label;  // of the parent
  const char* tags;   // before the pass
  const char* contents;
  const char* text;  // from the key to the end of its value
  const char* why;
};

constexpr TagsCase kTags[] = {
    {"class", "", "a();", "    \"tags\": [],\n", "none"},
    {"class", "", "x = 1;", "    \"tags\": [\n      \"variable\"\n],\n", "one"},
    {"namespace", "", "(function() { x = (a) => a",
     "    \"tags\": [\n      \"iife\"\n\n      \"global-function\"\n],\n",
     "required: no comma between two, and an empty line"},
    {"htmlelement", "\n      \"href\"\n", "href: page?a=1",
     "    \"tags\": [\n      \"href\"\n    \"variable\"\n],\n",
     "required: a second tag on a line of four blanks"},
    {"class", "\n      \"auto-generated\"\n      \"scope-wrapper\"\n", "class GlobalScope",
     "    \"tags\": [\n      \"auto-generated\"\n      \"scope-wrapper\"\n],\n",
     "required: no comma"},
};

TEST(Record, WritesTheTagTextUnchangedBetweenTheBrackets) {
  for (const TagsCase& row : kTags) {
    SCOPED_TRACE(std::string(row.contents) + "  // " + row.why);
    ObjectBranch* root = support::addNode(nullptr, kBranchFilePath, "filepath", "a");
    ObjectBranch* parent = support::addNode(root, kBranchContainer, row.label, "p");
    support::addNode(parent, kBranchLine, "line", row.contents)->tags = row.tags;
    std::string answer;
    support::stdoutOf([&] { answer = StartGeneratingObjects(root, "").str(); });
    const std::size_t from = answer.rfind("    \"tags\": ");
    ASSERT_NE(from, std::string::npos);
    EXPECT_EQ(answer.substr(from, answer.rfind("    \"contents\": ") - from), row.text);
  }
}

TEST(RecordArray, WritesEachNodesOwnPath) {
  ObjectBranch* root = support::addNode(nullptr, kBranchFilePath, "filepath", "a");
  const std::string paths[] = {"it's.js", "it's.js", "", "b.js", "it's.js"};
  root->filePath = "a.js";
  for (const std::string& path : paths) {
    support::addNode(root, kBranchLine, "line", "a();")->filePath = path;
  }
  std::string answer;
  support::stdoutOf([&] { answer = StartGeneratingObjects(root, "").str(); });
  std::string written;
  const std::string_view key = "    \"filePath\": ";
  for (std::size_t at = 0; (at = answer.find(key, at)) != std::string::npos;) {
    at += key.size();
    written.append(answer, at, answer.find('\n', at) + 1 - at);
  }
  EXPECT_EQ(written,
            "\"a.js\",\n\"it\\'s.js\",\n\"it\\'s.js\",\n\"\",\n\"b.js\",\n\"it\\'s.js\",\n");
}

TEST(RecordArray, OfATreeWithoutRecordsIsTwoLines) {
  ObjectBranch* root = support::addNode(nullptr, kBranchFilePath, "filepath", ";");
  EXPECT_EQ(StartGeneratingObjects(root, "").str(), "[\n]\n");
}

// The eight pieces of the answer for a small file. PATH stands for its path.
constexpr const char* kGreetPieces[] = {
    "[\n",
    "  {\n    \"lineNumber\": 0,\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n"
    "    \"childNodeIDs\": [   \n      1\n    ],\n    \"nodeID\": 0,\n    \"parentID\": -1,\n"
    "    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n"
    "    \"branchTypeAsString\": \"filepath\",\n    \"filePath\": \"PATH\",\n"
    "    \"tags\": [],\n    \"contents\": \"greet.js\",\n"
    "    \"simpleFunctionName\": \"\",\n    \"calloutIDs\": []\n  },\n",
    "  {\n    \"lineNumber\": 0,\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n"
    "    \"childNodeIDs\": [   \n      2\n    ],\n    \"nodeID\": 1,\n    \"parentID\": 0,\n"
    "    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n"
    "    \"branchTypeAsString\": \"namespace\",\n    \"filePath\": \"PATH\",\n"
    "    \"tags\": [\n      \"javascript-file\"\n],\n    \"contents\": \"namespace global\",\n"
    "    \"simpleFunctionName\": \"\",\n    \"calloutIDs\": []\n  },\n",
    "  {\n    \"lineNumber\": 0,\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n"
    "    \"childNodeIDs\": [   \n      3,\n      5\n    ],\n    \"nodeID\": 2,\n"
    "    \"parentID\": 1,\n    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n"
    "    \"branchTypeAsString\": \"class\",\n    \"filePath\": \"PATH\",\n"
    "    \"tags\": [\n      \"main-script\"\n],\n    \"contents\": \"Greet\",\n"
    "    \"simpleFunctionName\": \"\",\n    \"calloutIDs\": []\n  },\n",
    "  {\n    \"lineNumber\": 1,\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n"
    "    \"childNodeIDs\": [   \n      4\n    ],\n    \"nodeID\": 3,\n    \"parentID\": 2,\n"
    "    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n"
    "    \"branchTypeAsString\": \"function\",\n    \"filePath\": \"PATH\",\n"
    "    \"tags\": [\n      \"constructor\"\n],\n"
    "    \"contents\": \"function Greeter(name) {\",\n"
    "    \"simpleFunctionName\": \"Greeter\",\n    \"calloutIDs\": []\n  },\n",
    "  {\n    \"lineNumber\": 2,\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n"
    "    \"childNodeIDs\": [],\n    \"nodeID\": 4,\n    \"parentID\": 3,\n"
    "    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n"
    "    \"branchTypeAsString\": \"line\",\n    \"filePath\": \"PATH\",\n"
    "    \"tags\": [\n      \"variable\"\n],\n    \"contents\": \"var label = name;\",\n"
    "    \"simpleFunctionName\": \"\",\n    \"calloutIDs\": []\n  },\n",
    "  {\n    \"lineNumber\": 4,\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n"
    "    \"childNodeIDs\": [],\n    \"nodeID\": 5,\n    \"parentID\": 2,\n"
    "    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n"
    "    \"branchTypeAsString\": \"classvar\",\n    \"filePath\": \"PATH\",\n"
    "    \"tags\": [\n      \"variable\"\n],\n    \"contents\": \"let total = 1;\",\n"
    "    \"simpleFunctionName\": \"\",\n    \"calloutIDs\": []\n  }\n",
    "]\n",
};

TEST(RecordArray, OfASmallFileByteForByte) {
  const support::TempDir directory;
  const std::string path = directory.write(
      "greet.js", "function Greeter(name) {\n  var label = name;\n}\nlet total = 1;\n");
  std::string expected;
  for (std::string piece : kGreetPieces) {
    const std::size_t at = piece.find("PATH");
    if (at != std::string::npos) piece.replace(at, 4, path);
    expected += piece;
  }
  std::string answer;
  support::stdoutOf([&] { answer = ParseJS(path.c_str(), nullptr); });
  EXPECT_EQ(answer, expected);
  CleanupJS();
}

}  // namespace
