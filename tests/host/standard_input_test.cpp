// --stdin: a text that comes from standard input and is called what the user says.

#include <csignal>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"
#include "host/running_program.h"

namespace {

namespace fs = std::filesystem;
using host_test::contentsOf;
using host_test::Outcome;
using host_test::RunningProgram;
using host_test::runProgram;
using host_test::waitForUnlocked;
using host_test::Words;
using host_test::writeFile;

class StandardInput : public host_test::QuorlJs {
 protected:
  StandardInput() { fs::create_directory("scratch"); }

  // Runs the program with the text as its standard input; temporary files go to "scratch", which
  // has to be empty when it ends.
  static Outcome runOver(const std::string& text, const Words& arguments) {
    writeFile("input", text);
    Words words{"-c", "TMPDIR=scratch exec \"$@\" < input", "sh", QUORL_JS_PATH};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const Outcome outcome = runProgram("/bin/sh", words);
    EXPECT_TRUE(fs::is_empty("scratch"));
    return outcome;
  }
};

constexpr const char* kText = "function f() {\n  return \"/a.js\";\n}\n";

TEST_F(StandardInput, IsAnsweredLikeAFileOfThatName) {
  std::vector<std::string> names = {
      "a.js",          "page.html",      "notes",      "dir/sub/b.js",  "../c.js", "./d.ts",
      "it's \"q\".js", "back\\slash.js", " blank .js", "line\nfeed.js", "-x.js",   "[a,b].js"};
#ifndef __APPLE__  // whose file system takes UTF-8 names only
  names.emplace_back("\xff\xfe.js");
#endif
  fs::create_directories("work/dir/sub");
  fs::current_path("work");
  fs::create_directory("scratch");
  names.push_back(fs::current_path().string() + "/absolute.js");
  for (const std::string& name : names) {
    for (const char* format : {"raw", "json", "ndjson", "tree"}) {
      SCOPED_TRACE(name + " " + format);
      writeFile(name, kText);
      const Outcome asFile = run({"--format", format, "--", name});
      EXPECT_EQ(asFile.status, 0);
      fs::remove(name);
      EXPECT_EQ(runOver(kText, {"--stdin", name, "--format", format}), asFile);
      fs::remove("input");
    }
  }
}

TEST_F(StandardInput, NeedsNoDirectoryOfItsName) {
  const Outcome outcome = runOver("a;\n", {"--stdin=/nowhere/at/all.js"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("\"filePath\": \"/nowhere/at/all.js\",\n"), std::string::npos);
  EXPECT_EQ(outcome.out.find("scratch"), std::string::npos);
}

TEST_F(StandardInput, MayBeEmptyOrTooLarge) {
  EXPECT_EQ(runOver("", {"--stdin=x/a.js"}),
            (Outcome{0, R"([{"error": "File is empty: x/a.js"}])", ""}));
  EXPECT_EQ(runOver("let a = 123;", {"--stdin=a.js", "--max-size=12"}).status, 0);
  EXPECT_EQ(runOver("let a = 1234;", {"--stdin=a.js", "--max-size=12"}),
            (Outcome{1, R"-([{"error": "a.js: larger than 12 bytes (--max-size)"}])-",
                     "quorl-js: a.js: larger than 12 bytes (--max-size)\n"}));
}

TEST_F(StandardInput, IsNamedInWarningsAndOutputFiles) {
  fs::create_directory("out");
  const Outcome outcome = runOver("<p></i></i></i>", {"--stdin=b.html", "--out-dir=out"});
  EXPECT_EQ(outcome, (Outcome{0, "",
                              "quorl-js: b.html: 2 warnings: Attempting to pop from empty element "
                              "stack\n"}));
  EXPECT_NE(contentsOf("out/b.html.records").find("\"filePath\": \"b.html\",\n"),
            std::string::npos);
}

TEST_F(StandardInput, IsRefusedWithoutAGoodNameAndBesideFiles) {
  for (const char* name : {"", "dir/", ".", "..", "dir/.."}) {
    EXPECT_EQ(
        runOver("a", {std::string("--stdin=") + name}),
        (Outcome{2, "",
                 std::string("quorl-js: --stdin: '") + name + "' is not a name for a file\n"}));
  }
  for (const char* other : {"a.js", "--files-from=input"}) {
    EXPECT_EQ(runOver("a", {"--stdin=b.js", other}),
              (Outcome{2, "",
                       "quorl-js: --stdin: not with FILE or --files-from; see quorl-js "
                       "--help\n"}));
  }
  const std::string tooLong(300, 'x');
  EXPECT_EQ(runOver("a", {"--stdin=" + tooLong}),
            (Outcome{2, "", "quorl-js: " + tooLong + ": File name too long\n"}));
  EXPECT_EQ(
      runProgram("/bin/sh", {"-c", "TMPDIR=/nowhere exec \"$@\" < /dev/null", "sh", QUORL_JS_PATH,
                             "--stdin=a.js"}),
      (Outcome{2, "", "quorl-js: temporary directory in /nowhere: No such file or directory\n"}));
  EXPECT_EQ(runProgram("/bin/sh", {"-c", "TMPDIR=scratch exec \"$@\" <&-", "sh", QUORL_JS_PATH,
                                   "--stdin=a.js"})
                .status,
            2);
  EXPECT_TRUE(fs::is_empty("scratch"));
}

TEST_F(StandardInput, OfAKilledRunIsRemovedByTheNext) {
  writeFile("in", "text");
  RunningProgram program("/usr/bin/env",
                         {"TMPDIR=scratch", "sh", "-c", "exec \"$@\" <in", "sh", QUORL_JS_PATH,
                          "--plugin", ODD_PLUGIN_PATH, "--stdin=stay", "--timeout=0"});
  program.waitForFile("staying");
  const Words another{"-c", "TMPDIR=scratch exec \"$@\" <in", "sh", QUORL_JS_PATH, "--stdin=a.js"};
  EXPECT_EQ(runProgram("/bin/sh", another).status, 0);
  ASSERT_EQ(std::distance(fs::directory_iterator("scratch"), {}), 1) << "of the run that goes on";
  const std::string left = fs::directory_iterator("scratch")->path();
  program.send(SIGKILL);
  EXPECT_EQ(program.waitForEnd(), 128 + SIGKILL);
  waitForUnlocked(left);
  fs::create_directories("scratch/quorl-js-stdin-abcdef/folder");  // nothing that a run makes
  EXPECT_EQ(runProgram("/bin/sh", another).status, 0);
  EXPECT_EQ(std::distance(fs::directory_iterator("scratch"), {}), 1);
  EXPECT_TRUE(fs::exists("scratch/quorl-js-stdin-abcdef/folder"));
}

TEST_F(StandardInput, LeavesNothingBehindAfterASignal) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    RunningProgram program(
        "/usr/bin/env",
        {"TMPDIR=scratch", "sh", "-c", "echo a | { exec \"$@\"; }", "sh", QUORL_JS_PATH, "--plugin",
         ODD_PLUGIN_PATH, "--stdin=stay", "--timeout=0"});
    program.waitForFile("staying");
    program.sendToGroup(signal);
    program.errorsToTheEnd();
    program.waitForEnd();
    EXPECT_TRUE(fs::is_empty("scratch"));
    fs::remove("staying");
  }
}

}  // namespace
