// The file of --output: whole or not there. The module is one whose answers are known byte by byte.

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "host/plain_user.h"
#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"
#include "host/running_program.h"

namespace {

namespace fs = std::filesystem;
using host_test::contentsOf;
using host_test::Outcome;
using host_test::PlainUser;
using host_test::RunningProgram;
using host_test::runProgram;
using host_test::StandardOutput;
using host_test::waitForUnlocked;
using host_test::Words;
using host_test::writeFile;

using Files = std::map<std::string, std::string>;

class OutputFile : public host_test::QuorlJs {
 protected:
  // The names and contents of all files in the current directory, hidden ones too.
  static Files files() {
    Files result;
    for (const auto& entry : fs::directory_iterator(".")) {
      if (entry.is_regular_file()) {
        result[entry.path().filename().string()] = contentsOf(entry.path());
      }
    }
    return result;
  }
};

constexpr const char* kAnswer = "[\nf|\n]\n";

TEST_F(OutputFile, HasTheOutput) {
  for (const Words& option : {Words{"-o", "out"}, Words{"-oout"}, Words{"--output", "out"},
                              Words{"--output=out"}, Words{"-o", "other", "--output=./out"}}) {
    Words arguments = option;
    arguments.emplace_back("f");
    EXPECT_EQ(runOdd(arguments), (Outcome{0, "", ""}));
    EXPECT_EQ(files(), (Files{{"out", kAnswer}}));
    fs::remove("out");
  }
  EXPECT_EQ(runOdd({"-o", "out", "f", "g"}), (Outcome{0, "", ""}));
  EXPECT_EQ(contentsOf("out"), "[\nf|\n]\n[\ng|\n]\n");
  EXPECT_EQ(runOdd({"-o", "-", "f"}), (Outcome{0, kAnswer, ""}));
  EXPECT_EQ(runOdd({"-o", "out", "big"}, StandardOutput::kClosed), (Outcome{0, "", ""}));
  EXPECT_EQ(contentsOf("out"), "[\n" + std::string(3'000'000, 'x') + "\n]\n");
}

TEST_F(OutputFile, ReplacesOneFromBeforeAndKeepsItsRights) {
  writeFile("out", std::string(1000, 'x'));
  ::chmod("out", 0640);
  EXPECT_EQ(runOdd({"-o", "out", "f"}), (Outcome{0, "", ""}));
  EXPECT_EQ(files(), (Files{{"out", kAnswer}}));
  EXPECT_EQ(fs::status("out").permissions(), fs::perms{0640});
}

TEST_F(OutputFile, IsTheOneThatALinkLeadsTo) {
  fs::create_directory("folder");
  writeFile("folder/target", "old");
  fs::create_symlink("folder/target", "out");
  EXPECT_EQ(runOdd({"-o", "out", "f"}), (Outcome{0, "", ""}));
  EXPECT_TRUE(fs::is_symlink("out"));
  EXPECT_EQ(contentsOf("folder/target"), kAnswer);
}

TEST_F(OutputFile, IsCompleteIfSomeFileFailed) {
  EXPECT_EQ(runOdd({"-o", "out", "f", "no-memory"}),
            (Outcome{1, "", "quorl-js: no-memory: no memory for the answer\n"}));
  EXPECT_EQ(files(), (Files{{"out", kAnswer}}));
}

TEST_F(OutputFile, StaysAsItWasIfTheRunFails) {
  for (const bool isThere : {true, false}) {
    if (isThere) writeFile("out", "old");
    const Files before = files();
    for (const Words& arguments :
         {Words{"f", "--plugin", "gone.so"}, Words{"--files-from=gone"}, Words{"f", "--bogus"},
          Words{"noisy", "--plugin", ODD_PLUGIN_PATH, "--diagnostics=/dev/full"}}) {
      Words all = arguments;
      all.insert(all.end(), {"-o", "out"});
      EXPECT_EQ(run(all).status, 2);
      EXPECT_EQ(files(), before);
    }
    fs::remove("out");
  }
}

TEST_F(OutputFile, StaysAsItWasAfterASignal) {
  writeFile("out", "old");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    RunningProgram program(QUORL_JS_PATH, {"--plugin", ODD_PLUGIN_PATH, "-o", "out", "-j1", "big",
                                           "hang", "--timeout=0"});
    program.waitForFile("hanging");
    program.send(signal);
    EXPECT_EQ(program.errorsToTheEnd(), "");
    EXPECT_EQ(program.waitForEnd(), 128 + signal);
    fs::remove("hanging");
    EXPECT_EQ(files(), (Files{{"out", "old"}}));
  }
}

TEST_F(OutputFile, OfAKilledRunIsRemovedByTheNext) {
  RunningProgram program(QUORL_JS_PATH, {"--plugin", ODD_PLUGIN_PATH, "-o", "out", "-j1", "big",
                                         "hang", "--timeout=0"});
  program.waitForFile("hanging");
  EXPECT_EQ(runOdd({"-o", "other", "f"}), (Outcome{0, "", ""}));
  fs::remove("hanging");
  Files present = files();
  EXPECT_EQ(present.erase("other"), 1U);
  ASSERT_EQ(present.size(), 1U) << "the file of the run that goes on";
  const std::string left = present.begin()->first;
  EXPECT_EQ(left.rfind(".quorl-js-", 0), 0U);
  program.send(SIGKILL);
  EXPECT_EQ(program.waitForEnd(), 128 + SIGKILL);
  waitForUnlocked(left);
  EXPECT_EQ(runOdd({"-o", "other", "f"}), (Outcome{0, "", ""}));
  EXPECT_EQ(files(), (Files{{"other", kAnswer}}));
}

TEST_F(OutputFile, ThatALinkLeadsToIsMade) {
  fs::create_directory("folder");
  fs::create_symlink("second", "folder/first");
  fs::create_symlink("folder/first", "out");
  EXPECT_EQ(runOdd({"-o", "out", "f"}), (Outcome{0, "", ""}));
  EXPECT_TRUE(fs::is_symlink("out"));
  EXPECT_TRUE(fs::is_symlink("folder/first"));
  EXPECT_EQ(contentsOf("folder/second"), kAnswer);
  fs::create_symlink("circle", "circle");
  EXPECT_EQ(runOdd({"-o", "circle", "f"}),
            (Outcome{2, "", "quorl-js: circle: Too many levels of symbolic links\n"}));
}

TEST_F(OutputFile, ThatIsReadOnlyIsRefused) {
  writeFile("out", "old");
  const PlainUser user;
  if (const auto why = user.whyNot(); !why.empty()) GTEST_SKIP() << why;
  ::chmod("out", 0444);
  EXPECT_EQ(user.runOdd({"-o", "out", "f"}),
            (Outcome{2, "", "quorl-js: out: Permission denied\n"}));
  EXPECT_EQ(files(), (Files{{"out", "old"}}));
}

TEST_F(OutputFile, ThatIsAnInputIsRefused) {
  writeFile("out", "old");
  const Outcome refused{2, "", "quorl-js: output file ./out: is also an input\n"};
  EXPECT_EQ(runOdd({"-o", "out", "f", "./out"}), refused);
  fs::create_directory("tree");
  fs::create_hard_link("out", "tree/out");
  writeFile("tree/a", "x");
  EXPECT_EQ(runOdd({"-o", "out", "-r", "tree"}),
            (Outcome{0, "", "quorl-js: tree/out: is written by this run, skipped\n"}));
  EXPECT_EQ(contentsOf("out"), "[\ntree/a|\n]\n");
}

// Its temporary file is beside it, and begins with a dot.
TEST_F(OutputFile, IsMetByNoWalkWhileItIsWritten) {
  writeFile("a", "x");
  EXPECT_EQ(runOdd({"-o", "out", "-r", "--hidden", "."}), (Outcome{0, "", ""}));
  EXPECT_EQ(files(), (Files{{"a", "x"}, {"out", "[\n./a|\n]\n"}}));
}

TEST_F(OutputFile, ThatIsNoRegularFileIsWrittenDirectly) {
  EXPECT_EQ(runOdd({"-o", "/dev/null", "f"}), (Outcome{0, "", ""}));
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  const Outcome outcome =
      runProgram("/bin/sh", {"-c", "cat pipe & \"$@\"; status=$?; wait; exit $status", "sh",
                             QUORL_JS_PATH, "--plugin", ODD_PLUGIN_PATH, "-o", "pipe", "f"});
  EXPECT_EQ(outcome, (Outcome{0, kAnswer, ""}));
  EXPECT_TRUE(fs::is_fifo("pipe"));
  if (fs::exists("/dev/full")) {
    EXPECT_EQ(runOdd({"-o", "/dev/full", "f"}),
              (Outcome{2, "", "quorl-js: /dev/full: No space left on device\n"}));
  }
}

TEST_F(OutputFile, ThatCannotBeMadeEndsTheRun) {
  fs::create_directory("folder");
  struct Row {
    std::string file;
    std::string reason;
  };
  for (const Row& row :
       {Row{"folder", "Is a directory"}, Row{"gone/out", "No such file or directory"},
        Row{"", "No such file or directory"}, Row{"folder/", "Is a directory"}}) {
    const std::string shown = row.file.empty() ? "''" : row.file;
    EXPECT_EQ(runOdd({"f", "--output=" + row.file}),
              (Outcome{2, "", "quorl-js: " + shown + ": " + row.reason + "\n"}));
  }
  const PlainUser user;
  if (const auto why = user.whyNot(); !why.empty()) GTEST_SKIP() << why;
  ::chmod("folder", 0500);
  EXPECT_EQ(user.runOdd({"f", "-o", "folder/out"}),
            (Outcome{2, "", "quorl-js: folder/out: Permission denied\n"}));
}

}  // namespace
