// The program with the module that comes with it, held against what the module answers to a host
// in this very process.

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"
#include "plugin/plugin_api.h"
#include "support/capture.h"

namespace {

namespace fs = std::filesystem;
using host_test::contentsOf;
using host_test::Outcome;
using host_test::Words;
using host_test::writeFile;
using RealPlugin = host_test::QuorlJs;

// The module as a host in this process has it.
const char* parseHere(const char* path, const char* defines) {
  static const auto parse = [] {
    void* const module = ::dlopen(QUORL_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) throw std::runtime_error(::dlerror());
    return reinterpret_cast<decltype(&ParseJS)>(::dlsym(module, "ParseJS"));
  }();
  return parse(path, defines);
}

// The answer of the module to this process.
std::string answerHere(const std::string& path, const char* defines = nullptr) {
  std::string answer;
  support::stdoutOf([&] { answer = parseHere(path.c_str(), defines); });
  return answer;
}

constexpr const char* kScript =
    "import x from 'y';\n"
    "function Greeter(name) {\n"
    "  var label = \"caf\xc3\xa9\";\n"
    "}\n"
    "while (x) { run(); }\n";
constexpr const char* kPage =
    "<html><body><a href=\"b.html\">B</a><script>\nlet a = 1;\n</script></body></html>\n";
constexpr const char* kOther = "if (a) {\n  b();\n}\nlet c = 2;\n";

TEST_F(RealPlugin, AnswersAsItAnswersAnyHost) {
  struct Row {
    std::string name;
    std::string text;
  };
  const std::vector<Row> rows = {
      {"a.js", kScript},           {"page.html", kPage},       {"notes.txt", kOther},
      {"blank.js", "\n"},          {"-x.js", kScript},         {"--help", kOther},
      {" a b .js", kScript},       {"[a,b]", kOther},          {"it's \"q\".js", kScript},
      {"back\\slash.js", kScript}, {"line\nfeed.js", kScript}, {"esc\x1b.js", kScript},
#ifndef __APPLE__  // whose file system takes UTF-8 names only
      {"\xff\xfe.js", kScript},
#endif
  };
  Words all{"--"};
  std::string answers;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    writeFile(row.name, row.text);
    const std::string answer = answerHere(row.name);
    ASSERT_EQ(answer.rfind("[\n", 0), 0U) << answer;
    EXPECT_EQ(run({"--", row.name}), (Outcome{0, answer, ""}));
    all.push_back(row.name);
    answers += answer;
  }
  EXPECT_EQ(run(all), (Outcome{0, answers, ""}));
}

TEST_F(RealPlugin, FailsForSomeFiles) {
  writeFile("a.js", kScript);
  writeFile("page.html", kPage);
  writeFile("empty.js", "");
  fs::create_directory("folder");
  EXPECT_EQ(run({"a.js", "gone.js", "empty.js", "page.html", "folder", "a.js"}),
            (Outcome{1,
                     answerHere("a.js") +
                         R"([{"error": "Could not open file: gone.js"}])"
                         R"([{"error": "File is empty: empty.js"}])" +
                         answerHere("page.html") + R"([{"error": "File is empty: folder"}])" +
                         answerHere("a.js"),
                     "quorl-js: gone.js: No such file or directory\n"
                     "quorl-js: folder: is a directory (use -r to read it)\n"}));
}

TEST_F(RealPlugin, TellsOfOddFileNamesInOneLine) {
  struct Row {
    std::string name;
    std::string inAnswer;
    std::string inMessage;
  };
  const std::vector<Row> rows = {
      {"-gone", "-gone", "-gone"},
      {"", "", "''"},
      {"it's \"gone\"", R"(it\'s \"gone\")", "it's \"gone\""},
      {"line\nfeed", R"(line\nfeed)", R"(line\x0afeed)"},
      {"esc\x1b[2J", "esc\x1b[2J", R"(esc\x1b[2J)"},
      {"\xff\xfe", "\xff\xfe", "\xff\xfe"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.inMessage);
    EXPECT_EQ(run({"--", row.name}),
              (Outcome{1, "[{\"error\": \"Could not open file: " + row.inAnswer + "\"}]",
                       "quorl-js: " + row.inMessage + ": No such file or directory\n"}));
  }
}

TEST_F(RealPlugin, TakesDefinesInTheirOrder) {
  writeFile("a.js", kScript);
  const Outcome outcome = run({"--defines", "ZEBRA", "a.js", "--defines=APPLE 2"});
  EXPECT_EQ(outcome, (Outcome{0, answerHere("a.js", "ZEBRA\nAPPLE 2"), ""}));
  EXPECT_NE(outcome.out.find("\"contents\": \"ZEBRA\\nAPPLE 2\",\n"), std::string::npos) << outcome;
}

// The third node is of the first line, the fourth of the second, which gets no record, so that the
// numbers of the third line's differ.
TEST_F(RealPlugin, HasDiagnosticLines) {
  writeFile("a.js", "var a = 1;\n});\nb();\n");
  const std::string lines =
      "nodeid was 0 and now is 0\n"
      "nodeid was 1 and now is 1\n"
      "nodeid was 2 and now is 2\n"
      "nodeid was 3 and now is 3\n"
      "nodeid was 5 and now is 4\n"
      "Cleaning up parse tree...\n"
      "Cleanup complete\n";
  std::string answer;
  EXPECT_EQ(support::stdoutOf([&] { answer = parseHere("a.js", nullptr); }), lines);
  EXPECT_EQ(run({"a.js"}), (Outcome{0, answer, ""}));
  EXPECT_EQ(run({"a.js", "--diagnostics", "none"}), (Outcome{0, answer, ""}));
  EXPECT_EQ(run({"a.js", "gone", "a.js", "--diagnostics=stderr"}),
            (Outcome{1, answer + R"([{"error": "Could not open file: gone"}])" + answer,
                     lines + "quorl-js: gone: No such file or directory\n" + lines}));
  EXPECT_EQ(run({"a.js", "a.js", "--diagnostics", "lines"}), (Outcome{0, answer + answer, ""}));
  EXPECT_EQ(contentsOf("lines"), lines + lines);
}

TEST_F(RealPlugin, HasDiagnosticLinesThatCannotBeWritten) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  writeFile("a.js", kScript);
  EXPECT_EQ(
      run({"a.js", "a.js", "--diagnostics=/dev/full"}),
      (Outcome{2, answerHere("a.js"), "quorl-js: diagnostics could not be written: /dev/full\n"}));
}

TEST_F(RealPlugin, TellsItsVersionAndWhereItIs) {
  const std::string first = "quorl-js " QUORL_VERSION
                            "\nQuorl JavaScript Parser Plugin v1.0 - HTML/JS Support\nplug-in: ";
  EXPECT_EQ(run({"--version"}), (Outcome{0, first + QUORL_PLUGIN_PATH + "\n", ""}));
  EXPECT_EQ(run({"-V"}), (Outcome{0, first + QUORL_PLUGIN_PATH + "\n", ""}));
}

}  // namespace
