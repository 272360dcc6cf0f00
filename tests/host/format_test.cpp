#include "formats/format.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "outline/omissions.h"
#include "record_text_of.h"

namespace {

using host::FileReport;
using host::FileStatus;
using host::FormatSettings;

std::string begin(std::string_view format, const FormatSettings& settings = {}) {
  std::string out;
  host::findFormat(format)->begin(settings, out);
  return out;
}

std::string end(std::string_view format) {
  std::string out;
  host::findFormat(format)->end({}, out);
  return out;
}

std::string write(std::string_view format, const FileReport& report,
                  const FormatSettings& settings = {}) {
  std::string out = "kept\n";
  host::findFormat(format)->file(report, settings, out);
  EXPECT_TRUE(out.starts_with("kept\n"));
  return out.substr(5);
}

TEST(Format, IsFoundByName) {
  for (const char* name :
       {"raw", "json", "ndjson", "columns", "tree", "outline", "ctags", "etags"}) {
    ASSERT_NE(host::findFormat(name), nullptr) << name;
    EXPECT_EQ(host::findFormat(name)->name, name);
  }
  EXPECT_EQ(host::findFormat("xml"), nullptr);
  EXPECT_EQ(host::findFormat(""), nullptr);
}

TEST(Format, NamesAreThoseOfAProperty) {
  EXPECT_EQ(host::formatNames(),
            (std::vector<std::string_view>{"raw", "json", "ndjson", "columns", "tree", "outline",
                                           "ctags", "etags"}));
  EXPECT_EQ(host::formatNames([](const host::Format& format) { return format.isJson; }),
            (std::vector<std::string_view>{"json", "ndjson", "columns"}));
  EXPECT_EQ(host::formatNames([](const host::Format& format) { return format.hasRanges; }),
            (std::vector<std::string_view>{"json", "ndjson"}));
}

TEST(RawFormat, IsTheAnswerAsItIs) {
  EXPECT_EQ(begin("raw"), "");
  EXPECT_EQ(end("raw"), "");
  EXPECT_EQ(host::findFormat("raw")->separator, "");
  const std::string_view answer = "[\n\x01 anything";
  EXPECT_EQ(write("raw", {.path = "a.js", .answer = answer}), answer);
  const std::string_view error = "[{\"error\": \"File is empty: a.js\"}]";
  EXPECT_EQ(write("raw", {.path = "a.js", .status = FileStatus::kEmpty, .answer = error}), error);
}

TEST(RawFormat, HasNothingForAFileThatFailedWithoutAnAnswer) {
  EXPECT_EQ(write("raw", {.path = "pipe", .status = FileStatus::kFailed, .message = "skipped"}),
            "");
}

TEST(RawFormat, MakesAnErrorAnswerForALostWorker) {
  EXPECT_EQ(write("raw", {.path = "it's.js",
                          .status = FileStatus::kTimedOut,
                          .message = "it's.js: \"no\" \\ answer\n"}),
            R"([{"error": "it\'s.js: \"no\" \\ answer\n"}])");
}

constexpr std::string_view kRecordMembers =
    R"("lineNumber":3,"lineage":"","argumentList":"","childNodeIDs":[2,5],"nodeID":1,)"
    R"("parentID":0,"fileID":0,"functionID":-1,"isCalled":false,)"
    R"("branchTypeAsString":"function","filePath":"it's.js","tags":["iife","constructor"],)"
    R"("contents":"say \"it's\"","simpleFunctionName":"say","calloutIDs":[]})";

std::string exampleAnswer() {
  return answerText({{.lineNumber = 3,
                      .children = "   ,\n      2,\n      5\n    ],\n",
                      .nodeId = 1,
                      .parentId = 0,
                      .label = "function",
                      .filePath = "it\\'s.js",
                      .tags = "\n      \"iife\"\n\n      \"constructor\"\n",
                      .contents = "say \\\"it\\'s\\\"",
                      .simpleFunctionName = "say"}});
}

TEST(JsonFormat, IsOneDocument) {
  EXPECT_EQ(begin("json", {.fileCount = 2}),
            "{\"schema\":1,\"tool\":\"quorl-js\",\"version\":\"" QUORL_VERSION "\",\"files\":[\n");
  EXPECT_EQ(end("json"), "\n]}\n");
  EXPECT_EQ(host::findFormat("json")->separator, ",\n");
}

TEST(JsonFormat, HasEveryKeyOfARecord) {
  const std::string answer = exampleAnswer();
  EXPECT_EQ(write("json", {.path = "it's.js", .answer = answer, .sourceBytes = 77}),
            R"({"path":"it's.js","status":"answered","message":null,"sourceBytes":77,)"
            R"("microseconds":null,"omitted":null,"records":[)"
            "\n{" +
                std::string(kRecordMembers) + "]}");
}

TEST(JsonFormat, TellsWhatIsLeftOut) {
  using host::outline::Omission;
  using host::outline::OmissionReason;
  const std::vector<Omission> omitted = {{.reason = OmissionReason::kLongLines,
                                          .lines = 1,
                                          .lineCount = 3,
                                          .bytes = 77'312,
                                          .byteCount = 78'128,
                                          .line = 2},
                                         {.reason = OmissionReason::kOpenComment}};
  const std::string expected =
      R"("omitted":[{"reason":"long-lines","line":2,"lines":1,"lineCount":3,"bytes":77312,)"
      R"("byteCount":78128},{"reason":"open-comment","line":0,"lines":0,"lineCount":0,"bytes":0,)"
      R"("byteCount":0}],)";
  for (const char* format : {"json", "ndjson"}) {
    const std::string text =
        write(format, {.path = "a.js", .answer = "[\n]\n", .omitted = &omitted});
    EXPECT_NE(text.find(expected), std::string::npos) << text;
  }
  const std::vector<Omission> none;
  EXPECT_NE(write("json", {.path = "a.js", .answer = "[\n]\n", .omitted = &none})
                .find(R"("omitted":null,)"),
            std::string::npos);
}

TEST(JsonFormat, PutsACommaBetweenRecords) {
  const std::string answer = answerText({{}, {.nodeId = 1}});
  const std::string json = write("json", {.path = "a.js", .answer = answer});
  EXPECT_NE(json.find("\"calloutIDs\":[]},\n{\"lineNumber\":0"), std::string::npos) << json;
  EXPECT_EQ(write("json", {.path = "a.js", .answer = "[\n]\n", .microseconds = 1500}),
            R"({"path":"a.js","status":"answered","message":null,"sourceBytes":0,)"
            R"("microseconds":1500,"omitted":null,"records":[]})");
}

TEST(JsonFormat, TellsWhyThereAreNoRecords) {
  struct Case {
    FileStatus status;
    std::string_view word;
  };
  constexpr Case kCases[] = {{FileStatus::kEmpty, "empty"},
                             {FileStatus::kFailed, "failed"},
                             {FileStatus::kCrashed, "crashed"},
                             {FileStatus::kTimedOut, "timed-out"},
                             {FileStatus::kOutOfMemory, "out-of-memory"},
                             {FileStatus::kTooLarge, "too-large"}};
  const std::string answer = exampleAnswer();
  for (const Case& row : kCases) {
    EXPECT_EQ(
        write("json",
              {.path = "a.js", .status = row.status, .message = "no\tluck", .answer = answer}),
        R"({"path":"a.js","status":")" + std::string(row.word) +
            R"(","message":"no\tluck","sourceBytes":0,"microseconds":null,"omitted":null,"records":[]})");
  }
}

TEST(JsonFormat, KeepsTheRecordsBeforeACut) {
  const std::string answer = answerText({{}, {.nodeId = 1}});
  const std::string whole = answerText({{}});
  const std::string json =
      write("json", {.path = "a.js", .answer = std::string_view(answer).substr(0, 400)});
  EXPECT_TRUE(json.starts_with(R"({"path":"a.js","status":"unreadable","message":"the answer )"
                               R"(leaves the record format in record 1, near byte )"))
      << json;
  const std::string oneRecord = write("json", {.path = "a.js", .answer = whole});
  EXPECT_EQ(json.substr(json.find("\"records\"")), oneRecord.substr(oneRecord.find("\"records\"")));
}

TEST(JsonFormat, PutsExactBytesBesidePaths) {
  const std::string answer = answerText({{.filePath = "\xff.js", .contents = "a\xfe"}});
  const std::string json = write("json", {.path = "\xff.js", .answer = answer});
  EXPECT_TRUE(
      json.starts_with("{\"path\":\"\xef\xbf\xbd.js\",\"pathBytes\":\"/y5qcw==\",\"status\""))
      << json;
  EXPECT_NE(json.find("\"filePath\":\"\xef\xbf\xbd.js\",\"filePathBytes\":\"/y5qcw==\",\"tags\""),
            std::string::npos);
  EXPECT_NE(json.find("\"contents\":\"a\xef\xbf\xbd\",\"contentsBytes\":\"Yf4=\",\"simple"),
            std::string::npos);
}

TEST(JsonFormat, TellsEachRecordsOwnPath) {
  const std::string answer = answerText({{.filePath = "a.js"}, {.nodeId = 1, .filePath = "b.js"}});
  const std::string json = write("json", {.path = "a.js", .answer = answer});
  const std::size_t first = json.find(R"("filePath":"a.js")");
  const std::size_t second = json.find(R"("filePath":"b.js")");
  EXPECT_LT(first, second) << json;
  EXPECT_NE(second, std::string::npos) << json;
}

TEST(NdjsonFormat, HasALineForEachThing) {
  EXPECT_EQ(begin("ndjson", {.fileCount = 2}),
            "{\"type\":\"header\",\"schema\":1,\"tool\":\"quorl-js\",\"version\":\"" QUORL_VERSION
            "\",\"fileCount\":2}\n");
  EXPECT_EQ(end("ndjson"), "");
  EXPECT_EQ(host::findFormat("ndjson")->separator, "");
  const std::string answer = exampleAnswer();
  EXPECT_EQ(write("ndjson", {.index = 41, .path = "it's.js", .answer = answer, .sourceBytes = 77}),
            R"({"type":"record","file":41,)" + std::string(kRecordMembers) + "\n" +
                R"({"type":"file","file":41,"path":"it's.js","status":"answered","message":null,)"
                R"("sourceBytes":77,"microseconds":null,"omitted":null,"recordCount":1})"
                "\n");
}

TEST(NdjsonFormat, HasALineForAFileWithoutRecords) {
  EXPECT_EQ(
      write("ndjson", {.path = "a\nb.js",
                       .status = FileStatus::kCrashed,
                       .message = "signal 11",
                       .microseconds = 9}),
      R"({"type":"file","file":0,"path":"a\nb.js","status":"crashed",)"
      R"("message":"signal 11","sourceBytes":0,"microseconds":9,"omitted":null,"recordCount":0})"
      "\n");
  const std::string cut = write("ndjson", {.path = "a.js", .answer = "[\n  {"});
  EXPECT_TRUE(cut.starts_with(R"({"type":"file","file":0,"path":"a.js","status":"unreadable",)"
                              R"("message":"the answer leaves)"))
      << cut;
}

TEST(ColumnsFormat, HasAListForEachProperty) {
  EXPECT_EQ(begin("columns", {.fileCount = 2}), begin("ndjson", {.fileCount = 2}));
  EXPECT_EQ(end("columns"), "");
  EXPECT_EQ(host::findFormat("columns")->separator, "");
  const std::string answer = answerText(
      {{.lineNumber = 1, .label = "line", .filePath = "a.css", .contents = "say \\\"hi\\\""},
       {.lineNumber = 2, .nodeId = 1, .label = "loop", .filePath = "a.css", .contents = "b"}});
  EXPECT_EQ(write("columns", {.index = 3,
                              .path = "a.css",
                              .answer = answer,
                              .source = "say \"hi\"\nb\n",
                              .sourceBytes = 11,
                              .microseconds = 9}),
            R"({"type":"file","file":3,"path":"a.css","status":"answered","message":null,)"
            R"("sourceBytes":11,"microseconds":9,"omitted":null,"items":{"item":[0,1],)"
            R"("container":[null,null],"line":[1,2],"endLine":[1,2],"kind":["statement","loop"],)"
            R"("name":["",""],"nodeID":[0,1],"branchTypeAsString":["line","loop"],)"
            R"("contents":["say \"hi\"","b"]}})"
            "\n");
}

TEST(ColumnsFormat, PutsExactBytesBehindTheList) {
  const std::string answer = answerText({{.lineNumber = 1, .contents = "a\xfe"},
                                         {.lineNumber = 2, .nodeId = 1, .contents = "b"},
                                         {.lineNumber = 3, .nodeId = 2, .contents = "\xff"}});
  const std::string text =
      write("columns", {.path = "a.css", .answer = answer, .source = "a\xfe\nb\n\xff\n"});
  EXPECT_TRUE(
      text.ends_with("\"contents\":[\"a\xef\xbf\xbd\",\"b\",\"\xef\xbf\xbd\"],"
                     "\"contentsBytes\":{\"0\":\"Yf4=\",\"2\":\"/w==\"}}}\n"))
      << text;
}

TEST(ColumnsFormat, HasEmptyListsForAFileWithoutItems) {
  const std::string lists =
      R"("items":{"item":[],"container":[],"line":[],"endLine":[],"kind":[],"name":[],)"
      R"("nodeID":[],"branchTypeAsString":[],"contents":[]}})"
      "\n";
  EXPECT_EQ(
      write("columns", {.path = "a.js", .status = FileStatus::kFailed, .message = "no"}),
      R"({"type":"file","file":0,"path":"a.js","status":"failed","message":"no","sourceBytes":0,)"
      R"("microseconds":null,"omitted":null,)" +
          lists);
  const std::string cut = write("columns", {.path = "a.js", .answer = "[\n  {"});
  EXPECT_TRUE(cut.starts_with(R"({"type":"file","file":0,"path":"a.js","status":"unreadable",)"
                              R"("message":"the answer leaves)"))
      << cut;
  EXPECT_TRUE(cut.ends_with(lists)) << cut;
}

// The outline: the file; a class; in it a function with a line; a node without a parent.
std::string outlineAnswer() {
  return answerText({{.nodeId = 0, .label = "filepath", .contents = "a.js"},
                     {.nodeId = 1, .parentId = 0, .label = "class", .contents = "A"},
                     {.lineNumber = 1,
                      .nodeId = 2,
                      .parentId = 1,
                      .label = "function",
                      .contents = "function go(name) {"},
                     {.lineNumber = 12,
                      .nodeId = 3,
                      .parentId = 2,
                      .label = "line",
                      .contents = "say(\\\"hi\\\");"},
                     {.lineNumber = 13,
                      .nodeId = 4,
                      .parentId = -1,
                      .label = "error: Zero child objects",
                      .contents = "x"}});
}

TEST(TreeFormat, IsAnOutline) {
  const std::string answer = outlineAnswer();
  EXPECT_EQ(begin("tree") + end("tree"), "");
  EXPECT_EQ(host::findFormat("tree")->separator, "\n");
  EXPECT_EQ(write("tree", {.path = "src/a.js", .answer = answer}),
            "src/a.js\n"
            "       class         A\n"
            "     1 function        function go(name) {\n"
            "    12 line              say(\"hi\");\n"
            "    13 error: Zero child objects  x\n");
}

TEST(TreeFormat, ShowsSoManyLevels) {
  const std::string answer = outlineAnswer();
  EXPECT_EQ(write("tree", {.path = "a.js", .answer = answer}, {.depth = 0}), "a.js\n");
  EXPECT_EQ(write("tree", {.path = "a.js", .answer = answer}, {.depth = 1}),
            "a.js\n"
            "       class         A\n"
            "    13 error: Zero child objects  x\n");
}

TEST(TreeFormat, ShowsOnlyTheseLabels) {
  const std::string answer = outlineAnswer();
  const FileReport report{.path = "a.js", .answer = answer};
  EXPECT_EQ(write("tree", report, {.onlyLabels = {"line", "class"}}),
            "a.js\n"
            "       class         A\n"
            "    12 line              say(\"hi\");\n");
  EXPECT_EQ(write("tree", report, {.onlyLabels = {"error"}}),
            "a.js\n    13 error: Zero child objects  x\n");
  EXPECT_EQ(write("tree", report, {.onlyLabels = {"lin"}}), "a.js\n");
}

TEST(TreeFormat, HasALineForAnEmptyFile) {
  EXPECT_EQ(write("tree", {.path = "a.js", .status = FileStatus::kEmpty}), "a.js: empty\n");
  EXPECT_EQ(write("tree", {.path = "a.js", .status = FileStatus::kEmpty}, {.color = true}),
            "\x1b[1ma.js\x1b[0m: \x1b[2mempty\x1b[0m\n");
}

// The nodeIDs of the records that a json or ndjson text has.
std::vector<std::string> nodesIn(const std::string& text) {
  std::vector<std::string> nodes;
  const std::string key = "\"nodeID\":";
  for (auto at = text.find(key); at != std::string::npos; at = text.find(key, at + 1)) {
    nodes.push_back(text.substr(at + key.size(), 1));
  }
  return nodes;
}

TEST(Selection, IsTheSameInEveryFormatButRaw) {
  const std::string answer = outlineAnswer();
  const FileReport report{.path = "a.js", .answer = answer};
  struct Row {
    FormatSettings settings;
    std::vector<std::string> nodes;
  };
  const std::vector<Row> rows = {
      {{}, {"0", "1", "2", "3", "4"}},
      {{.depth = 0}, {"0"}},
      {{.depth = 1}, {"0", "1", "4"}},
      {{.depth = 2}, {"0", "1", "2", "4"}},
      {{.onlyLabels = {"filepath"}}, {"0"}},
      {{.onlyLabels = {"line", "class"}}, {"1", "3"}},
      {{.onlyLabels = {"error"}}, {"4"}},
      {{.onlyLabels = {"error: Zero child objects"}}, {"4"}},
      {{.depth = 2, .onlyLabels = {"line", "class"}}, {"1"}},
      {{.onlyLabels = {"loop"}}, {}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(nodesIn(write("json", report, row.settings)), row.nodes);
    const std::string lines = write("ndjson", report, row.settings);
    EXPECT_EQ(nodesIn(lines), row.nodes);
    EXPECT_TRUE(lines.ends_with("\"recordCount\":" + std::to_string(row.nodes.size()) + "}\n"))
        << lines;
    EXPECT_EQ(write("raw", report, row.settings), answer);
  }
}

TEST(TreeFormat, IsNoWiderThanTheTerminal) {
  const std::string answer = outlineAnswer();
  EXPECT_EQ(write("tree", {.path = "src/deep/a.js", .answer = answer}, {.width = 41}),
            "src/deep/a.js\n"
            "       class         A\n"
            "     1 function      [2] function go(n...\n"
            "    12 line          [3] say(\"hi\");\n"
            "    13 error: Zero child objects  x\n")
      << "21 columns before the text, 20 of text, no room for levels, which are told as numbers";
  EXPECT_EQ(write("tree", {.path = "src/deep/a.js", .answer = answer}, {.width = 12}),
            "src/deep/...\n"
            "       class\n"
            "     1 fu...\n"
            "    12 line \n"
            "    13 er...\n");
}

TEST(TreeFormat, ColorsNumbersAndLabels) {
  const std::string answer = answerText({{.lineNumber = 2, .label = "loop", .contents = "for"},
                                         {.nodeId = 1, .label = "line", .contents = "a"}});
  EXPECT_EQ(write("tree", {.path = "a.js", .answer = answer}, {.color = true}),
            "\x1b[1ma.js\x1b[0m\n"
            "     \x1b[2m2\x1b[0m \x1b[36mloop\x1b[0m          for\n"
            "       line          a\n");
}

TEST(TreeFormat, ShowsControlBytesEscaped) {
  const std::string answer =
      answerText({{.filePath = "a\x1b.js", .contents = "say\x1b[2J\\n\x07"}});
  const FileReport report{.path = "a\x1b\n.js", .answer = answer};
  EXPECT_EQ(write("tree", report, {.escapeControlBytes = true}),
            "a\\x1b\\n.js\n       line          say\\x1b[2J\\n\\x07\n");
  EXPECT_EQ(write("tree", report), "a\x1b\\n.js\n       line          say\x1b[2J\\n\x07\n");
}

TEST(TreeFormat, TellsInOneLineWhatWentWrong) {
  EXPECT_EQ(
      write("tree", {.path = "a\n.js", .status = FileStatus::kTimedOut, .message = "10 s\npassed"},
            {.width = 10}),
      "a\\n.js: timed-out: 10 s\\npassed\n");
  EXPECT_EQ(write("tree", {.path = "a.js", .status = FileStatus::kFailed, .message = "no"},
                  {.color = true}),
            "\x1b[1ma.js\x1b[0m: \x1b[31mfailed: no\x1b[0m\n");
  for (const char* message : {"a\\x0a.js: no", "no: a\\x0a.js"}) {
    EXPECT_EQ(write("tree", {.path = "a\n.js", .status = FileStatus::kFailed, .message = message}),
              "a\\n.js: failed: no\n");
  }
  EXPECT_EQ(write("tree", {.path = "a.js", .answer = "[\n"}),
            "a.js\n"
            "a.js: unreadable: the answer leaves the record format in record 0, near byte 2 of "
            "2\n");
}

// A chain of nodes, each the child of the one before it: the outline must not move to the right for
// ever, or its size would be the square of the chain's.
TEST(TreeFormat, MovesToTheRightOnlySoFar) {
  std::vector<TestRecord> chain;
  for (int i = 0; i < 1000; ++i) chain.push_back({.nodeId = i, .parentId = i - 1});
  const std::string answer = answerText(chain);
  const std::string outline = write("tree", {.path = "a.js", .answer = answer});
  EXPECT_NE(outline.find("\n       line        " + std::string(62, ' ') + "a;\n"),
            std::string::npos)
      << "level 31 is the last that stands by itself";
  EXPECT_NE(outline.find("\n       line        " + std::string(62, ' ') + "[32] a;\n"),
            std::string::npos);
  EXPECT_TRUE(outline.ends_with("[1000] a;\n"));
}

}  // namespace
