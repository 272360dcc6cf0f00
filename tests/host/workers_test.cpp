// What bad files do to a run, and how many workers it has. The module is one that crashes, hangs
// and floods where a test wants it to.

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"
#include "host/running_program.h"
#include "support/sanitized.h"

namespace {

namespace fs = std::filesystem;
using host_test::contentsOf;
using host_test::isOutcome;
using host_test::joined;
using host_test::Outcome;
using host_test::RunningProgram;
using host_test::StandardOutput;
using host_test::Words;
using host_test::writeFile;

#if defined(QUORL_TEST_IS_SANITIZED) || defined(__APPLE__)
constexpr bool kMemoryIsLimited = false;
#else
constexpr bool kMemoryIsLimited = true;
#endif

class Workers : public host_test::QuorlJs {
 protected:
  static Words oddArguments(Words arguments) {
    arguments.insert(arguments.begin(), {"--plugin", ODD_PLUGIN_PATH});
    return arguments;
  }

  // The good answer to a file.
  static std::string answerTo(const std::string& file) { return "[\n" + file + "|\n]\n"; }

  static std::string errorAnswer(const std::string& message) {
    return "[{\"error\": \"" + message + "\"}]";
  }
};
std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

using BadFiles = Workers;
using Memory = Workers;
using Signals = Workers;
using ProgressLine = Workers;

const std::string kKilled = std::string("the plug-in crashed: ") + ::strsignal(SIGKILL);
constexpr const char* kExited = "the plug-in exited with status 7";
constexpr const char* kTimedOut = "timed out after 1 s (--timeout)";
constexpr const char* kOutOfMemory = "out of memory (--max-memory)";

// ---- Files that cost a worker

TEST_F(BadFiles, CostTheirOwnAnswerOnly) {
  struct Row {
    const char* why;
    Words arguments;
    std::string file;
    std::string told;
  };
  const std::vector<Row> rows = {
      {"a crash", {}, "crash", "crash: " + kKilled},
      {"an end of the process", {}, "exit", std::string("exit: ") + kExited},
      {"a hang", {"--timeout=1"}, "hang", std::string("hang: ") + kTimedOut},
      {"a long answer", {"--max-output=1M"}, "big", "big: answer larger than 1M (--max-output)"},
      {"stray bytes among the answers", {}, "spoil", "spoil: the plug-in wrote to the result pipe"},
  };
  for (const Row& row : rows) {
    for (const char* jobs : {"-j1", "-j3"}) {
      SCOPED_TRACE(std::string(row.why) + " " + jobs);
      Words arguments = row.arguments;
      arguments.insert(arguments.end(), {jobs, "a", "b", row.file, "c", "d", row.file, "e"});
      const std::string error = errorAnswer(row.told);
      EXPECT_EQ(runOdd(arguments),
                (Outcome{1,
                         answerTo("a") + answerTo("b") + error + answerTo("c") + answerTo("d") +
                             error + answerTo("e"),
                         "quorl-js: " + row.told + "\nquorl-js: " + row.told + "\n"}));
    }
    fs::remove("hanging");
  }
}

TEST_F(BadFiles, MayHaveQuotesInTheirNames) {
  EXPECT_EQ(run({"it's \"gone\"\n.js"}),
            (Outcome{1, R"([{"error": "Could not open file: it\'s \"gone\"\n.js"}])",
                     "quorl-js: it's \"gone\"\\x0a.js: No such file or directory\n"}));
  writeFile("it's \"big\".js", "let a = 1;\n");
  const std::string tooLong = ".js: answer larger than 10 bytes (--max-output)";
  EXPECT_EQ(run({"it's \"big\".js", "--max-output=10"}),
            (Outcome{1, errorAnswer("it\\'s \\\"big\\\"" + tooLong),
                     "quorl-js: it's \"big\"" + tooLong + "\n"}));
}

// A process that outlives the worker has the same pipes.
TEST_F(BadFiles, MayLeaveAProcessBehind) {
  const std::string told = std::string("orphan: ") + kExited;
  const Outcome outcome = runOdd({"a", "orphan", "b"});
  std::ifstream orphans("orphans");
  for (pid_t orphan = 0; orphans >> orphan;) ::kill(orphan, SIGKILL);
  EXPECT_EQ(outcome, (Outcome{1, answerTo("a") + errorAnswer(told) + answerTo("b"),
                              "quorl-js: " + told + "\n"}));
}

TEST_F(BadFiles, HaveTheirSizeInTheReport) {
  writeFile("a.js", "let a = 1;\n");
  EXPECT_EQ(linesOf(run({"a.js", "--max-output=10", "--format=ndjson"}).out).at(1),
            R"({"type":"file","file":0,"path":"a.js","status":"too-large",)"
            R"x("message":"a.js: answer larger than 10 bytes (--max-output)",)x"
            R"("sourceBytes":11,"microseconds":null,"omitted":null,"recordCount":0})");
}

TEST_F(BadFiles, ThatTakeTooMuchMemory) {
  if (!kMemoryIsLimited) GTEST_SKIP() << "no limit on memory here";
  const std::string told = std::string("hog: ") + kOutOfMemory;
  EXPECT_EQ(
      runOdd({"--max-memory=64M", "a", "hog", "b"}),
      (Outcome{1, answerTo("a") + errorAnswer(told) + answerTo("b"), "quorl-js: " + told + "\n"}));
  EXPECT_EQ(runOdd({"--max-memory=0", "keep"}), (Outcome{0, answerTo("keep"), ""}));
}

// Whether the limits here are the program's own.
bool isMemoryFree() {
  rlimit limit{};
  return kMemoryIsLimited && ::getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur == RLIM_INFINITY;
}

TEST_F(Memory, DefaultsToTheMachines) {
  if (!isMemoryFree()) GTEST_SKIP() << "no limit on memory here, or one of these tests";
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_AS, &limit), 0);
  const auto machine = static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES)) *
                       static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  const Outcome whole = runOdd({"address-space"});
  EXPECT_LE(std::stoull(whole.out.substr(2)), machine);
  const Outcome small{0, "[\n67108864\n]\n", ""};
  EXPECT_EQ(runOdd({"--max-memory=64M", "address-space"}), small);
  EXPECT_EQ(runOdd({"--max-memory=0", "address-space"}), (Outcome{0, "[\nunlimited\n]\n", ""}));

  // What the user's shell has set is kept to.
  const rlimit shell{rlim_t{128} << 20U, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_AS, &shell), 0);
  const Outcome usual = runOdd({"address-space"});
  const Outcome smaller = runOdd({"--max-memory=64M", "address-space"});
  const Outcome larger = runOdd({"--max-memory=1G", "address-space"});
  ASSERT_EQ(::setrlimit(RLIMIT_AS, &limit), 0);
  EXPECT_EQ(usual, (Outcome{0, "[\n134217728\n]\n", ""}));
  EXPECT_EQ(smaller, small);
  EXPECT_EQ(larger, usual);
}

TEST_F(Memory, IsSharedByTheWorkers) {
  if (!isMemoryFree()) GTEST_SKIP() << "no limit on memory here, or one of these tests";
  const std::uint64_t whole = std::stoull(runOdd({"address-space"}).out.substr(2));
  const std::string half = "[\n" + std::to_string(whole / 2) + "\n]\n";
  EXPECT_EQ(runOdd({"-j2", "address-space", "address-space"}), (Outcome{0, half + half, ""}));
  EXPECT_EQ(runOdd({"-j2", "address-space"}).out, runOdd({"-j1", "address-space"}).out);
}

// One more attempt, with all memory, is no failure of the file.
TEST_F(Memory, IsWhollyForAFileThatNeedsMoreThanAShare) {
  if (!isMemoryFree()) GTEST_SKIP() << "no limit on memory here, or one of these tests";
  for (const char* jobs : {"-j2", "-j4"}) {
    SCOPED_TRACE(jobs);
    EXPECT_EQ(runOdd({jobs, "a", "over-share", "b", "c", "no-memory-once", "--strict"}),
              (Outcome{0,
                       answerTo("a") + answerTo("over-share") + answerTo("b") + answerTo("c") +
                           answerTo("no-memory-once"),
                       ""}));
    fs::remove("limit");
    fs::remove("asked");
  }
  EXPECT_EQ(runOdd({"-j2", "a", "crash-within-share"}),
            (Outcome{0, answerTo("a") + answerTo("crash-within-share"),
                     "quorl-js: crash-within-share: succeeded on the second attempt; first "
                     "failure: " +
                         kKilled + "\n"}));
}

// Nor while others have results that are far ahead, more than is held of them.
TEST_F(Memory, IsNotSharedWhenAFileHasAllOfIt) {
  if (!isMemoryFree()) GTEST_SKIP() << "no limit on memory here, or one of these tests";
  Words arguments = {"-j4", "slow", "over-share-alone"};
  std::string answers = answerTo("slow") + "[\n1\n]\n";
  for (int number = 0; number < 60; ++number) {
    arguments.emplace_back("big");
    answers += "[\n" + std::string(3'000'000, 'x') + "\n]\n";
  }
  EXPECT_TRUE(isOutcome({0, answers, ""}, runOdd(arguments)));
}

TEST_F(Memory, HasALimitAFileWhereThatIsAskedFor) {
  if (!isMemoryFree()) GTEST_SKIP() << "no limit on memory here, or one of these tests";
  const std::string told = std::string("over-share: ") + kOutOfMemory;
  EXPECT_EQ(runOdd({"-j2", "--max-memory=256M", "a", "over-share"}),
            (Outcome{1, answerTo("a") + errorAnswer(told), "quorl-js: " + told + "\n"}));
}

// The module tells of it by answers of its own, which name no file and no limit.
TEST_F(BadFiles, OfWhichTheModuleSaysThatTheyTakeTooMuchMemory) {
  for (const std::string file : {"bad-alloc", "no-node"}) {
    const std::string told = file + ": " + kOutOfMemory;
    EXPECT_EQ(runOdd({"a", file, "b"}),
              (Outcome{1, answerTo("a") + errorAnswer(told) + answerTo("b"),
                       "quorl-js: " + told + "\n"}));
  }
}

TEST_F(BadFiles, AreFourOfAThousand) {
  std::string list;
  std::string answers;
  std::string messages;
  const auto fails = [&](const std::string& file, const std::string& told) {
    list += file + "\n";
    answers += errorAnswer(told);
    messages += "quorl-js: " + told + "\n";
  };
  for (int number = 0; number < 996; ++number) {
    if (number == 100) fails("crash", "crash: " + kKilled);
    if (number == 300) fails("hang", "hang: timed out after 5 s (--timeout)");
    if (number == 500 && kMemoryIsLimited) fails("hog", std::string("hog: ") + kOutOfMemory);
    if (number == 500 && !kMemoryIsLimited) fails("exit", std::string("exit: ") + kExited);
    if (number == 700) {
      list += "error\n";
      answers += R"([{"error": "it\'s \"odd\": x"}])";
      messages += "quorl-js: error: it's \"odd\": x\n";
    }
    const std::string file = "file " + std::to_string(number);
    list += file + "\n";
    answers += answerTo(file);
  }
  writeFile("list", list);
  for (const char* jobs : {"1", "16"}) {
    SCOPED_TRACE(jobs);
    EXPECT_TRUE(isOutcome({1, answers, messages}, runOdd({"--files-from=list", "--timeout=5",
                                                          "--max-memory=64M", "-j", jobs})));
  }
}

TEST_F(BadFiles, AreTriedASecondTime) {
  const std::string told =
      "quorl-js: crash-once: succeeded on the second attempt; first failure: " + kKilled + "\n";
  const std::string answers = answerTo("a") + answerTo("crash-once") + answerTo("b");
  EXPECT_EQ(runOdd({"a", "crash-once", "b"}), (Outcome{0, answers, told}));
  EXPECT_EQ(runOdd({"a", "crash-once", "b"}), (Outcome{0, answers, ""}));
  EXPECT_EQ(runOdd({"hang-once", "--timeout", "1"}),
            (Outcome{0, answerTo("hang-once"),
                     std::string(
                         "quorl-js: hang-once: succeeded on the second attempt; first failure: ") +
                         kTimedOut + "\n"}));
}

// An exception of the module costs its file and not the workers beside.
TEST_F(BadFiles, MayThrow) {
  struct Row {
    std::string file;
    std::string what;
    std::string status;
  };
  const std::vector<Row> rows = {
      {"throw", "the plug-in threw an exception: it broke", "crashed"},
      {"throw-number", "the plug-in threw an exception", "crashed"},
      {"throw-memory", kOutOfMemory, "out-of-memory"},
  };
  for (const Row& row : rows) {
    const std::string told = row.file + ": " + row.what;
    for (const char* jobs : {"-j1", "-j4"}) {
      SCOPED_TRACE(row.file + " " + jobs);
      EXPECT_EQ(runOdd({jobs, "a", "b", "c", row.file, "d", "e", "f"}),
                (Outcome{1,
                         answerTo("a") + answerTo("b") + answerTo("c") + errorAnswer(told) +
                             answerTo("d") + answerTo("e") + answerTo("f"),
                         "quorl-js: " + told + "\n"}));
    }
    EXPECT_NE(runOdd({row.file, "--format=ndjson"}).out.find(R"("status":")" + row.status + "\""),
              std::string::npos);
  }
  EXPECT_EQ(runOdd({"a", "throw-once", "b"}),
            (Outcome{0, answerTo("a") + answerTo("throw-once") + answerTo("b"),
                     "quorl-js: throw-once: succeeded on the second attempt; first failure: the "
                     "plug-in threw an exception: not now\n"}));
  for (const char* jobs : {"-j1", "-j2"}) {
    EXPECT_EQ(runOdd({jobs, "a", "throw-at-exit", "b"}),
              (Outcome{0, answerTo("a") + answerTo("throw-at-exit") + answerTo("b"), ""}))
        << "the C++ library has nothing to say of it";
  }
}

TEST_F(BadFiles, AreNoneIfTheModuleThrowsWhenItIsLoaded) {
  const std::string told = "quorl-js: " ODD_PLUGIN_PATH ": threw an exception when it was loaded";
  for (const char* what : {"", "no start"}) {
    ::setenv("ODD_PLUGIN_THROWS_AT_LOAD", what, 1);
    const std::string reason = *what == '\0' ? "" : std::string(": ") + what;
    EXPECT_EQ(runOdd({"a", "b"}), (Outcome{2, "", told + reason + "\n"}));
    EXPECT_EQ(runOdd({"--version"}), (Outcome{2, "", told + reason + "\n"}));
  }
  ::unsetenv("ODD_PLUGIN_THROWS_AT_LOAD");
}

// A stopped process runs no timer.
TEST_F(BadFiles, MayStopTheirWorker) {
  const std::string told = kTimedOut;
  for (const char* jobs : {"-j1", "-j2"}) {
    SCOPED_TRACE(jobs);
    EXPECT_EQ(
        runOdd({jobs, "--timeout=1", "a", "stop", "stop-once", "b"}),
        (Outcome{
            1, answerTo("a") + errorAnswer("stop: " + told) + answerTo("stop-once") + answerTo("b"),
            "quorl-js: stop: " + told +
                "\nquorl-js: stop-once: succeeded on the second attempt; first "
                "failure: " +
                told + "\n"}));
    fs::remove("stopped");
  }
}

TEST_F(BadFiles, MayCloseThePipeOfTheirResults) {
  const std::string told = "quorl-js: close-pipes: the plug-in closed the result pipe\n";
  const Outcome outcome = runOdd({"--timeout=0", "a", "close-pipes", "b"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, answerTo("a") +
                             errorAnswer("close-pipes: the plug-in closed the result pipe") +
                             answerTo("b"));
  ASSERT_GE(outcome.err.size(), told.size());
  EXPECT_EQ(outcome.err.substr(outcome.err.size() - told.size()), told);
}

TEST_F(BadFiles, AreReadAgainWhenTheyChangeMeanwhile) {
  writeFile("grow-once", "x");
  const Outcome report = runOdd({"grow-once", "--format=ndjson"});
  EXPECT_NE(report.out.find("\"sourceBytes\":2,"), std::string::npos) << report;
  EXPECT_EQ(contentsOf("grow-once"), "xx");
  fs::remove("grown");
  EXPECT_EQ(runOdd({"grow-once", "--strict"}), (Outcome{0, answerTo("grow-once"), ""}));
  writeFile("grow", "x");
  const std::string told = "quorl-js: grow: changed while it was read\n";
  EXPECT_EQ(runOdd({"grow"}), (Outcome{0, answerTo("grow"), told}));
  EXPECT_EQ(contentsOf("grow"), "xxx");
  EXPECT_EQ(runOdd({"grow", "--strict"}), (Outcome{1, answerTo("grow"), told}));
}

TEST_F(BadFiles, DoNotHangTheRunByWhatTheyPrint) {
  EXPECT_EQ(runOdd({"flood-stdout", "a"}),
            (Outcome{0, answerTo("flood-stdout") + answerTo("a"), ""}));
}

TEST_F(BadFiles, AreKnownInEveryFormat) {
  const std::string members = R"("path":"crash","status":"crashed","message":"crash: )" + kKilled +
                              R"(","sourceBytes":0,"microseconds":null,"omitted":null,)";
  const std::string head = R"("schema":1,"tool":"quorl-js","version":")" QUORL_VERSION "\"";
  struct Row {
    const char* option;
    std::string out;
  };
  const std::vector<Row> rows = {
      {"--format=raw", errorAnswer("crash: " + kKilled)},
      {"--format=json", "{" + head + ",\"files\":[\n{" + members + "\"records\":[]}\n]}\n"},
      {"--format=ndjson", R"({"type":"header",)" + head + ",\"fileCount\":1}\n" +
                              R"({"type":"file","file":0,)" + members + "\"recordCount\":0}\n"},
      {"--format=tree", "crash: crashed: " + kKilled + "\n"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(runOdd({"crash", row.option}),
              (Outcome{1, row.out, "quorl-js: crash: " + kKilled + "\n"}));
  }
}

TEST_F(BadFiles, HaveAnswerFilesToo) {
  fs::create_directory("out");
  EXPECT_EQ(runOdd({"crash", "a", "--out-dir=out"}).status, 1);
  EXPECT_EQ(contentsOf("out/crash.records"), errorAnswer("crash: " + kKilled));
  EXPECT_EQ(contentsOf("out/a.records"), answerTo("a"));
}

TEST_F(BadFiles, IncludeMalformedAnswers) {
  const std::string fault = "the answer leaves the record format in record 0, near byte 2 of 7";
  for (const char* format : {"--format=json", "--format=ndjson", "--format=tree"}) {
    const Outcome outcome = runOdd({"a", "no-records", format});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "quorl-js: a: " + fault + "\n");
    EXPECT_NE(outcome.out.find("unreadable"), std::string::npos) << outcome;
  }
}

// Each failure that the run counts has its place among the files, what is passed over has none.
TEST_F(BadFiles, AreCountedInTheHeader) {
  fs::create_directories("tree/locked");
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  ASSERT_EQ(::mkfifo("tree/pipe", 0600), 0);
  writeFile("tree/a.js", "x\n");
  const Outcome outcome = run({"pipe", "--recursive", "tree", "gone", "--format=ndjson"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "quorl-js: pipe: not a regular file, skipped\n"
            "quorl-js: tree/pipe: not a regular file, skipped\n"
            "quorl-js: gone: No such file or directory\n");
  std::vector<std::string> lines;
  for (const std::string& line : linesOf(outcome.out)) {
    if (line.find("\"type\":\"record\"") == std::string::npos) lines.push_back(line);
  }
  ASSERT_EQ(lines.size(), 4U) << outcome;
  EXPECT_NE(lines[0].find("\"fileCount\":3}"), std::string::npos) << lines[0];
  EXPECT_EQ(lines[1], R"({"type":"file","file":0,"path":"pipe","status":"failed","message":)"
                      R"("pipe: not a regular file, skipped","sourceBytes":0,"microseconds":null,)"
                      R"("omitted":null,"recordCount":0})");
  EXPECT_EQ(lines[2].rfind(R"({"type":"file","file":1,"path":"tree/a.js","status":"answered",)"
                           R"("message":null,"sourceBytes":2,)",
                           0),
            0U)
      << lines[2];
  EXPECT_EQ(lines[3].rfind(R"({"type":"file","file":2,"path":"gone","status":"failed",)", 0), 0U)
      << lines[3];
}

// ---- Files that are no good to begin with

TEST_F(BadFiles, ThatAreTooLargeAreNotOpened) {
  writeFile("sparse.js", "");
  fs::resize_file("sparse.js", std::uintmax_t{4} << 30U);
  writeFile("twelve.js", "let a = 123;");
  const std::string told = "sparse.js: larger than 256M (--max-size)";
  EXPECT_EQ(run({"sparse.js", "gone"}),
            (Outcome{1, errorAnswer(told) + R"([{"error": "Could not open file: gone"}])",
                     "quorl-js: " + told + "\nquorl-js: gone: No such file or directory\n"}));
  EXPECT_EQ(run({"twelve.js", "--max-size=12"}).status, 0);
  EXPECT_EQ(run({"twelve.js", "--max-size=11"}),
            (Outcome{1, errorAnswer("twelve.js: larger than 11 bytes (--max-size)"),
                     "quorl-js: twelve.js: larger than 11 bytes (--max-size)\n"}));
}

// Cuts a file and fills it again, for as long as it lives.
class Rewriter {
 public:
  Rewriter(const fs::path& file, const std::string& text)
      : thread_([this, file, text] {
          while (!isOver_) {
            fs::resize_file(file, 100);
            fs::resize_file(file, 0);
            writeFile(file, text);
          }
        }) {}
  Rewriter(const Rewriter&) = delete;
  Rewriter& operator=(const Rewriter&) = delete;
  ~Rewriter() {
    isOver_ = true;
    thread_.join();
  }

 private:
  std::atomic<bool> isOver_ = false;
  std::thread thread_;
};

TEST_F(BadFiles, ThatShrinkWhileTheyAreRead) {
  std::string text;
  for (int line = 0; line < 20'000; ++line) text += "let a = 1;\n";
  writeFile("a.js", text);
  const Rewriter rewriter("a.js", text);
  for (int round = 0; round < 20; ++round) {
    const Outcome outcome = run({"a.js"});
    const std::string changed = "quorl-js: a.js: changed while it was read\n";
    const bool isAnswered = outcome.status == 0 &&
                            (outcome.err.empty() || outcome.err == changed) &&
                            outcome.out.rfind("[\n  {\n", 0) == 0 &&
                            outcome.out.substr(outcome.out.size() - 6) == "  }\n]\n";
    const std::string answer = R"([{"error": "File is empty: a.js"}])";
    const bool isEmpty =
        outcome == Outcome{0, answer, ""} || outcome == Outcome{0, answer, changed};
    EXPECT_TRUE(isAnswered || isEmpty) << outcome;
  }
}

TEST_F(BadFiles, ThatLeadNowhere) {
  fs::create_symlink("loop", "loop");
  EXPECT_EQ(run({"loop", "/dev/zero"}),
            (Outcome{1, R"([{"error": "Could not open file: loop"}])",
                     "quorl-js: loop: Too many levels of symbolic links\n"
                     "quorl-js: /dev/zero: not a regular file, skipped\n"}));
}

// ---- A single file, whose text its worker writes

using SingleFile = Workers;

TEST_F(SingleFile, IsWrittenOnceAndWhole) {
  const std::string big = "[\n" + std::string(3'000'000, 'x') + "\n]\n";
  const std::string told =
      "quorl-js: crash-once: succeeded on the second attempt; first failure: " + kKilled + "\n";
  for (const StandardOutput out : {StandardOutput::kFile, StandardOutput::kPipe}) {
    EXPECT_TRUE(isOutcome({0, big, ""}, runOdd({"big"}, out)));
    EXPECT_EQ(runOdd({"crash-once"}, out), (Outcome{0, answerTo("crash-once"), told}));
    EXPECT_EQ(runOdd({"no-text", "--quiet"}, out), (Outcome{1, "", ""}));
    fs::remove("crashed");
  }
}

TEST_F(SingleFile, HasTheTextThatItHasAmongOthers) {
  writeFile("a.js", "function f() {\n  return 'caf\xc3\xa9';\n}\n");
  fs::create_directory("out");
  for (const std::string format : {"raw", "json", "ndjson", "tree"}) {
    SCOPED_TRACE(format);
    const Outcome alone = run({"a.js", "--format", format});
    EXPECT_EQ(run({"a.js", "--format", format, "--out-dir=out"}), (Outcome{0, "", ""}));
    const std::string extension = format == "raw" ? ".records" : "." + format;
    EXPECT_EQ(alone, (Outcome{0, contentsOf("out/a.js" + extension), ""}));
    const Outcome failed = run({"gone.js", "--format", format});
    EXPECT_EQ(run({"gone.js", "--format", format, "--out-dir=out"}), (Outcome{1, "", failed.err}));
    EXPECT_EQ(failed.out, contentsOf("out/gone.js" + extension));
  }
}

TEST_F(SingleFile, ThatCannotBeWrittenEndsTheRun) {
  for (const char* format : {"--format=raw", "--format=json"}) {
    EXPECT_EQ(run({"gone.js", format}, StandardOutput::kFullDisk),
              (Outcome{2, "", "quorl-js: standard output: No space left on device\n"}));
    EXPECT_EQ(run({"gone.js", format}, StandardOutput::kAbandonedPipe),
              (Outcome{128 + SIGPIPE, "", ""}));
  }
}

// What is out cannot be taken back, so there is no second attempt.
TEST_F(SingleFile, WhoseWorkerDiesInTheMiddleOfItsText) {
  RunningProgram program(QUORL_JS_PATH, oddArguments({"big-by"}));
  const std::string begun = program.readOutput(2);
  ::kill(static_cast<pid_t>(std::stol(contentsOf("process"))), SIGKILL);
  EXPECT_EQ(program.errorsToTheEnd(), "quorl-js: big-by: output cut short: " + kKilled + "\n");
  EXPECT_EQ(program.waitForEnd(), 2);
  EXPECT_EQ(begun, "[\n");
  const std::string rest = program.outputToTheEnd();
  EXPECT_EQ(rest, std::string(rest.size(), 'x'));
}

TEST_F(SingleFile, IsNotWaitedForAnyLongerWhenItsReaderHasGone) {
  RunningProgram program(QUORL_JS_PATH, oddArguments({"big"}));
  EXPECT_EQ(program.readOutput(2), "[\n");
  program.leaveStandardOutput();
  EXPECT_EQ(program.errorsToTheEnd(), "");
  EXPECT_EQ(program.waitForEnd(), 128 + SIGPIPE);
}

// ---- How many workers, and how long they live

// The processes that answered the files called "process".
std::vector<std::string> processesIn(const std::string& answers) {
  std::vector<std::string> processes;
  for (const std::string& line : linesOf(answers)) {
    if (line.find_first_not_of("0123456789") == std::string::npos) processes.push_back(line);
  }
  return processes;
}

TEST_F(Workers, AreReplacedAfterAThousandFiles) {
  std::string list;
  for (int number = 0; number < 2'500; ++number) list += "process\n";
  writeFile("list", list);
  const Outcome outcome = runOdd({"--files-from=list", "-j1"});
  EXPECT_EQ(outcome.status, 0);
  const std::vector<std::string> processes = processesIn(outcome.out);
  ASSERT_EQ(processes.size(), 2'500U);
  EXPECT_EQ(std::set<std::string>(processes.begin(), processes.end()).size(), 3U);
  EXPECT_EQ(processes[0], processes[999]);
  EXPECT_NE(processes[999], processes[1000]);
  EXPECT_EQ(processes[1000], processes[1999]);
  EXPECT_NE(processes[1999], processes[2000]);
}

TEST_F(Workers, AreReplacedWhenTheyHaveGrown) {
  const Outcome outcome = runOdd({"-j1", "process", "process", "keep", "process"});
  EXPECT_EQ(outcome.status, 0);
  const std::vector<std::string> processes = processesIn(outcome.out);
  ASSERT_EQ(processes.size(), 3U);
  EXPECT_EQ(processes[0], processes[1]);
  EXPECT_NE(processes[1], processes[2]);
}

TEST_F(Workers, AreAsManyAsAskedFor) {
  const Outcome outcome = runOdd({"-j3", "slow", "slow", "slow", "process", "process", "process"});
  EXPECT_EQ(outcome.status, 0);
  const std::vector<std::string> processes = processesIn(outcome.out);
  EXPECT_EQ(std::set<std::string>(processes.begin(), processes.end()).size(), 3U);
}

TEST_F(Workers, KeepTheOrderOfTheFiles) {
  Words files = {"slow", "big", "a", "slow", "b", "big", "c"};
  std::string answers;
  for (const std::string& file : files) {
    answers += file == "big" ? "[\n" + std::string(3'000'000, 'x') + "\n]\n" : answerTo(file);
  }
  for (const char* jobs : {"--jobs=1", "--jobs=2", "-j7", "-j256"}) {
    Words arguments = files;
    arguments.emplace_back(jobs);
    EXPECT_TRUE(isOutcome({0, answers, ""}, runOdd(arguments))) << jobs;
  }
}

// More than what is held of results that are ahead of their turn.
TEST_F(Workers, WaitWithResultsThatAreFarAhead) {
  Words arguments = {"-j4", "hang-once", "--timeout=5"};
  std::string answers = answerTo("hang-once");
  for (int number = 0; number < 60; ++number) {
    arguments.emplace_back("big");
    answers += "[\n" + std::string(3'000'000, 'x') + "\n]\n";
  }
  const std::string told =
      "quorl-js: hang-once: succeeded on the second attempt; first failure: timed out after 5 s "
      "(--timeout)\n";
  EXPECT_TRUE(isOutcome({0, answers, told}, runOdd(arguments)));
}

TEST_F(Workers, OfTheRealModuleGiveTheSameBytesHoweverMany) {
  std::string list;
  for (int number = 0; number < 300; ++number) {
    const std::string name = std::to_string(number) + (number % 3 == 0 ? ".html" : ".js");
    std::string text;
    for (int line = 0; line <= number % 50; ++line) {
      text += "function f" + std::to_string(line) + "() {\n  return " + name + ";\n}\n";
    }
    writeFile(name, text);
    list += name + "\n" + (number % 10 == 0 ? "gone\n" : "");
  }
  writeFile("list", list);
  for (const char* format : {"raw", "json", "ndjson", "tree"}) {
    const Words arguments = {"--files-from=list", "--format", format, "-j1"};
    const Outcome alone = run(arguments);
    EXPECT_EQ(alone.status, 1);
    for (const char* jobs : {"-j2", "-j8"}) {
      Words others = arguments;
      others.back() = jobs;
      EXPECT_TRUE(isOutcome(alone, run(others))) << format << " " << jobs;
    }
  }
}

// ---- Ends of a run

TEST_F(Signals, EndTheRunAndItsWorkers) {
  for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
    SCOPED_TRACE(signal);
    RunningProgram program(QUORL_JS_PATH, oddArguments({"a", "hang", "--timeout=0"}));
    program.waitForFile("hanging");
    program.send(signal);
    EXPECT_EQ(program.errorsToTheEnd(), "");  // ends when no process has it any more
    EXPECT_EQ(program.waitForEnd(), 128 + signal);
    fs::remove("hanging");
  }
}

// The program waits for the reader when the signal comes.
TEST_F(Signals, EndARunWhoseOutputNobodyTakes) {
  RunningProgram program(QUORL_JS_PATH, oddArguments({"-j1", "big", "hang", "--timeout=0"}));
  program.waitForFile("hanging");
  program.send(SIGTERM);
  EXPECT_EQ(program.errorsToTheEnd(), "");
  EXPECT_EQ(program.waitForEnd(), 128 + SIGTERM);
}

TEST_F(Signals, LeaveNoHalfAnswerFile) {
  fs::create_directory("out");
  Words arguments = oddArguments({"--out-dir=out"});
  for (int number = 0; number < 500; ++number) {
    arguments.push_back(number % 2 == 0 ? "big" : std::to_string(number));
  }
  for (int round = 0; round < 20; ++round) {
    const int signal = round % 2 == 0 ? SIGINT : SIGQUIT;
    RunningProgram program(QUORL_JS_PATH, arguments);
    program.waitForFile("out/" + std::to_string(round * 4 + 1) + ".records");
    program.send(signal);
    EXPECT_EQ(program.errorsToTheEnd(), "");
    EXPECT_EQ(program.waitForEnd(), 128 + signal);
    for (const auto& entry : fs::directory_iterator("out")) {
      EXPECT_NE(entry.path().filename().string()[0], '.') << entry.path();
      fs::remove(entry.path());
    }
  }
}

TEST_F(Signals, ThatNobodyCanCatchLeaveNoWorkerBehind) {
#ifndef __linux__
  GTEST_SKIP() << "a worker that hangs is left to its time limit here";
#endif
  RunningProgram program(QUORL_JS_PATH, oddArguments({"a", "hang", "--timeout=0"}));
  program.waitForFile("hanging");
  program.send(SIGKILL);
  EXPECT_EQ(program.errorsToTheEnd(), "");
  EXPECT_EQ(program.waitForEnd(), 128 + SIGKILL);
}

TEST_F(Signals, LeaveWholeAnswerFilesAlone) {
  fs::create_directory("out");
  RunningProgram program(QUORL_JS_PATH,
                         oddArguments({"-j1", "big", "hang", "--timeout=0", "--out-dir=out"}));
  program.waitForFile("hanging");
  program.waitForFile("out/big.records");
  program.send(SIGTERM);
  program.errorsToTheEnd();
  EXPECT_EQ(program.waitForEnd(), 128 + SIGTERM);
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator("out")) {
    names.insert(entry.path().filename().string());
  }
  EXPECT_EQ(names, (std::set<std::string>{"big.records"}));
}

// As Ctrl-Z and fg do it: a file is not late because its worker did not run.
TEST_F(Signals, ThatSuspendTheRunDoNotUseUpTheTime) {
  RunningProgram program(QUORL_JS_PATH, oddArguments({"-j1", "a", "wait", "--timeout=1"}));
  program.waitForFile("waiting");
  program.sendToGroup(SIGSTOP);
  std::this_thread::sleep_for(std::chrono::milliseconds(3500));
  writeFile("go", "");
  program.sendToGroup(SIGCONT);
  EXPECT_EQ(program.errorsToTheEnd(), "");
  EXPECT_EQ(program.outputToTheEnd(), answerTo("a") + answerTo("wait"));
  EXPECT_EQ(program.waitForEnd(), 0);
}

TEST_F(Signals, ThatWereIgnoredBeforeStayIgnored) {
  for (const int signal : {SIGHUP, SIGTERM}) {
    SCOPED_TRACE(::strsignal(signal));
    RunningProgram program("/bin/sh", {"-c", "trap '' HUP TERM; exec \"$@\"", "sh", QUORL_JS_PATH,
                                       "--plugin", ODD_PLUGIN_PATH, "hang-once", "--timeout=1"});
    program.waitForFile("hanging");
    program.sendToGroup(signal);
    EXPECT_EQ(program.errorsToTheEnd(),
              std::string("quorl-js: hang-once: succeeded on the second attempt; first failure: ") +
                  kTimedOut + "\n");
    EXPECT_EQ(program.waitForEnd(), 0);
    fs::remove("hanging");
    fs::remove("hung");
  }
}

TEST_F(Signals, OfEndingChildrenMayBeIgnoredBefore) {
  EXPECT_EQ(host_test::runProgram("/bin/sh", {"-c", "trap '' CHLD; exec \"$@\"", "sh",
                                              QUORL_JS_PATH, "--plugin", ODD_PLUGIN_PATH, "crash"}),
            (Outcome{1, errorAnswer("crash: " + kKilled), "quorl-js: crash: " + kKilled + "\n"}));
}

TEST_F(Signals, AreNotNeededWhenTheReaderHasGone) {
  RunningProgram program(QUORL_JS_PATH, oddArguments({"hang", "--timeout=0"}));
  program.waitForFile("hanging");
  program.leaveStandardOutput();
  EXPECT_EQ(program.errorsToTheEnd(), "");
  EXPECT_EQ(program.waitForEnd(), 128 + SIGPIPE);
}

// ---- What the system is short of

TEST_F(Workers, AreFewerWhereThereAreNoMore) {
  Words files;
  std::string answers;
  for (int number = 0; number < 60; ++number) {
    files.push_back(std::to_string(number));
    answers += answerTo(files.back());
  }
  const std::string openTwenty = "for n in $(seq 10 29); do eval \"exec $n</dev/null\"; done; ";
  for (const std::string& before : {std::string(), openTwenty}) {
#ifdef QUORL_TEST_IS_SANITIZED
    // The sanitizer opens descriptors itself where an exception is made, and finds none here.
    if (!before.empty()) continue;
#endif
    SCOPED_TRACE(before);
    Words arguments = {"-c",       before + "ulimit -n 40; exec \"$@\"",
                       "bash",     QUORL_JS_PATH,
                       "--plugin", ODD_PLUGIN_PATH,
                       "-j40"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    EXPECT_EQ(host_test::runProgram("/bin/bash", arguments), (Outcome{0, answers, ""}));
  }
}

// The system kills what is about to replace a worker, or has no process for it.
class Replacements : public Workers {
 protected:
  // Crashes the module the first to the last time that it is loaded.
  static Outcome runWithBadLoads(int first, int last, const Words& arguments) {
    Words words = {"ODD_PLUGIN_FIRST_BAD_LOAD=" + std::to_string(first),
                   "ODD_PLUGIN_LAST_BAD_LOAD=" + std::to_string(last), QUORL_JS_PATH, "--plugin",
                   ODD_PLUGIN_PATH};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return host_test::runProgram("/usr/bin/env", words);
  }

  // Writes a list of so many files, and gives the answers to them.
  static std::string listFiles(int count) {
    std::string list;
    std::string answers;
    for (int number = 0; number < count; ++number) {
      list += std::to_string(number) + "\n";
      answers += answerTo(std::to_string(number));
    }
    writeFile("list", list);
    return answers;
  }

  static int loads() {
    int count = 0;
    while (fs::exists("load-" + std::to_string(count + 1))) ++count;
    return count;
  }
};

TEST_F(Replacements, AreTriedAgainWhenTheyDieAtOnce) {
  const std::string answers = listFiles(2'500);
  EXPECT_TRUE(isOutcome({0, answers, ""}, runWithBadLoads(2, 5, {"--files-from=list", "-j1"})));
  EXPECT_EQ(loads(), 7) << "three good ones, four bad ones";
}

TEST_F(Replacements, EndTheRunWhenNoneCanBeHad) {
  listFiles(1'500);
  const Outcome outcome = runWithBadLoads(2, 1'000, {"--files-from=list", "-j1"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "quorl-js: cannot start a worker: " + kKilled + "\n");
  EXPECT_EQ(loads(), 6) << "a good one, five attempts";
}

TEST_F(Replacements, AreNotNeededWhileOtherWorkersLive) {
  const std::string answers = listFiles(600);
  const auto start = std::chrono::steady_clock::now();
  const Outcome outcome = runWithBadLoads(
      3, 1'000, {"exit-once", "wait-for-load-7", "--files-from=list", "-j2", "--max-memory=0"});
  const auto time = std::chrono::steady_clock::now() - start;
  EXPECT_TRUE(isOutcome({0, answerTo("exit-once") + answerTo("wait-for-load-7") + answers,
                         std::string("quorl-js: exit-once: succeeded on the second attempt; first "
                                     "failure: ") +
                             kExited + "\n"},
                        outcome));
  EXPECT_GE(loads(), 7) << "two good ones, five attempts";
  EXPECT_LE(loads(), 7 + time / std::chrono::seconds(1)) << "then one more each second";
}

TEST_F(Replacements, AreNotTriedForAModuleThatNeverLoads) {
  const Outcome outcome = runWithBadLoads(1, 1'000, {"-j1", "a", "b"});
  EXPECT_EQ(outcome, (Outcome{2, "", "quorl-js: cannot load the plug-in: " + kKilled + "\n"}));
  EXPECT_EQ(loads(), 1);
}

TEST_F(Workers, ThatTheSystemHasNoPipesForEndTheRun) {
#ifdef QUORL_TEST_IS_SANITIZED
  GTEST_SKIP() << "the sanitizer needs descriptors itself";
#endif
  EXPECT_EQ(host_test::runProgram("/bin/bash", {"-c", "ulimit -n 6; exec \"$@\"", "bash",
                                                QUORL_JS_PATH, "--plugin", ODD_PLUGIN_PATH, "a"}),
            (Outcome{2, "", "quorl-js: cannot start a worker: pipe: Too many open files\n"}));
}

// ---- What counts as a failure

// ---- What the module writes to standard error

using Warnings = Workers;

TEST_F(Warnings, ComeAsOneLineForEachFile) {
  struct Row {
    const char* why;
    Words arguments;
    std::string messages;
  };
  const std::vector<Row> rows = {
      {"none", {"a"}, ""},
      {"one", {"warning"}, "quorl-js: warning: 1 warning: a warning of the module\n"},
      {"each file its own, in their order",
       {"a", "warning", "b", "warning", "-j3"},
       "quorl-js: warning: 1 warning: a warning of the module\n"
       "quorl-js: warning: 1 warning: a warning of the module\n"},
      {"alike, without the mark before each",
       {"warnings"},
       "quorl-js: warnings: 3 warnings: an odd tag\n"},
      {"differing, and a last line without its end",
       {"mixed-warnings"},
       "quorl-js: mixed-warnings: 2 warnings, first: one\\x1b\n"},
      {"many",
       {"flood-stderr"},
       "quorl-js: flood-stderr: 20000 warnings: " + std::string(99, 'e') + "\n"},
      {"a line without end",
       {"long-warning"},
       "quorl-js: long-warning: 1 warning: " + std::string(200, 'w') + "\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    const Outcome outcome = runOdd(row.arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, row.messages);
    Words quiet = row.arguments;
    quiet.emplace_back("--quiet");
    EXPECT_EQ(runOdd(quiet), (Outcome{0, outcome.out, ""}));
    const int strictStatus = row.messages.empty() ? 0 : 1;
    quiet.emplace_back("--strict");
    EXPECT_EQ(runOdd(quiet), (Outcome{strictStatus, outcome.out, ""}));
    quiet.erase(quiet.end() - 2);
    EXPECT_EQ(runOdd(quiet), (Outcome{strictStatus, outcome.out, row.messages}));
  }
}

TEST_F(Warnings, BeforeACrashAreNotLost) {
  EXPECT_EQ(runOdd({"last-words"}), (Outcome{1, errorAnswer("last-words: " + kKilled),
                                             "quorl-js: last-words: 1 warning: farewell\n"
                                             "quorl-js: last-words: " +
                                                 kKilled + "\n"}));
}

#ifdef __linux__
// What a file of warnings holds is bounded, so that no module fills the memory with it.
TEST_F(Warnings, WithoutEndAreCounted) {
  const Outcome outcome = runOdd({"endless-warnings"});
  EXPECT_EQ(outcome.status, 0);
  const std::string opening = "quorl-js: endless-warnings: more than ";
  EXPECT_EQ(outcome.err.substr(0, opening.size()), opening);
}
#endif

using Strictness = Workers;

TEST_F(Strictness, TurnsWarningsIntoFailures) {
  fs::create_directories("tree");
  ASSERT_EQ(::mkfifo("tree/pipe", 0600), 0);
  writeFile("tree/a", "x");
  writeFile("empty", "");
  const std::string skipped = "quorl-js: tree/pipe: not a regular file, skipped\n";
  EXPECT_EQ(runOdd({"--recursive", "tree"}), (Outcome{0, answerTo("tree/a"), skipped}));
  EXPECT_EQ(runOdd({"--recursive", "tree", "--strict"}), (Outcome{1, answerTo("tree/a"), skipped}));
  EXPECT_EQ(runOdd({"--recursive", "tree", "--strict", "-q"}),
            (Outcome{1, answerTo("tree/a"), ""}));
  EXPECT_EQ(runOdd({"--files-from=empty"}), (Outcome{0, "", ""}));
  for (const char* often : {"--strict", "--quiet"}) {
    EXPECT_EQ(runOdd({"--files-from=empty", "--strict", often}),
              (Outcome{1, "", "quorl-js: nothing to read\n"}));
  }
  EXPECT_EQ(runOdd({"crash-once", "--strict"}).status, 1);
  EXPECT_EQ(runOdd({"crash-once", "--strict"}), (Outcome{0, answerTo("crash-once"), ""}));
}

TEST_F(Strictness, IsNotChangedByQuiet) {
  EXPECT_EQ(runOdd({"a", "error", "no-memory", "--quiet"}),
            (Outcome{1, answerTo("a") + R"([{"error": "it\'s \"odd\": x"}])", ""}));
  EXPECT_EQ(runOdd({"warning", "--quiet"}), (Outcome{0, answerTo("warning"), ""}));
  EXPECT_EQ(runOdd({"a", "--quiet", "--files-from=gone"}),
            (Outcome{2, "", "quorl-js: list gone: No such file or directory\n"}));
}

// ---- What a person sees

TEST_F(ProgressLine, NamesTheFileAtHandOnATerminal) {
  if (const auto why = RunningProgram::whyNoTerminal(); !why.empty()) GTEST_SKIP() << why;
  RunningProgram program(QUORL_JS_PATH, oddArguments({"a", "hang\x1b[2J\n", "b", "--timeout=1"}),
                         RunningProgram::StandardError::kTerminal);
  const std::string seen = program.errorsToTheEnd();
  EXPECT_EQ(program.outputToTheEnd(),
            answerTo("a") + errorAnswer("hang\\\\x1b[2J\\\\x0a: " + std::string(kTimedOut)) +
                answerTo("b"));
  EXPECT_EQ(program.waitForEnd(), 1);
  EXPECT_NE(seen.find("\r\x1b[K1/3: hang\\x1b[2J\\n"), std::string::npos) << seen;
  const std::string told = "\r\x1b[Kquorl-js: hang\\x1b[2J\\x0a: " + std::string(kTimedOut);
  EXPECT_NE(seen.find(told), std::string::npos) << seen;  // the line is gone before
  EXPECT_EQ(seen.find("\x1b[2J"), std::string::npos) << seen;
}

TEST_F(ProgressLine, IsNotThereWhenItIsNotWanted) {
  if (const auto why = RunningProgram::whyNoTerminal(); !why.empty()) GTEST_SKIP() << why;
  const std::string told = std::string("quorl-js: hang: ") + kTimedOut + "\r\n";
  struct Row {
    std::string option;
    std::string seen;
  };
  for (const Row& row : {Row{"--no-progress", told}, Row{"--quiet", ""}, Row{"-q", ""}}) {
    RunningProgram program(QUORL_JS_PATH, oddArguments({"hang", "--timeout=1", row.option}),
                           RunningProgram::StandardError::kTerminal);
    EXPECT_EQ(program.errorsToTheEnd(), row.seen);
    EXPECT_EQ(program.waitForEnd(), 1);
  }
}

TEST_F(ProgressLine, GivesWayToWhatTheModuleWrites) {
  if (const auto why = RunningProgram::whyNoTerminal(); !why.empty()) GTEST_SKIP() << why;
  RunningProgram program(QUORL_JS_PATH,
                         oddArguments({"-j1", "slow", "slow", "slow", "warning", "flood-stderr"}),
                         RunningProgram::StandardError::kTerminal);
  const std::string seen = program.errorsToTheEnd();
  EXPECT_EQ(program.waitForEnd(), 0);
  const std::string told = "\r\x1b[Kquorl-js: warning: 1 warning: a warning of the module\r\n";
  EXPECT_NE(seen.find(told), std::string::npos) << seen;
}

TEST_F(ProgressLine, LeavesNothingBehindWhenTheRunIsEnded) {
  if (const auto why = RunningProgram::whyNoTerminal(); !why.empty()) GTEST_SKIP() << why;
  RunningProgram program(QUORL_JS_PATH, oddArguments({"hang", "--timeout=0"}),
                         RunningProgram::StandardError::kTerminal);
  EXPECT_EQ(program.readErrorsUpTo("0/1: hang"), "\r\x1b[K0/1: hang");
  program.send(SIGINT);
  const std::string rest = program.errorsToTheEnd();
  EXPECT_EQ(rest.substr(rest.size() - 4), "\r\x1b[K");
  EXPECT_EQ(program.waitForEnd(), 128 + SIGINT);
}

// A tree of a file is coloured as asked for, whatever the environment says.
TEST_F(ProgressLine, IsTheOnlyThingThatATerminalChanges) {
  writeFile("a.js", "let a = 1;\n");
  const Outcome plain = run({"a.js", "--format=tree"});
  EXPECT_EQ(plain.out.find('\x1b'), std::string::npos);
  const Outcome coloured = run({"a.js", "--format=tree", "--color=always"});
  EXPECT_NE(coloured.out.find('\x1b'), std::string::npos);
  EXPECT_EQ(run({"a.js", "--format=tree", "--color=never"}), plain);
  ::setenv("NO_COLOR", "1", 1);
  EXPECT_EQ(run({"a.js", "--format=tree", "--color=always"}), coloured);
  ::unsetenv("NO_COLOR");
}

}  // namespace
