// A run of the program from outside: what it prints, what it complains of, its exit status. The
// module is one whose answers are known byte by byte.

#include <dlfcn.h>

#include <cmath>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"

namespace {

namespace fs = std::filesystem;
using host_test::contentsOf;
using host_test::joined;
using host_test::Outcome;
using host_test::runProgram;
using host_test::StandardOutput;
using host_test::Words;
using host_test::writeFile;
using Answers = host_test::QuorlJs;
using Module = host_test::QuorlJs;
using Diagnostics = host_test::QuorlJs;
using OutputFailure = host_test::QuorlJs;

#ifdef __APPLE__
constexpr const char* kModuleFile = "quorljs.bundle/Contents/MacOS/quorljs";
#else
constexpr const char* kModuleFile = "quorljs.so";
#endif

// ---- Answers

TEST_F(Answers, ArePrintedAsTheyAreAndFailuresAreTold) {
  struct Row {
    const char* why;
    Words files;
    Outcome outcome;
  };
  const std::vector<Row> rows = {
      {"one file", {"f"}, {0, "[\nf|\n]\n", ""}},
      {"nothing between two answers", {"f", "g"}, {0, "[\nf|\n]\n[\ng|\n]\n", ""}},
      {"a file twice", {"f", "f"}, {0, "[\nf|\n]\n[\nf|\n]\n", ""}},
      {"an array without records is a good answer", {"no-records"}, {0, "[\n]\n", ""}},
      {"an error answer is an answer too, and told without its escapes",
       {"error"},
       {1, R"([{"error": "it\'s \"odd\": x"}])", "quorl-js: error: it's \"odd\": x\n"}},
      {"control bytes of a message are shown, other bytes stay",
       {"control-bytes"},
       {1, "[{\"error\": \"\x01 \x1b[31mred\x7f \t\r\n caf\xc3\xa9 \xff\"}]",
        "quorl-js: control-bytes: \\x01 \\x1b[31mred\\x7f \\x09\\x0d\\x0a caf\xc3\xa9 \xff\n"}},
      {"an error answer without its end",
       {"cut-error"},
       {1, R"([{"error": "no end)",
        "quorl-js: cut-error: the answer is neither records nor an error\n"}},
      {"an object",
       {"object"},
       {1, R"({ "error": "Invalid root node" })",
        "quorl-js: object: the answer is neither records nor an error\n"}},
      {"an array without the line feed of records",
       {"empty-array"},
       {1, "[]", "quorl-js: empty-array: the answer is neither records nor an error\n"}},
      {"no text at all",
       {"no-text"},
       {1, "", "quorl-js: no-text: the answer is neither records nor an error\n"}},
      {"no memory for the answer",
       {"no-memory"},
       {1, "", "quorl-js: no-memory: no memory for the answer\n"}},
      {"files behind a failed one are done",
       {"f", "error", "g", "no-memory", "h"},
       {1,
        "[\nf|\n]\n"
        R"([{"error": "it\'s \"odd\": x"}])"
        "[\ng|\n]\n[\nh|\n]\n",
        "quorl-js: error: it's \"odd\": x\nquorl-js: no-memory: no memory for the answer\n"}},
      {"a good last file does not mend the status",
       {"no-memory", "f"},
       {1, "[\nf|\n]\n", "quorl-js: no-memory: no memory for the answer\n"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(runOdd(row.files), row.outcome);
  }
}

TEST_F(Answers, ThatAreBigArriveWhole) {
  const std::string answer = "[\n" + std::string(3'000'000, 'x') + "\n]\n";
  EXPECT_EQ(runOdd({"big", "f"}), (Outcome{0, answer + "[\nf|\n]\n", ""}));
  EXPECT_EQ(runOdd({"big", "f"}, StandardOutput::kPipe), (Outcome{0, answer + "[\nf|\n]\n", ""}));
  EXPECT_EQ(runOdd({"big", "f"}, StandardOutput::kNonBlockingPipe),
            (Outcome{0, answer + "[\nf|\n]\n", ""}));
}

// ---- The module

TEST_F(Module, ThatCannotBeLoadedEndsTheRun) {
  writeFile("text.so", "no module\n");
  fs::create_directory("folder");
  struct Row {
    const char* why;
    std::string given;
    std::string loaded;
  };
  const std::vector<Row> rows = {
      {"no such file", "/nowhere/m.so", "/nowhere/m.so"},
      {"no such file here", "gone.so", "./gone.so"},
      {"not a module", "text.so", "./text.so"},
      {"a directory", "./folder", "./folder"},
      {"no name", "", "./"},
      {"a bare name is not looked up in the library search path", "libm.so.6", "./libm.so.6"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    ASSERT_EQ(::dlopen(row.loaded.c_str(), RTLD_NOW), nullptr);
    const std::string reason = ::dlerror();
    const Outcome refused{2, "", "quorl-js: cannot load the plug-in: " + reason + "\n"};
    EXPECT_EQ(run({"--plugin", row.given, "f"}), refused);
    EXPECT_EQ(run({"f", "--plugin=" + row.given}), refused);
  }
}

TEST_F(Module, ThatLacksAnEntryPointEndsTheRun) {
  Dl_info mathematics;
  ASSERT_NE(
      ::dladdr(reinterpret_cast<void*>(static_cast<double (*)(double)>(&std::cos)), &mathematics),
      0);
  const std::string library = mathematics.dli_fname;
  EXPECT_EQ(run({"--plugin", library, "f"}),
            (Outcome{2, "", "quorl-js: " + library + ": no entry point ParseJS\n"}));
  EXPECT_EQ(run({"--plugin", INCOMPLETE_PLUGIN_PATH, "f"}),
            (Outcome{2, "", "quorl-js: " INCOMPLETE_PLUGIN_PATH ": no entry point Info\n"}));
}

TEST_F(Module, ThatLacksAnEntryPointIsEndedInOrder) {
  const std::string reason = "quorl-js: " INCOMPLETE_PLUGIN_PATH ": no entry point Info\n";
  for (const char* job : {"f", "--version"}) {
    SCOPED_TRACE(job);
    EXPECT_EQ(run({"--plugin", INCOMPLETE_PLUGIN_PATH, "--diagnostics", "spoken", job}),
              (Outcome{2, "", reason}));
    EXPECT_EQ(contentsOf("spoken"), "loaded\nunloaded\n");
  }
  EXPECT_EQ(run({"--plugin", INCOMPLETE_PLUGIN_PATH, "-j8", "a", "b", "c", "d", "e", "f", "g"}),
            (Outcome{2, "", reason}));
}

TEST_F(Module, ThatHangsOverItsVersionEndsTheRun) {
  EXPECT_EQ(
      runProgram("/usr/bin/env", {"ODD_PLUGIN_HANGS=1", QUORL_JS_PATH, "--plugin", ODD_PLUGIN_PATH,
                                  "--version", "--timeout=1"}),
      (Outcome{2, "",
               "quorl-js: cannot get the plug-in's version: timed out after 1 s (--timeout)\n"}));
}

TEST_F(Module, IsFoundInTheCurrentDirectoryByABareName) {
  fs::create_symlink(ODD_PLUGIN_PATH, "odd.so");
  EXPECT_EQ(run({"--plugin", "odd.so", "f"}), (Outcome{0, "[\nf|\n]\n", ""}));
}

TEST_F(Module, IsLookedForBesideTheProgramAndThenWhereItIsInstalled) {
  const fs::path beside = directory() / "bin" / kModuleFile;
  const fs::path installed = directory() / "lib/quorl-js" / kModuleFile;
  fs::create_directories(beside.parent_path());
  fs::create_directories(installed.parent_path());
  fs::copy_file(QUORL_JS_PATH, "bin/quorl-js");
  fs::create_symlink("bin/quorl-js", "link");
  const Outcome good{0, "[\nf|\n]\n", ""};

  EXPECT_EQ(runProgram("bin/quorl-js", {"f"}),
            (Outcome{2, "",
                     "quorl-js: no plug-in: neither " + beside.string() + " nor " +
                         installed.string() + " exists\n"}));
  fs::create_symlink(ODD_PLUGIN_PATH, installed);
  EXPECT_EQ(runProgram("bin/quorl-js", {"f"}), good);
  EXPECT_EQ(runProgram("./link", {"f"}), good);

  writeFile(beside, "no module\n");
  EXPECT_EQ(runProgram("bin/quorl-js", {"f"}).status, 2);  // the first that exists is the one
  EXPECT_EQ(runProgram("bin/quorl-js", {"f", "--plugin", installed.string()}), good);

  fs::rename(installed, beside);
  writeFile(installed, "no module\n");
  EXPECT_EQ(runProgram("bin/quorl-js", {"f"}), good);
  EXPECT_EQ(runProgram("./link", {"f"}), good);
}

// ---- Diagnostics

constexpr const char* kVersions =
    "quorl-js " QUORL_VERSION "\nodd plug-in\nplug-in: " ODD_PLUGIN_PATH "\n";

// What the odd module writes in a run over the file "noisy", from its loading to the process' end.
constexpr const char* kNoise =
    "loaded\nby iostream\nby descriptor\nby stdio\ncleaned up\nunloaded\n";

TEST_F(Diagnostics, GoNowhereUnlessAskedFor) {
  EXPECT_EQ(runOdd({"noisy"}), (Outcome{0, "[\nnoisy|\n]\n", ""}));
  EXPECT_EQ(runOdd({"noisy", "--diagnostics", "none"}), (Outcome{0, "[\nnoisy|\n]\n", ""}));
  EXPECT_TRUE(fs::is_empty("."));
}

// Only what the module writes to standard output is led elsewhere.
TEST_F(Diagnostics, AreNotWhatTheModuleWritesToStandardError) {
  const Outcome warned{0, "[\nwarning|\n]\n",
                       "quorl-js: warning: 1 warning: a warning of the module\n"};
  EXPECT_EQ(runOdd({"warning"}), warned);
  EXPECT_EQ(runOdd({"warning", "--diagnostics", "lines"}), warned);
  EXPECT_EQ(contentsOf("lines"), "loaded\ncleaned up\nunloaded\n");
}

TEST_F(Diagnostics, GoToStandardError) {
  EXPECT_EQ(runOdd({"noisy", "--diagnostics", "stderr"}), (Outcome{0, "[\nnoisy|\n]\n", kNoise}));
}

TEST_F(Diagnostics, GoToStandardErrorBeforeTheMessageOfTheirFile) {
  EXPECT_EQ(runOdd({"noisy", "error", "g", "--diagnostics=stderr"}),
            (Outcome{1,
                     "[\nnoisy|\n]\n"
                     R"([{"error": "it\'s \"odd\": x"}])"
                     "[\ng|\n]\n",
                     "loaded\nby iostream\nby descriptor\nby stdio\n"
                     "quorl-js: error: it's \"odd\": x\n"
                     "cleaned up\nunloaded\n"}));
}

TEST_F(Diagnostics, GoToAFileThatIsOverwritten) {
  writeFile("lines", std::string(1000, 'x'));
  EXPECT_EQ(runOdd({"noisy", "--diagnostics", "lines"}), (Outcome{0, "[\nnoisy|\n]\n", ""}));
  EXPECT_EQ(contentsOf("lines"), kNoise);
}

TEST_F(Diagnostics, OverwriteNothingInARunThatCannotBegin) {
  writeFile("f", "source");
  writeFile("lines", "before");
  EXPECT_EQ(runOdd({"f", "--diagnostics", "./f"}),
            (Outcome{2, "", "quorl-js: diagnostics file f: is also an input\n"}));
  EXPECT_EQ(contentsOf("f"), "source");
  EXPECT_EQ(runOdd({"--files-from=gone", "--diagnostics", "lines"}),
            (Outcome{2, "", "quorl-js: list gone: No such file or directory\n"}));
  EXPECT_EQ(contentsOf("lines"), "before");
}

TEST_F(Diagnostics, GoToFilesOfAnyName) {
  for (const char* name : {"./none", "./stderr", "-", "--help", "a b", "[a,b]", "line\nfeed"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(runOdd({"noisy", "--diagnostics", name}), (Outcome{0, "[\nnoisy|\n]\n", ""}));
    EXPECT_EQ(contentsOf(name), kNoise);
  }
}

TEST_F(Diagnostics, OfAVersionAreKeptApartToo) {
  EXPECT_EQ(runOdd({"--version", "--diagnostics", "lines"}), (Outcome{0, kVersions, ""}));
  EXPECT_EQ(contentsOf("lines"), "loaded\ncleaned up\nunloaded\n");
}

TEST_F(Diagnostics, ThatCannotBeOpenedEndTheRun) {
  fs::create_directory("folder");
  struct Row {
    std::string where;
    std::string message;
  };
  const std::vector<Row> rows = {
      {"folder", "diagnostics file folder: Is a directory"},
      {"gone/lines", "diagnostics file gone/lines: No such file or directory"},
      {"", "diagnostics file : No such file or directory"},
      {"a\nb/lines", "diagnostics file a\\x0ab/lines: No such file or directory"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(runOdd({"f", "--diagnostics=" + row.where}),
              (Outcome{2, "", "quorl-js: " + row.message + "\n"}));
  }
}

TEST_F(Diagnostics, ThatCannotBeWrittenEndTheRun) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  const std::string message = "quorl-js: diagnostics could not be written: /dev/full\n";
  EXPECT_EQ(runOdd({"noisy", "g", "--diagnostics", "/dev/full"}),
            (Outcome{2, "[\nnoisy|\n]\n", message}));
  EXPECT_EQ(runOdd({"--version", "--diagnostics", "/dev/full"}), (Outcome{2, kVersions, message}));
}

// ---- Standard output that takes nothing

const std::vector<Words> kRunsThatWrite = {{"f"},   {"f", "g"}, {"error", "f"}, {"no-memory", "f"},
                                           {"big"}, {"noisy"},  {"--help"},     {"--version"}};

TEST_F(OutputFailure, IsToldInOneLine) {
  struct Row {
    StandardOutput out;
    std::string reason;
  };
  std::vector<Row> rows = {{StandardOutput::kClosed, "Bad file descriptor"}};
  if (fs::exists("/dev/full"))
    rows.push_back({StandardOutput::kFullDisk, "No space left on device"});
  for (const Row& row : rows) {
    for (const Words& arguments : kRunsThatWrite) {
      SCOPED_TRACE(row.reason + ": " + joined(arguments));
      const std::string reason = "quorl-js: standard output: " + row.reason + "\n";
      // A file whose answer is null fails before the first byte is to be written.
      const bool tellsBefore =
          arguments.front() == "no-memory" && row.out != StandardOutput::kClosed;
      const std::string before =
          tellsBefore ? "quorl-js: no-memory: no memory for the answer\n" : "";
      EXPECT_EQ(runOdd(arguments, row.out), (Outcome{2, "", before + reason}));
    }
  }
}

TEST_F(OutputFailure, OfABrokenPipeIsSilent) {
  for (const Words& arguments : kRunsThatWrite) {
    SCOPED_TRACE(joined(arguments));
    const Outcome outcome = runOdd(arguments, StandardOutput::kAbandonedPipe);
    EXPECT_EQ(outcome.status, 128 + SIGPIPE);
    // A file may fail before it is seen that there is no reader.
    if (arguments.front() != "no-memory") {
      EXPECT_EQ(outcome.err, "");
    }
  }
}

TEST_F(OutputFailure, OfAPipeThatBreaksInTheMiddleIsSilent) {
  const Outcome outcome = runOdd({"big", "f"}, StandardOutput::kBrokenOffPipe);
  EXPECT_EQ(outcome.status, 128 + SIGPIPE);
  EXPECT_EQ(outcome.err, "");
}

// Whoever starts the program may ignore SIGPIPE, as many interpreters do.
TEST_F(OutputFailure, OfABrokenPipeIsSilentEvenIfTheSignalIsIgnored) {
  EXPECT_EQ(runProgram("/bin/sh",
                       {"-c", "trap '' PIPE; exec \"$@\"", "sh", QUORL_JS_PATH, "--plugin",
                        ODD_PLUGIN_PATH, "f"},
                       StandardOutput::kAbandonedPipe),
            (Outcome{128 + SIGPIPE, "", ""}));
}

TEST_F(OutputFailure, OfAClosedDescriptorIsSeenBeforeAnythingIsOpened) {
  EXPECT_EQ(runOdd({"f", "--diagnostics", "lines"}, StandardOutput::kClosed),
            (Outcome{2, "", "quorl-js: standard output: Bad file descriptor\n"}));
  EXPECT_FALSE(fs::exists("lines"));
}

}  // namespace
