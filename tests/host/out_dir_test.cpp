// Answers as files of their own. The module is one whose answers are known byte by byte.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

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
using host_test::StandardOutput;
using host_test::Words;
using host_test::writeFile;

using Files = std::map<std::string, std::string>;

class OutDir : public host_test::QuorlJs {
 protected:
  OutDir() { fs::create_directory("out"); }

  // Runs the program over the files, whatever they are called, with the answers in "out".
  static Outcome runIntoOut(Words files, StandardOutput standardOutput = StandardOutput::kFile) {
    files.insert(files.begin(), {"--out-dir", "out", "--"});
    return runOdd(files, standardOutput);
  }

  // The names and contents of all entries, hidden ones too.
  static Files filesIn(const fs::path& folder) {
    Files files;
    for (const auto& entry : fs::directory_iterator(folder)) {
      files[entry.path().filename().string()] = contentsOf(entry.path());
    }
    return files;
  }
};

constexpr const char* kGood = "[\nf|\n]\n";

TEST_F(OutDir, HasAFileForEachAnswer) {
  EXPECT_EQ(runIntoOut({"f", "src/g.js"}), (Outcome{0, "", ""}));
  EXPECT_EQ(filesIn("out"),
            (Files{{"f.records", kGood}, {"src%2Fg.js.records", "[\nsrc/g.js|\n]\n"}}));
}

TEST_F(OutDir, NamesFilesAfterTheirPaths) {
  const std::string a183(183, 'a');
  const std::string a200(200, 'a');
  const auto blanks = [](int count) {
    std::string text;
    for (int number = 0; number < count; ++number) text += "%20";
    return text;
  };
  struct Row {
    const char* why;
    std::string path;
    std::string name;
  };
  const std::vector<Row> rows = {
      {"letters, digits and three marks", "AZ_az-09.js", "AZ_az-09.js"},
      {"the bytes next to them", "@[`{/:", "%40%5B%60%7B%2F%3A"},
      {"the bytes next to the marks", ",^", "%2C%5E"},
      {"slashes", "/etc//x/", "%2Fetc%2F%2Fx%2F"},
      {"a leading dot", ".a.js", "%2Ea.js"},
      {"a leading dot alone", "./a", "%2E%2Fa"},
      {"two leading dots", "../a", "%2E.%2Fa"},
      {"a dot behind a slash", "a/.b", "a%2F.b"},
      {"an escape in the path", "%2Ea.js", "%252Ea.js"},
      {"blanks and quotes", " 'a'\"b\"", "%20%27a%27%22b%22"},
      {"a line feed", "a\nb", "a%0Ab"},
      {"bytes that are no UTF-8", "\xff\x80\xc3", "%FF%80%C3"},
      {"a leading hyphen", "-a", "-a"},
      {"the mark of a cut name", "a~b", "a%7Eb"},
      {"no name", "", "%"},
      {"the longest name", a200, a200},
      {"a byte more", a200 + "a", a183 + "~9a253eda0ce95884"},
      {"the whole path counts", a200 + "b", a183 + "~9a2541da0ce95d9d"},
      {"escapes count as three bytes", std::string(66, ' '), blanks(66)},
      {"one escape more", std::string(67, ' '), blanks(61) + "~9232ca0c23c8f5d7"},
      {"no escape is cut apart", "a" + std::string(67, ' '),
       "a" + blanks(60) + "~bbbfcb4b797ab1a4"},
      {"a path that is too long for the system", std::string(4000, 'z'),
       std::string(183, 'z') + "~cc5811c7d2881e25"},
  };
  Words paths;
  Files expected;
  for (const Row& row : rows) {
    paths.push_back(row.path);
    const bool isNew = expected.emplace(row.name + ".records", "[\n" + row.path + "|\n]\n").second;
    EXPECT_TRUE(isNew) << row.why;
  }
  EXPECT_EQ(runIntoOut(paths), (Outcome{0, "", ""}));
  const Files found = filesIn("out");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    const auto file = found.find(row.name + ".records");
    ASSERT_NE(file, found.end()) << row.name;
    EXPECT_EQ(file->second, "[\n" + row.path + "|\n]\n");
  }
  EXPECT_EQ(found.size(), rows.size());
}

TEST_F(OutDir, HasOneFileForAFileThatIsGivenTwice) {
  EXPECT_EQ(runIntoOut({"f", "g", "f"}), (Outcome{0, "", ""}));
  EXPECT_EQ(filesIn("out"), (Files{{"f.records", kGood}, {"g.records", "[\ng|\n]\n"}}));
}

TEST_F(OutDir, ReplacesAnswersFromBefore) {
  writeFile("old", "kept");
  fs::create_hard_link("old", "out/f.records");
  writeFile("target", "kept");
  fs::create_symlink("../target", "out/g.records");
  EXPECT_EQ(runIntoOut({"f", "g"}), (Outcome{0, "", ""}));
  EXPECT_EQ(filesIn("out"), (Files{{"f.records", kGood}, {"g.records", "[\ng|\n]\n"}}));
  EXPECT_EQ(contentsOf("old") + contentsOf("target"), "keptkept");
  EXPECT_FALSE(fs::is_symlink("out/g.records"));
}

TEST_F(OutDir, HasErrorAnswersToo) {
  EXPECT_EQ(runIntoOut({"f", "error", "no-memory", "no-text"}),
            (Outcome{1, "",
                     "quorl-js: error: it's \"odd\": x\n"
                     "quorl-js: no-memory: no memory for the answer\n"
                     "quorl-js: no-text: the answer is neither records nor an error\n"}));
  EXPECT_EQ(filesIn("out"), (Files{{"error.records", R"([{"error": "it\'s \"odd\": x"}])"},
                                   {"f.records", kGood},
                                   {"no-text.records", ""}}));
}

TEST_F(OutDir, HasAWholeDocumentForEachFile) {
  EXPECT_EQ(runOdd({"no-records", "no-memory", "--out-dir=out", "--format=ndjson"}).status, 1);
  const std::string header =
      R"({"type":"header","schema":1,"tool":"quorl-js","version":")" QUORL_VERSION
      "\",\"fileCount\":1}\n";
  EXPECT_EQ(
      filesIn("out"),
      (Files{{"no-memory.ndjson",
              header +
                  R"({"type":"file","file":0,"path":"no-memory","status":"failed",)"
                  R"("message":"no-memory: no memory for the answer",)"
                  "\"sourceBytes\":0,\"microseconds\":null,\"omitted\":null,\"recordCount\":0}\n"},
             {"no-records.ndjson",
              header + R"({"type":"file","file":0,"path":"no-records","status":"answered",)"
                       "\"message\":null,\"sourceBytes\":0,\"microseconds\":null,"
                       "\"omitted\":null,\"recordCount\":0}\n"}}));
}

TEST_F(OutDir, HasNothingForWhatIsSkipped) {
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  EXPECT_EQ(runIntoOut({"pipe", "f"}),
            (Outcome{1, "", "quorl-js: pipe: not a regular file, skipped\n"}));
  EXPECT_EQ(filesIn("out"), (Files{{"f.records", kGood}}));
}

TEST_F(OutDir, RemovesStaleAnswers) {
  writeFile("out/pipe.records", "from before");
  writeFile("out/f.records", "from before");
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  EXPECT_EQ(runIntoOut({"pipe", "f"}),
            (Outcome{1, "", "quorl-js: pipe: not a regular file, skipped\n"}));
  EXPECT_EQ(filesIn("out"), (Files{{"f.records", kGood}}));
}

TEST_F(OutDir, IsNotWalkedItself) {
  writeFile("out/a.records", "kept");
  for (const char* name : {"out", "./out/", "out/../out"}) {
    EXPECT_EQ(runOdd({"--recursive", "--out-dir=out", name}),
              (Outcome{2, "", "quorl-js: output directory out: is also an input\n"}));
  }
  EXPECT_EQ(filesIn("out"), (Files{{"a.records", "kept"}}));
}

TEST_F(OutDir, NeedsNoStandardOutput) {
  EXPECT_EQ(runIntoOut({"f"}, StandardOutput::kClosed), (Outcome{0, "", ""}));
  EXPECT_EQ(filesIn("out"), (Files{{"f.records", kGood}}));
}

TEST_F(OutDir, HasNoColoursOfATerminalElsewhere) {
  if (const auto why = RunningProgram::whyNoTerminal(); !why.empty()) GTEST_SKIP() << why;
  writeFile("a.js", "let a = 1;\n");
  RunningProgram program("/bin/sh",
                         {"-c", "unset NO_COLOR; exec \"$@\" 1>&2", "sh", QUORL_JS_PATH, "a.js",
                          "--format=tree", "--out-dir=out", "--no-progress"},
                         RunningProgram::StandardError::kTerminal);
  EXPECT_EQ(program.errorsToTheEnd(), "");
  EXPECT_EQ(program.waitForEnd(), 0);
  EXPECT_EQ(contentsOf("out/a.js.tree"), run({"a.js", "--format=tree"}).out);
  EXPECT_EQ(contentsOf("out/a.js.tree").find('\x1b'), std::string::npos);
}

TEST_F(OutDir, HasTheAnswersOfAWalkAndAList) {
  fs::create_directories("tree/b");
  writeFile("tree/b/c.js", "x");
  writeFile("list", "f\n");
  EXPECT_EQ(runOdd({"--recursive", "tree", "--files-from=list", "--out-dir=./out/"}),
            (Outcome{0, "", ""}));
  EXPECT_EQ(filesIn("out"),
            (Files{{"f.records", kGood}, {"tree%2Fb%2Fc.js.records", "[\ntree/b/c.js|\n]\n"}}));
}

TEST_F(OutDir, IsPassedOverInAWalk) {
  writeFile("f", "");
  const Files files{{"%2E%2Ff.records", "[\n./f|\n]\n"}};
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(runOdd({"--recursive", "--out-dir", "out", "."}), (Outcome{0, "", ""}));
    EXPECT_EQ(filesIn("out"), files) << "answers are no sources, in round " << round;
  }
}

TEST_F(OutDir, HasWholeBigAnswers) {
  EXPECT_EQ(runIntoOut({"big"}), (Outcome{0, "", ""}));
  EXPECT_TRUE(contentsOf("out/big.records") == "[\n" + std::string(3'000'000, 'x') + "\n]\n");
}

TEST_F(OutDir, TakesManyAnswers) {
  constexpr int kFiles = 2'000;
  std::string list;
  for (int number = 0; number < kFiles; ++number) list += std::to_string(number) + "\n";
  writeFile("list", list);
  EXPECT_EQ(runOdd({"--files-from=list", "--out-dir=out"}), (Outcome{0, "", ""}));
  const Files files = filesIn("out");
  EXPECT_EQ(files.size(), std::size_t{kFiles});
  EXPECT_EQ(files.at("1999.records"), "[\n1999|\n]\n");
}

TEST_F(OutDir, LeavesStandardOutputAlone) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  EXPECT_EQ(runIntoOut({"f"}, StandardOutput::kFullDisk), (Outcome{0, "", ""}));
  EXPECT_EQ(filesIn("out"), (Files{{"f.records", kGood}}));
}

TEST_F(OutDir, GivesItsFilesTheUsualRights) {
  const mode_t before = ::umask(027);
  EXPECT_EQ(runIntoOut({"f"}), (Outcome{0, "", ""}));
  ::umask(before);
  EXPECT_EQ(fs::status("out/f.records").permissions(), fs::perms(0640));
}

TEST_F(OutDir, LosesTheTemporaryFilesThatNobodyHolds) {
  // Process numbers say nothing: on a shared folder they may be those of another machine.
  const std::string gone = ".quorl-js-" + std::to_string(::getpid());
  const std::string held = ".quorl-js-4194305-0";  // above all numbers of this machine
  const std::vector<std::string> kept = {
      held,         gone,          gone + "-",        gone + "-x",
      gone + "-0x", gone + "-0-0", "x" + gone + "-0", ".quorl-js--1-0",
      ".quorl-js-1"};
  Files expected{{"f.records", kGood}};
  for (const std::string& name : kept) {
    writeFile("out/" + name, "kept");
    expected[name] = "kept";
  }
  for (const char* number : {"-0", "-17"}) writeFile("out/" + gone + number, "half");
  const int holder = ::open(("out/" + held).c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(holder, LOCK_EX), 0);
  EXPECT_EQ(runIntoOut({"f"}), (Outcome{0, "", ""}));
  ::close(holder);
  EXPECT_EQ(filesIn("out"), expected);
}

TEST_F(OutDir, ThatIsNoDirectoryEndsTheRun) {
  writeFile("file", "");
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);  // opening it as a file would wait for a writer
  fs::create_symlink("out", "link");
  struct Row {
    std::string directory;
    std::string reason;
  };
  const std::vector<Row> rows = {
      {"gone", "No such file or directory"}, {"", "No such file or directory"},
      {"file", "Not a directory"},           {"file/x", "Not a directory"},
      {"pipe", "Not a directory"},           {"/dev/null", "Not a directory"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.directory);
    EXPECT_EQ(
        runOdd({"no-memory", "f", "--out-dir=" + row.directory}),
        (Outcome{2, "", "quorl-js: output directory " + row.directory + ": " + row.reason + "\n"}));
  }
  EXPECT_EQ(runOdd({"f", "--out-dir", "link"}), (Outcome{0, "", ""}));
}

TEST_F(OutDir, ThatTakesNoFilesEndsTheRun) {
  const PlainUser user;
  if (const auto why = user.whyNot(); !why.empty()) GTEST_SKIP() << why;
  ::chmod("out", 0500);
  EXPECT_EQ(user.runOdd({"--out-dir", "out", "no-memory", "f"}),
            (Outcome{2, "", "quorl-js: output directory out: Permission denied\n"}));
  ::chmod("out", 0700);
}

TEST_F(OutDir, ThatHasADirectoryInTheWayEndsTheRun) {
  fs::create_directory("out/f.records");
  EXPECT_EQ(runIntoOut({"e", "f", "g"}),
            (Outcome{2, "", "quorl-js: answer file out/f.records: Is a directory\n"}));
  fs::remove("out/f.records");
  EXPECT_EQ(filesIn("out"), (Files{{"e.records", "[\ne|\n]\n"}}));
}

// A limit on the size of files stands for a full disk: what is written is cut off in the middle.
TEST_F(OutDir, ThatIsFullEndsTheRunWithoutAHalfFile) {
  writeFile("out/big.records", "from before");
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit limit{1'000'000, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  const Outcome outcome = runIntoOut({"f", "big", "g"});
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  EXPECT_EQ(outcome, (Outcome{2, "", "quorl-js: answer file out/big.records: File too large\n"}));
  EXPECT_EQ(filesIn("out"), (Files{{"big.records", "from before"}, {"f.records", kGood}}));
}

}  // namespace
