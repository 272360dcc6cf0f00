// What bad files do to a run, and how many workers it has. The module is one that crashes, hangs
// and floods where a test wants it to.

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
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
using Signals = Workers;
using ProgressLine = Workers;

const std::string kKilled = std::string("crashed the plug-in: ") + ::strsignal(SIGKILL);
constexpr const char* kTimedOut = "not answered in time; see --timeout";
constexpr const char* kOutOfMemory = "not enough memory; see --max-memory";
constexpr const char* kTooLong = "the answer is too long; see --max-output";

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
      {"an end of the process", {}, "exit", "exit: ended its process with status 7"},
      {"a hang", {"--timeout=1"}, "hang", std::string("hang: ") + kTimedOut},
      {"a long answer", {"--max-output=1M"}, "big", std::string("big: ") + kTooLong},
      {"stray bytes among the answers", {}, "spoil", "spoil: spoilt the answers of its worker"},
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
  EXPECT_EQ(run({"it's \"big\".js", "--max-output=10"}),
            (Outcome{1, errorAnswer(std::string("it\\'s \\\"big\\\".js: ") + kTooLong),
                     std::string("quorl-js: it's \"big\".js: ") + kTooLong + "\n"}));
}

// A process that outlives the worker has the same pipes.
TEST_F(BadFiles, MayLeaveAProcessBehind) {
  const std::string told = "orphan: ended its process with status 7";
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
            R"("message":"a.js: the answer is too long; see --max-output",)"
            R"("sourceBytes":11,"microseconds":null,"recordCount":0})");
}

TEST_F(BadFiles, ThatTakeTooMuchMemory) {
  if (!kMemoryIsLimited) GTEST_SKIP() << "no limit on memory here";
  const std::string told = std::string("hog: ") + kOutOfMemory;
  EXPECT_EQ(
      runOdd({"--max-memory=64M", "a", "hog", "b"}),
      (Outcome{1, answerTo("a") + errorAnswer(told) + answerTo("b"), "quorl-js: " + told + "\n"}));
  EXPECT_EQ(runOdd({"--max-memory=0", "keep"}), (Outcome{0, answerTo("keep"), ""}));
}

TEST_F(BadFiles, MayTakeWhatTheMachineHasUnlessToldOtherwise) {
  if (!kMemoryIsLimited) GTEST_SKIP() << "no limit on memory here";
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_AS, &limit), 0);
  if (limit.rlim_cur != RLIM_INFINITY) GTEST_SKIP() << "these tests have a limit themselves";
  const auto machine = static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES)) *
                       static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  const Outcome small{0, "[\n67108864\n]\n", ""};
  EXPECT_EQ(runOdd({"address-space"}), (Outcome{0, "[\n" + std::to_string(machine) + "\n]\n", ""}));
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

// The module tells of it by an answer of its own, which names no file and no limit.
TEST_F(BadFiles, OfWhichTheModuleSaysThatTheyTakeTooMuchMemory) {
  const std::string told = std::string("bad-alloc: ") + kOutOfMemory;
  EXPECT_EQ(
      runOdd({"a", "bad-alloc", "b"}),
      (Outcome{1, answerTo("a") + errorAnswer(told) + answerTo("b"), "quorl-js: " + told + "\n"}));
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
    if (number == 300) fails("hang", std::string("hang: ") + kTimedOut);
    if (number == 500 && kMemoryIsLimited) fails("hog", std::string("hog: ") + kOutOfMemory);
    if (number == 500 && !kMemoryIsLimited) fails("exit", "exit: ended its process with status 7");
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
      "quorl-js: crash-once: answered at the second attempt; the first: " + kKilled + "\n";
  const std::string answers = answerTo("a") + answerTo("crash-once") + answerTo("b");
  EXPECT_EQ(runOdd({"a", "crash-once", "b"}), (Outcome{0, answers, told}));
  EXPECT_EQ(runOdd({"a", "crash-once", "b"}), (Outcome{0, answers, ""}));
  EXPECT_EQ(
      runOdd({"hang-once", "--timeout", "1"}),
      (Outcome{0, answerTo("hang-once"),
               std::string("quorl-js: hang-once: answered at the second attempt; the first: ") +
                   kTimedOut + "\n"}));
}

TEST_F(BadFiles, DoNotHangTheRunByWhatTheyPrint) {
  EXPECT_EQ(runOdd({"flood-stdout", "a"}),
            (Outcome{0, answerTo("flood-stdout") + answerTo("a"), ""}));
}

TEST_F(BadFiles, AreKnownInEveryFormat) {
  const std::string members = R"("path":"crash","status":"crashed","message":"crash: )" + kKilled +
                              R"(","sourceBytes":0,"microseconds":null,)";
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

TEST_F(BadFiles, AreThoseWhoseAnswerIsNoneToo) {
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
                      R"("recordCount":0})");
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
  const std::string told = "sparse.js: too large; see --max-size";
  EXPECT_EQ(run({"sparse.js", "gone"}),
            (Outcome{1, errorAnswer(told) + R"([{"error": "Could not open file: gone"}])",
                     "quorl-js: " + told + "\nquorl-js: gone: No such file or directory\n"}));
  EXPECT_EQ(run({"twelve.js", "--max-size=12"}).status, 0);
  EXPECT_EQ(run({"twelve.js", "--max-size=11"}),
            (Outcome{1, errorAnswer("twelve.js: too large; see --max-size"),
                     "quorl-js: twelve.js: too large; see --max-size\n"}));
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
    const bool isAnswered = outcome.status == 0 && outcome.err.empty() &&
                            outcome.out.rfind("[\n  {\n", 0) == 0 &&
                            outcome.out.substr(outcome.out.size() - 6) == "  }\n]\n";
    const Outcome empty{0, R"([{"error": "File is empty: a.js"}])", ""};
    EXPECT_TRUE(isAnswered || outcome == empty) << outcome;
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
      "quorl-js: crash-once: answered at the second attempt; the first: " + kKilled + "\n";
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
  EXPECT_EQ(program.errorsToTheEnd(),
            "quorl-js: big-by: its text is cut in the output: " + kKilled + "\n");
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
      std::string("quorl-js: hang-once: answered at the second attempt; the first: ") + kTimedOut;
  EXPECT_TRUE(isOutcome({0, answers, told + "\n"}, runOdd(arguments)));
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
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
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
  for (int round = 0; round < 10; ++round) {
    RunningProgram program(QUORL_JS_PATH, arguments);
    program.waitForFile("out/" + std::to_string(round * 4 + 1) + ".records");
    program.send(SIGINT);
    EXPECT_EQ(program.errorsToTheEnd(), "");
    EXPECT_EQ(program.waitForEnd(), 128 + SIGINT);
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

TEST_F(Signals, ThatWereIgnoredBeforeStayIgnored) {
  for (const int signal : {SIGHUP, SIGTERM}) {
    SCOPED_TRACE(::strsignal(signal));
    RunningProgram program("/bin/sh", {"-c", "trap '' HUP TERM; exec \"$@\"", "sh", QUORL_JS_PATH,
                                       "--plugin", ODD_PLUGIN_PATH, "hang-once", "--timeout=1"});
    program.waitForFile("hanging");
    program.sendToGroup(signal);
    EXPECT_EQ(program.errorsToTheEnd(),
              std::string("quorl-js: hang-once: answered at the second attempt; the first: ") +
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

TEST_F(Strictness, MakesAFailureOfWhatIsOnlyTold) {
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
