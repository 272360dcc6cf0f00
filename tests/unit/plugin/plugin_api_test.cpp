// The C interface: its answers and error answers, what a run resets and prints, and the lifetime of
// the returned buffers.
#include "plugin/plugin_api.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "plugin/exported_data.h"
#include "support/capture.h"
#include "support/record_values.h"
#include "support/temp_dir.h"

namespace {

using support::TempDir;
using support::valuesOf;
using Values = std::vector<std::string>;

std::string parse(const std::string& path, const char* defines = nullptr) {
  std::string answer;
  support::stdoutOf([&] { answer = ParseJS(path.c_str(), defines); });
  return answer;
}

std::string printedFor(const std::string& path) {
  return support::stdoutOf([&] { ParseJS(path.c_str(), nullptr); });
}

TEST(ParseJS, ReportsAFileThatDoesNotOpen) {
  const std::string path = TempDir().path("gone.js");  // its directory no longer exists
  EXPECT_EQ(parse(path), "[{\"error\": \"Could not open file: " + path + "\"}]");
  EXPECT_EQ(parse(""), "[{\"error\": \"Could not open file: \"}]");
}

struct PathCase {
  const char* name;
  const char* escaped;
};

constexpr PathCase kPaths[] = {
    {"a\"b.js", "a\\\"b.js"}, {"it's.js", "it\\'s.js"},  // required: not valid JSON
    {"a\\b.js", "a\\\\b.js"}, {"a\nb\rc\td.js", "a\\nb\\rc\\td.js"},
    {"a b.js", "a b.js"},     {"caf\xC3\xA9.js", "caf\xC3\xA9.js"},
};

TEST(ParseJS, EscapesThePathInErrorAnswers) {
  const TempDir directory;
  for (const PathCase& row : kPaths) {
    const std::string escaped = directory.path(row.escaped);
    const std::string path = directory.path(row.name);
    EXPECT_EQ(parse(path), "[{\"error\": \"Could not open file: " + escaped + "\"}]");
    directory.write(row.name, "");
    EXPECT_EQ(parse(path), "[{\"error\": \"File is empty: " + escaped + "\"}]");
  }
}

TEST(ParseJS, WritesThePathUnchangedInEveryRecord) {
  const TempDir directory;
  for (const PathCase& row : kPaths) {
    const std::string path = directory.write(row.name, "a();\n");
    const Values paths(4, "\"" + directory.path(row.escaped) + "\"");
    EXPECT_EQ(valuesOf(parse(path), "filePath"), paths);
  }
  directory.write("a.js", "a();\n");
  const std::string detour = directory.path(".//./a.js");
  EXPECT_EQ(valuesOf(parse(detour), "filePath"), Values(4, "\"" + detour + "\""));
  EXPECT_EQ(valuesOf(parse(detour), "contents").front(), "\"a.js\"");
}

TEST(ParseJS, ReportsAnEmptyFile) {
  const TempDir directory;
  for (const char* name : {"a.js", "a.html", "a.txt"}) {
    const std::string path = directory.write(name, "");
    EXPECT_EQ(parse(path), "[{\"error\": \"File is empty: " + path + "\"}]");
  }
}

TEST(ParseJS, ReadsADirectoryAsAnEmptyFile) {
  const TempDir directory;
  const std::string path = directory.path("dir.js");
  std::filesystem::create_directory(path);
  EXPECT_EQ(parse(path), "[{\"error\": \"File is empty: " + path + "\"}]");
}

TEST(ParseJS, ReportsAFileItMayNotReadAsNotOpening) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  const TempDir directory;
  const std::string path = directory.write("secret.js", "a();\n");
  std::filesystem::permissions(path, std::filesystem::perms::none);
  EXPECT_EQ(parse(path), "[{\"error\": \"Could not open file: " + path + "\"}]");
}

TEST(ParseJS, MakesNoNodeAndPrintsNothingForAnErrorAnswer) {
  const TempDir directory;
  for (const std::string& path : {directory.path("gone.js"), directory.write("empty.js", "")}) {
    const auto registered = allAllocatedNodes.size();
    EXPECT_EQ(printedFor(path), "") << path;
    EXPECT_EQ(currentIndex, 0) << path;
    EXPECT_EQ(objectCount, 1) << path;
    EXPECT_EQ(allAllocatedNodes.size(), registered) << path;
  }
}

TEST(ParseJS, ResetsTheRunStateOnEveryOutcome) {
  const TempDir directory;
  for (const std::string& path :
       {directory.path("gone.js"), directory.write("empty.js", ""), directory.write("a.js", "a")}) {
    ObjectBranch node;
    AllBranches.push_back(&node);
    chunk = "left";
    currentIndex = 1000;
    objectCount = 1000;
    parse(path);
    EXPECT_TRUE(AllBranches.empty()) << path;
    EXPECT_EQ(chunk, "") << path;
    EXPECT_LT(currentIndex, 10) << path;
    EXPECT_LT(objectCount, 10) << path;
  }
}

constexpr char kGreet[] = "function Greeter(name) {\n  var label = name;\n}\nlet total = 1;\n";

TEST(ParseJS, PrintsTheRecordLinesAndThenTheCleanup) {
  const TempDir directory;
  EXPECT_EQ(printedFor(directory.write("greet.js", kGreet)),
            "nodeid was 0 and now is 0\n"
            "nodeid was 1 and now is 1\n"
            "nodeid was 2 and now is 2\n"
            "nodeid was 3 and now is 3\n"
            "nodeid was 4 and now is 4\n"
            "nodeid was 5 and now is 5\n"
            "Cleaning up parse tree...\n"
            "Cleanup complete\n");
  EXPECT_EQ(currentIndex, 8) << "six nodes, the defines and the record pass";
  EXPECT_EQ(objectCount, 9) << "one more than the nodes";
  EXPECT_TRUE(AllBranches.empty());
}

TEST(ParseJS, PrintsTheOldNumbersWhereNodesWereDropped) {
  const TempDir directory;
  EXPECT_EQ(printedFor(directory.write("a.js", "a(\n);\nb();\n")),
            "nodeid was 0 and now is 0\n"
            "nodeid was 1 and now is 1\n"
            "nodeid was 2 and now is 2\n"
            "nodeid was 3 and now is 3\n"
            "nodeid was 5 and now is 4\n"
            "Cleaning up parse tree...\n"
            "Cleanup complete\n");
}

struct DefinesCase {
  const char* defines;
  const char* contents;  // of the defines record; null if there is none
  const char* why;
};

constexpr DefinesCase kDefines[] = {
    {nullptr, nullptr, ""},
    {"", nullptr, ""},
    {"\n", nullptr, "no entry"},
    {"\n\n\n", nullptr, ""},
    {"A", "A", "no line feed is needed"},
    {"A\n", "A", ""},
    {"\nA", "A", ""},
    {"A\n\nB\n", "A\\nB", "the empty line is not an entry"},
    {"B\nA\nB", "B\\nA\\nB", "in order, and twice if given twice"},
    {"A\r\nB", "A\\r\\nB", "a carriage return is part of its entry"},
    {"A\n  \nB", "A\\n  \\nB", "a line of blanks is an entry"},
    {"  \n", nullptr, "which says nothing by itself"},
    {" A \nB ", "A \\nB", "entries are not trimmed, the record's text is"},
    {"LEVEL 2", "LEVEL 2", ""},
    {"A='x'\\", "A=\\'x\\'\\\\", "escaped as all contents"},
    {"caf\xC3\xA9", "caf\xC3\xA9", "defines are not cleaned"},
};

TEST(ParseJS, WritesARecordForTheDefines) {
  const TempDir directory;
  const std::string path = directory.write("a.js", "a();\n");
  for (const DefinesCase& row : kDefines) {
    SCOPED_TRACE(testing::PrintToString(row.defines) + "  // " + row.why);
    const std::string answer = parse(path, row.defines);
    Values contents{"\"a.js\"", "\"namespace global\"", "\"A\"", "\"a();\""};
    Values labels{"\"filepath\"", "\"namespace\"", "\"class\"", "\"line\""};
    if (row.contents != nullptr) {
      contents.push_back("\"" + std::string(row.contents) + "\"");
      labels.push_back("\"preprocessor\"");
    }
    EXPECT_EQ(valuesOf(answer, "contents"), contents);
    EXPECT_EQ(valuesOf(answer, "branchTypeAsString"), labels);
  }
}

TEST(ParseJS, AddsTheNamesThatTheFileTests) {
  const TempDir directory;
  const std::string path =
      directory.write("a.js", "#ifdef X\na();\n#endif\n#ifndef A\nb();\n#endif\n");
  const struct {
    const char* defines;
    const char* contents;
  } rows[] = {{nullptr, "\"X\\nA\""}, {"X", "\"X\\nA\""}, {"A\nB", "\"A\\nB\\nX\""}};
  for (const auto& row : rows) {
    const std::string answer = parse(path, row.defines);
    EXPECT_EQ(valuesOf(answer, "contents"),
              (Values{"\"a.js\"", "\"namespace global\"", "\"A\"", "\"b();\"", row.contents}))
        << "a host's define makes no condition true";
  }
}

TEST(ParseJS, NumbersEveryRunFromZero) {
  const TempDir directory;
  const std::string path = directory.write("greet.js", kGreet);
  const std::string first = parse(path, "D");
  const std::string again = parse(path, "D");
  EXPECT_EQ(again, first);
  EXPECT_EQ(valuesOf(again, "nodeID"), (Values{"0", "1", "2", "3", "4", "5", "6"}));
}

TEST(ParseJS, AnswersTheSameInEitherOrder) {
  const TempDir directory;
  const std::vector<std::string> paths{
      directory.write("a.js", "import a from 'a';\nclass B {\nm() {\n}\n}\n"),
      directory.write("b.js", "x = '\nnever closed\n"),
      directory.write("c.js", "#ifdef X\nfunction f() {\n"),
      directory.write("d.html", "<!-- only a comment -->\n"),
      directory.write("e.txt", "let x = 1"),
      directory.write("empty.js", ""),
      directory.path("gone.js"),
  };
  Values answers;
  for (const std::string& path : paths) answers.push_back(parse(path));
  for (std::size_t i = paths.size(); i-- > 0;) EXPECT_EQ(parse(paths[i]), answers[i]) << paths[i];
  for (std::size_t i = 0; i < paths.size(); ++i) EXPECT_EQ(parse(paths[i]), answers[i]) << paths[i];
}

TEST(ParseJS, DoesNotChangeTheSamplePath) {
  const TempDir directory;
  const std::string before = startPath;
  parse(directory.write("a.js", "a();\n"));
  EXPECT_EQ(startPath, before);
}

TEST(ParseJS, AnswerStaysUntilTheNextRun) {
  const TempDir directory;
  const std::string path = directory.write("greet.js", kGreet);
  const std::string expected = parse(path);
  const char* answer = nullptr;
  support::stdoutOf([&] { answer = ParseJS(path.c_str(), nullptr); });
  std::filesystem::remove(path);
  cleanup();
  Info();
  EXPECT_EQ(answer, expected);
  CleanupJS();
}

TEST(CleanupJS, MayBeCalledAtAnyTime) {
  CleanupJS();
  CleanupJS();
  const TempDir directory;
  const std::string path = directory.write("a.js", "a();\n");
  const std::string first = parse(path);
  CleanupJS();
  CleanupJS();
  EXPECT_EQ(parse(path), first) << "a run after it is like any other";
  CleanupJS();
}

TEST(CleanupJS, TouchesOnlyTheBuffers) {
  const TempDir directory;
  parse(directory.write("a.js", "a();\n"));
  ObjectBranch node;
  AllBranches.push_back(&node);
  chunk = "left";
  currentIndex = 17;
  objectCount = 18;
  const auto registered = allAllocatedNodes.size();
  CleanupJS();
  cleanup();
  cleanup();
  EXPECT_EQ(chunk, "left");
  EXPECT_EQ(currentIndex, 17);
  EXPECT_EQ(objectCount, 18);
  EXPECT_EQ(AllBranches, std::vector<ObjectBranch*>{&node});
  EXPECT_EQ(allAllocatedNodes.size(), registered);
  AllBranches.clear();
}

TEST(Info, IsABannerWithAnAddress) {
  const std::string banner = Info();
  const std::string head = "Quorl JavaScript Parser Plugin v1.0 - HTML/JS Support (Address: ";
  const std::string tail = ")\n";
  ASSERT_GT(banner.size(), head.size() + tail.size());
  EXPECT_EQ(banner.substr(0, head.size()), head);
  EXPECT_EQ(banner.substr(banner.size() - tail.size()), tail);
  const std::string address = banner.substr(head.size(), banner.size() - head.size() - tail.size());
  void* pointer = nullptr;
  ASSERT_EQ(std::sscanf(address.c_str(), "%p", &pointer), 1) << address;
  EXPECT_NE(pointer, nullptr);
  char printed[32];
  std::snprintf(printed, sizeof printed, "%p", pointer);
  EXPECT_EQ(address, printed);
  CleanupJS();
}

TEST(Info, MakesANewBufferAndKeepsTheOldOne) {
  // required: CleanupJS frees only the latest buffer. The first one leaks; the static pointer hides
  // it from leak checkers.
  static const char* first = Info();
  const char* second = Info();
  EXPECT_NE(first, second);
  EXPECT_STREQ(first, second) << "the address is that of a variable";
  const std::string banner = second;
  CleanupJS();
  EXPECT_EQ(first, banner);
}

TEST(Info, IsUntouchedByRuns) {
  const TempDir directory;
  const char* banner = Info();
  const std::string before = banner;
  parse(directory.write("a.js", "a();\n"));
  parse(directory.path("gone.js"));
  EXPECT_EQ(banner, before);
  CleanupJS();
}

}  // namespace
