// What a walk leaves out: what git ignores, binary files, and what globs say. The module is one
// whose answers are known byte by byte, and which opens no file.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"
#include "host/running_program.h"

namespace {

namespace fs = std::filesystem;
using host_test::joined;
using host_test::Outcome;
using host_test::RunningProgram;
using host_test::runProgram;
using host_test::Words;
using host_test::writeFile;

class SkippedFiles : public host_test::QuorlJs {
 protected:
  SkippedFiles() {
    fs::create_directory("home");
    ::setenv("HOME", (directory() / "home").c_str(), 1);
    ::unsetenv("XDG_CONFIG_HOME");
    // A work tree may not reach above the directory of the test.
    ::setenv("GIT_CEILING_DIRECTORIES", directory().c_str(), 1);
  }

  static bool isGitInstalled() {
    return runProgram("/bin/sh", {"-c", "command -v git"}).status == 0;
  }

  static void makeRepository(const std::string& directory) {
    fs::create_directories(directory);
    EXPECT_EQ(runProgram("/usr/bin/env", {"git", "init", "-q", directory}).status, 0);
  }

  static void makeFiles(const Words& paths) {
    for (const std::string& path : paths) {
      const fs::path parent = fs::path(path).parent_path();
      if (!parent.empty()) fs::create_directories(parent);
      writeFile(path, "x");
    }
  }

  // The files that a run reads. It has to succeed without a message.
  static Words filesRead(const Words& arguments) {
    const Outcome outcome = runOdd(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_EQ(outcome.err, "");
    Words files;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) {
      if (line.ends_with("|")) files.push_back(line.substr(0, line.size() - 1));
    }
    return files;
  }
};
using IgnoredFiles = SkippedFiles;
using BinaryFiles = SkippedFiles;
using GlobOptions = SkippedFiles;
using Summary = SkippedFiles;

// ---- What git ignores

TEST_F(IgnoredFiles, AreWhatGitSays) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  const std::vector<std::string> rules = {"*.log",
                                          "build/",
                                          "/top.js",
                                          "sub/deep/*.js",
                                          "**/gen",
                                          "doc/**/x.js",
                                          "*.py[cod]",
                                          "!keep.log",
                                          "*~",
                                          "a?.txt",
                                          "\\#odd",
                                          "tail/*",
                                          "!tail/b.js",
                                          "name with blank",
                                          "trailing.js  ",
                                          "# comment",
                                          "lib/*/z",
                                          "*\n!*.js\n!*/",
                                          "/*\n!/sub",
                                          "**",
                                          "[!a-z].js",
                                          "UPPER.js",
                                          "sub",
                                          "sub/",
                                          "/sub/deep",
                                          "*.js\n!sub/a.js",
                                          "foo/*\n!foo/bar.js",
                                          "gen/**",
                                          "?",
                                          "a*c*e.js"};
  const Words files = {"a.log",
                       "keep.log",
                       "top.js",
                       "sub/top.js",
                       "sub/deep/a.js",
                       "sub/a.js",
                       "build",
                       "sub/build/b.js",
                       "gen/g.js",
                       "sub/gen/g.js",
                       "doc/x.js",
                       "doc/1/2/x.js",
                       "m.pyc",
                       "m.py",
                       "m.js~",
                       "ab.txt",
                       "abc.txt",
                       "#odd",
                       "tail/a.js",
                       "tail/b.js",
                       "name with blank",
                       "trailing.js",
                       "lib/y/z",
                       "lib/y/q.js",
                       "1.js",
                       "b.js",
                       "upper.js",
                       "UPPER.js",
                       "foo/bar.js",
                       "foo/baz.js",
                       "sub/deep/er/c.js",
                       "abcde.js",
                       "x",
                       "\xff.log",
                       "sub/\xc3\xa9.js"};
  makeFiles([&] {
    Words paths;
    for (const std::string& file : files) paths.push_back("tree/" + file);
    return paths;
  }());
  makeRepository("tree");
  fs::current_path("tree");
  for (const char* list : {".gitignore", ".git/info/exclude", "sub/.gitignore"}) {
    for (const std::string& rule : rules) {
      SCOPED_TRACE(std::string(list) + ": " + rule);
      fs::create_directories(".git/info");
      writeFile(list, rule + "\n");
      const Outcome listed =
          runProgram("/usr/bin/env", {"git", "-c", "core.quotePath=false", "ls-files", "-z",
                                      "--others", "--exclude-standard"});
      ASSERT_EQ(listed.status, 0);
      std::set<std::string> expected;
      std::istringstream names(listed.out);
      for (std::string name; std::getline(names, name, '\0');) {
        if (fs::path(name).filename() != ".gitignore") expected.insert("./" + name);
      }
      const Words read = filesRead({"-r", "."});
      EXPECT_EQ(std::set<std::string>(read.begin(), read.end()), expected);
      fs::remove(list);
    }
  }
  fs::current_path(directory());
}

TEST_F(IgnoredFiles, AreThoseOfEveryListOfRules) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  makeRepository("tree");
  makeFiles(
      {"tree/a.js", "tree/a.log", "tree/b.tmp", "tree/c.bak", "tree/sub/d.js", "tree/sub/e.js"});
  writeFile("tree/.gitignore", "*.log\n");
  fs::create_directories("tree/.git/info");
  writeFile("tree/.git/info/exclude", "*.tmp\n");
  makeFiles({"home/.config/git/ignore"});
  writeFile("home/.config/git/ignore", "*.bak\n");
  writeFile("tree/sub/.gitignore", "e.js\n");
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/a.js", "tree/sub/d.js"}));
  EXPECT_EQ(filesRead({"-r", "tree/sub"}), (Words{"tree/sub/d.js"}));
  EXPECT_EQ(filesRead({"-r", "tree", "--no-ignore"}),
            (Words{"tree/a.js", "tree/a.log", "tree/b.tmp", "tree/c.bak", "tree/sub/d.js",
                   "tree/sub/e.js"}));
  // A list that the settings name takes the place of the usual one.
  writeFile("home/list", "d.js\n");
  writeFile("home/.gitconfig", "[core]\n\texcludesFile = ~/list\n");
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/a.js", "tree/c.bak"}));
}

TEST_F(IgnoredFiles, AreReadIfTheyAreNamed) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  makeRepository("tree");
  makeFiles({"tree/a.log", "tree/build/b.js", "tree/build/c.log", "tree/d.js"});
  writeFile("tree/.gitignore", "*.log\nbuild/\n");
  EXPECT_EQ(filesRead({"-r", "tree/a.log", "tree"}), (Words{"tree/a.log", "tree/d.js"}));
  EXPECT_EQ(filesRead({"-r", "tree/build"}), (Words{"tree/build/b.js", "tree/build/c.log"}));
  fs::create_directory_symlink("tree", "link");
  EXPECT_EQ(filesRead({"-r", "link"}), (Words{"link/d.js"}));
}

TEST_F(IgnoredFiles, AreAskedForInTheirOwnWorkTree) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  makeFiles({"tree/a.log", "tree/b.js"});
  writeFile("tree/.gitignore", "*.log\n");
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/a.log", "tree/b.js"})) << "no work tree";
  makeRepository("tree/inner");
  makeFiles({"tree/inner/a.log", "tree/inner/b.js"});
  writeFile("tree/inner/.gitignore", "b.js\n");
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/a.log", "tree/b.js", "tree/inner/a.log"}));
  makeRepository("tree");
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/b.js", "tree/inner/a.log"}));
  EXPECT_EQ(filesRead({"-r", "--hidden", "tree/inner"}),
            (Words{"tree/inner/.gitignore", "tree/inner/a.log"}))
      << "what git keeps for itself is ignored too";
}

TEST_F(IgnoredFiles, AreKnownInAWorkTreeOfSomebodyElse) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  if (::geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  makeRepository("tree");
  makeFiles({"tree/a.log", "tree/b.js"});
  writeFile("tree/.gitignore", "*.log\n");
  for (const char* path : {"tree", "tree/.git"}) ASSERT_EQ(::chown(path, 65534, 65534), 0);
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/b.js"}));
}

TEST_F(IgnoredFiles, MayBeTakenBackByAnyOtherList) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  makeRepository("tree");
  makeFiles({"tree/a.log", "tree/sub/a.log", "tree/sub/keep.log", "tree/z"});
  writeFile("tree/.gitignore", "*.log\n!z\n");
  writeFile("tree/sub/.gitignore", "!keep.log\n");
  fs::create_directories("tree/.git/info");
  writeFile("tree/.git/info/exclude", "z\n");
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/sub/keep.log", "tree/z"}));
  EXPECT_EQ(filesRead({"-r", "tree/sub"}), (Words{"tree/sub/keep.log"}));
}

TEST_F(IgnoredFiles, AreFoundWithBracketsTheWrongWayRound) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  makeRepository("tree");
  makeFiles({"tree/a", "tree/b"});
  writeFile("tree/.gitignore", "a]b[c\nb\n");
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/a"}));
}

#ifdef __GLIBC__
// Loading libgit2, with all that it needs, takes longer than everything else at the start.
TEST_F(IgnoredFiles, NeedLibgit2OnlyWhereARepositoryIs) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  makeFiles({"tree/a.js"});
  const auto isLoaded = [this](const Words& arguments) {
    const fs::path told = directory() / "told";
    fs::create_directory(told);
    ::setenv("LD_DEBUG", "files", 1);
    ::setenv("LD_DEBUG_OUTPUT", (told / "by").c_str(), 1);
    const Outcome outcome = runOdd(arguments);
    ::unsetenv("LD_DEBUG");
    ::unsetenv("LD_DEBUG_OUTPUT");
    EXPECT_EQ(outcome, (Outcome{0, "[\ntree/a.js|\n]\n", ""}));
    std::string all;
    for (const fs::directory_entry& file : fs::directory_iterator(told)) {
      all += host_test::contentsOf(file.path());
    }
    fs::remove_all(told);
    EXPECT_NE(all.find("libc.so"), std::string::npos);
    EXPECT_EQ(all.find("libsqlite3"), std::string::npos) << "only an index needs it";
    return all.find("libgit2") != std::string::npos;
  };
  EXPECT_FALSE(isLoaded({"tree/a.js"}));
  EXPECT_FALSE(isLoaded({"-r", "tree"}));
  makeRepository("tree");
  EXPECT_FALSE(isLoaded({"tree/a.js"}));
  EXPECT_FALSE(isLoaded({"-r", "--no-ignore", "tree"}));
  EXPECT_TRUE(isLoaded({"-r", "tree"}));
}
#endif

TEST_F(IgnoredFiles, AreKnownInALinkedWorkTree) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  makeRepository("main");
  EXPECT_EQ(
      runProgram("/usr/bin/env", {"git", "-C", "main", "-c", "user.name=a", "-c", "user.email=a@b",
                                  "commit", "-q", "--allow-empty", "-m", "first"})
          .status,
      0);
  EXPECT_EQ(
      runProgram("/usr/bin/env", {"git", "-C", "main", "worktree", "add", "-q", "../tree"}).status,
      0);
  fs::create_directories("main/.git/info");
  writeFile("main/.git/info/exclude", "*.log\n");
  makeFiles({"tree/a.log", "tree/b.js"});
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/b.js"}));
}

TEST_F(IgnoredFiles, AreKnownWhateverExtensionsTheRepositoryHas) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  for (const char* extension : {"partialClone = origin", "worktreeConfig = true",
                                "objectFormat = sha256", "preciousObjects = true"}) {
    SCOPED_TRACE(extension);
    fs::remove_all("tree");
    makeRepository("tree");
    writeFile(
        "tree/.git/config",
        std::string("[core]\n\trepositoryFormatVersion = 1\n[extensions]\n\t") + extension + "\n");
    makeFiles({"tree/a.log", "tree/b.js"});
    writeFile("tree/.gitignore", "*.log\n");
    EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/b.js"}));
  }
}

TEST_F(IgnoredFiles, AreReadWithAWarningIfTheRepositoryCannotBe) {
  if (!isGitInstalled()) GTEST_SKIP() << "no git";
  makeRepository("pc");
  writeFile("pc/.git/config", "[core]\n\trepositoryFormatVersion = 99\n");
  makeFiles({"pc/a.log", "pc/b.js"});
  writeFile("pc/.gitignore", "*.log\n");
  for (const char* walked : {"pc", "."}) {
    SCOPED_TRACE(walked);
    const std::string place = walked == std::string("pc") ? "pc" : "./pc";
    const Outcome outcome = runOdd({"-r", walked});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "[\n" + place + "/a.log|\n]\n[\n" + place + "/b.js|\n]\n");
    EXPECT_EQ(outcome.err.rfind("quorl-js: " + place + "/.git: cannot read (", 0), 0U) << outcome;
    EXPECT_TRUE(outcome.err.ends_with("); ignore rules are not applied\n")) << outcome;
    EXPECT_EQ(runOdd({"-r", walked, "--strict"}).status, 1);
    EXPECT_EQ(runOdd({"-r", walked, "--no-ignore"}).err, "");
  }
}

// ---- Binary files

TEST_F(BinaryFiles, AreThoseWithANulByteInTheFirstEightKilobytes) {
  const std::string nul(1, '\0');
  fs::create_directory("tree");
  writeFile("tree/a.js", "let a = 1;\n");
  writeFile("tree/b.js", nul);
  writeFile("tree/c.js", std::string(8191, 'x') + nul);
  writeFile("tree/d.js", std::string(8192, 'x') + nul);
  writeFile("tree/e.js", "");
  writeFile("tree/f.js", "\xff\xfe\x01");
  EXPECT_EQ(filesRead({"-r", "tree"}), (Words{"tree/a.js", "tree/d.js", "tree/e.js", "tree/f.js"}));
  EXPECT_EQ(filesRead({"-r", "tree/b.js", "tree"}),
            (Words{"tree/b.js", "tree/a.js", "tree/d.js", "tree/e.js", "tree/f.js"}));
  EXPECT_EQ(filesRead({"-r", "--binary", "tree"}),
            (Words{"tree/a.js", "tree/b.js", "tree/c.js", "tree/d.js", "tree/e.js", "tree/f.js"}));
}

// More files than one thread takes at once.
TEST_F(BinaryFiles, AreFoundAmongMany) {
  Words expected;
  fs::create_directory("tree");
  for (int number = 10'000; number < 13'000; ++number) {
    const std::string path = "tree/" + std::to_string(number);
    writeFile(path, number % 3 == 0 ? std::string(1, '\0') : "x");
    if (number % 3 != 0) expected.push_back(path);
  }
  EXPECT_EQ(filesRead({"-r", "tree"}), expected);
}

// ---- Globs

TEST_F(GlobOptions, SelectFilesAndPruneDirectories) {
  makeFiles({"tree/a.js", "tree/b.ts", "tree/doc/c.js", "tree/doc/d.md", "tree/gen/e.js",
             "tree/gen/doc/f.js", "other.md"});
  struct Row {
    Words arguments;
    Words files;
  };
  const std::vector<Row> rows = {
      {{"--include=*.js"}, {"tree/a.js", "tree/doc/c.js", "tree/gen/doc/f.js", "tree/gen/e.js"}},
      {{"--include", "*.ts", "--include", "doc/*.js"}, {"tree/b.ts", "tree/doc/c.js"}},
      {{"--include=*.{ts,md}"}, {"tree/b.ts", "tree/doc/d.md"}},
      {{"--exclude=gen"}, {"tree/a.js", "tree/b.ts", "tree/doc/c.js", "tree/doc/d.md"}},
      {{"--exclude=doc/", "--exclude=*.ts"}, {"tree/a.js", "tree/gen/e.js"}},
      {{"--exclude=/doc"}, {"tree/a.js", "tree/b.ts", "tree/gen/doc/f.js", "tree/gen/e.js"}},
      {{"--include=*.js", "--exclude=**/doc/**"}, {"tree/a.js", "tree/gen/e.js"}},
      {{"--exclude=*", "other.md"}, {"other.md"}},
      {{"--include=doc"}, {"tree/doc/c.js", "tree/doc/d.md", "tree/gen/doc/f.js"}},
      {{"--include=gen/"}, {"tree/gen/doc/f.js", "tree/gen/e.js"}},
      {{"--include=gen", "--exclude=doc"}, {"tree/gen/e.js"}},
      {{"--include=./doc/*.js"}, {"tree/doc/c.js"}},
      {{"--include=./*.js"}, {"tree/a.js"}},
      {{"--exclude=./gen", "--include=*.js"}, {"tree/a.js", "tree/doc/c.js"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(joined(row.arguments));
    Words arguments = row.arguments;
    arguments.insert(arguments.end(), {"-r", "tree"});
    EXPECT_EQ(filesRead(arguments), row.files);
  }
}

TEST_F(GlobOptions, GetAWarningIfNoFileMatches) {
  makeFiles({"tree/a.js"});
  const Outcome none{0, "", "quorl-js: --include: no file matched\n"};
  EXPECT_EQ(runOdd({"-r", "tree", "--include=*.ts"}), none);
  EXPECT_EQ(runOdd({"-r", "tree", "--include=*.ts", "--strict", "tree/a.js"}),
            (Outcome{1, "[\ntree/a.js|\n]\n", none.err}));
  EXPECT_EQ(runOdd({"-r", "tree/a.js", "--include=*.ts"}), (Outcome{0, "[\ntree/a.js|\n]\n", ""}))
      << "nothing is walked";
}

TEST_F(GlobOptions, AreRefusedWithTooManyAlternatives) {
  std::string pattern;
  for (int brace = 0; brace < 40; ++brace) pattern += "{a,b}";
  EXPECT_EQ(
      runOdd({"-r", ".", "--include", pattern}),
      (Outcome{2, "",
               "quorl-js: glob " + pattern + ": its braces stand for more than 1000 patterns\n"}));
}

// ---- The line at the end of a run

TEST_F(Summary, CountsOnATerminal) {
  if (const auto why = RunningProgram::whyNoTerminal(); !why.empty()) GTEST_SKIP() << why;
  makeFiles({"tree/a.js", "tree/b.js"});
  writeFile("tree/c.bin", std::string(1, '\0'));
  writeFile("tree/empty.js", "");
  struct Row {
    Words arguments;
    std::string line;
    int status;
  };
  const std::vector<Row> rows = {
      {{"-r", "tree"}, "quorl-js: 3 files, 1 empty, 1 binary or ignored, ", 0},
      {{"tree/a.js", "tree/b.js"}, "quorl-js: 2 files, ", 0},
      {{"tree/a.js", "gone"}, "quorl-js: 2 files, 1 failed, ", 1},
      {{"tree/a.js"}, "", 0},
      {{"-r", "tree", "--include=a.js"}, "quorl-js: 1 file, ", 0},
      {{"-r", "tree", "--exclude=*"}, "quorl-js: 0 files, ", 0},
      {{"-r", "tree", "--quiet"}, "", 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(joined(row.arguments));
    RunningProgram program(QUORL_JS_PATH, row.arguments, RunningProgram::StandardError::kTerminal);
    program.outputToTheEnd();
    const std::string seen = program.errorsToTheEnd();
    EXPECT_EQ(program.waitForEnd(), row.status);
    if (row.line.empty()) {
      EXPECT_EQ(seen.find(" file"), std::string::npos) << seen;
      continue;
    }
    const std::size_t found = seen.find(row.line);
    ASSERT_NE(found, std::string::npos) << seen;
    const std::string rest = seen.substr(found + row.line.size());
    EXPECT_EQ(rest.find_first_not_of("0123456789."), rest.find(" s\r\n")) << rest;
  }
}

}  // namespace
