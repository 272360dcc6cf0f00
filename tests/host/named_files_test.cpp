// Which files a run is over: directories that are walked, lists of names, and what is no regular
// file. The module is one whose answers are known byte by byte, and which opens none of them.

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/plain_user.h"
#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"

namespace {

namespace fs = std::filesystem;
using host_test::contentsOf;
using host_test::isOutcome;
using host_test::joined;
using host_test::Outcome;
using host_test::PlainUser;
using host_test::runProgram;
using host_test::Words;
using host_test::writeFile;

// The answers to the files, one behind the other.
std::string answersTo(const Words& files) {
  std::string answers;
  for (const std::string& file : files) answers += "[\n" + file + "|\n]\n";
  return answers;
}

std::string skipped(const std::string& file) {
  return "quorl-js: " + file + ": not a regular file, skipped\n";
}

class NamedFiles : public host_test::QuorlJs {
 protected:
  // Runs the program by a shell, which gives it the standard input that the redirection says.
  static Outcome runOddWithInput(const std::string& redirection, const Words& arguments) {
    Words words{"-c",           "exec \"$@\" " + redirection, "sh", QUORL_JS_PATH, "--plugin",
                ODD_PLUGIN_PATH};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return runProgram("/bin/sh", words);
  }
};
using Directories = NamedFiles;
using Lists = NamedFiles;
using IrregularFiles = NamedFiles;

// ---- Directories

TEST_F(Directories, AreWalkedInByteOrderOfTheirPaths) {
  for (const char* name : {"tree/a", "tree/a.b", "tree/.git", "tree/node_modules", "tree/\xff",
                           "tree/empty", "node_modules", ".hidden"}) {
    fs::create_directories(name);
  }
  for (const char* name :
       {"tree/a/x", "tree/a/.x", "tree/a/node_modules", "tree/a-b", "tree/a.b/y", "tree/a.js",
        "tree/B", "tree/\xff/z", "tree/-f", "tree/ a\n'\"", "tree/.git/config", "tree/.hidden",
        "tree/node_modules/m", "tree/node_modules.js", "node_modules/m", ".hidden/h"}) {
    writeFile(name, "x");
  }
  fs::create_directory_symlink("a", "tree/linked");
  fs::create_directory_symlink("..", "tree/loop");
  fs::create_directory_symlink("tree/a", "link");
  fs::create_symlink("B", "tree/file-link");
  const Words plain = {"tree/ a\n'\"",         "tree/-f",    "tree/B",   "tree/a-b",
                       "tree/a.b/y",           "tree/a.js",  "tree/a/x", "tree/file-link",
                       "tree/node_modules.js", "tree/\xff/z"};
  struct Row {
    const char* why;
    Words arguments;
    Words files;
  };
  const std::vector<Row> rows = {
      {"a directory's place is that of its slash", {"tree"}, plain},
      {"a slash at the end is the only one", {"tree/a/"}, {"tree/a/x"}},
      {"the path as it was given", {"./tree//a"}, {"./tree//a/x"}},
      {"hidden entries",
       {"--hidden", "tree/a", "tree/.git"},
       {"tree/a/.x", "tree/a/x", "tree/.git/config"}},
      {"entries called node_modules",
       {"--node-modules", "tree/a", "tree/node_modules"},
       {"tree/a/node_modules", "tree/a/x", "tree/node_modules/m"}},
      {"what is named is taken", {"node_modules", ".hidden"}, {"node_modules/m", ".hidden/h"}},
      {"a link that is named is followed", {"link"}, {"link/x"}},
      {"a directory without files", {"tree/empty"}, {}},
      {"files keep their places",
       {"f", "tree/a", "g", "tree/a"},
       {"f", "tree/a/x", "g", "tree/a/x"}},
      {"the current directory",
       {"--hidden", "--node-modules", "."},
       {"./.hidden/h", "./node_modules/m", "./tree/ a\n'\"", "./tree/-f", "./tree/.git/config",
        "./tree/.hidden", "./tree/B", "./tree/a-b", "./tree/a.b/y", "./tree/a.js", "./tree/a/.x",
        "./tree/a/node_modules", "./tree/a/x", "./tree/file-link", "./tree/node_modules.js",
        "./tree/node_modules/m", "./tree/\xff/z"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.why) + ": " + joined(row.arguments));
    Words arguments = row.arguments;
    arguments.push_back("--recursive");
    EXPECT_EQ(runOdd(arguments), (Outcome{0, answersTo(row.files), ""}));
  }
}

TEST_F(Directories, AreToldToBeSuchUnlessTheyAreWalked) {
  fs::create_directories("tree");
  writeFile("tree/a", "x");
  const std::string told = "quorl-js: tree: is a directory (use -r to read it)\n";
  EXPECT_EQ(runOdd({"tree"}), (Outcome{1, answersTo({"tree"}), told}));
  EXPECT_EQ(run({"tree"}), (Outcome{1, R"([{"error": "File is empty: tree"}])", told}));
  EXPECT_EQ(run({"tree", "--format=tree"}),
            (Outcome{1, "tree: failed: is a directory (use -r to read it)\n", told}));
}

TEST_F(Directories, MayHoldTheOutputOfTheRun) {
  fs::create_directories("tree");
  writeFile("tree/a", "x");
  fs::create_symlink("out", "tree/link");
  struct Row {
    const char* why;
    Words arguments;
    int status;
    std::string answers;
    std::string messages;
  };
  const std::string skipped = ": is written by this run, skipped\n";
  const std::vector<Row> rows = {
      {"met in a walk",
       {"--recursive", "tree"},
       0,
       answersTo({"tree/a"}),
       "quorl-js: tree/link" + skipped + "quorl-js: tree/out" + skipped},
      {"named", {"tree/out", "tree/a"}, 1, answersTo({"tree/a"}), "quorl-js: tree/out" + skipped},
      {"with diagnostics in the tree as well",
       {"--recursive", "tree", "--diagnostics", "tree/b"},
       0,
       answersTo({"tree/a"}),
       "quorl-js: tree/b" + skipped + "quorl-js: tree/link" + skipped + "quorl-js: tree/out" +
           skipped},
      {"not the output, with a directory for it",
       {"--recursive", "tree", "--out-dir", "answers"},
       0,
       "",
       ""},
  };
  fs::create_directory("answers");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    if (row.arguments.back() == "tree/b") writeFile("tree/b", "");
    Words arguments = {"-c",       "exec \"$@\" >tree/out", "sh", QUORL_JS_PATH,
                       "--plugin", ODD_PLUGIN_PATH};
    arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
    EXPECT_EQ(host_test::runProgram("/bin/sh", arguments), (Outcome{row.status, "", row.messages}));
    EXPECT_EQ(contentsOf("tree/out"), row.answers);
    fs::remove("tree/b");
  }
  EXPECT_EQ(contentsOf("answers/tree%2Fout.records"), answersTo({"tree/out"}));
}

TEST_F(Directories, ThatCannotBeReadAreToldAndTheRestIsDone) {
  fs::create_directories("tree/b");
  writeFile("tree/a", "x");
  writeFile("tree/b/hidden", "x");
  writeFile("tree/c", "x");
  const PlainUser user;
  if (const auto why = user.whyNot(); !why.empty()) GTEST_SKIP() << why;
  ::chmod("tree/b", 0);
  const Outcome told{1, answersTo({"tree/a", "tree/c", "f"}),
                     "quorl-js: tree/b: Permission denied\n"};
  EXPECT_EQ(user.runOdd({"--recursive", "tree", "f"}), told);
  EXPECT_EQ(user.runOdd({"--recursive", "tree/b"}),
            (Outcome{1, "", "quorl-js: tree/b: Permission denied\n"}));
  ::chmod("tree/b", 0700);
}

// A tree deeper than the system's paths reach is cut there, by root's run as well.
TEST_F(Directories, ThatNoPathReachesAreTold) {
  constexpr int kLevels = 20;
  const std::string name(250, 'd');
  std::string deepest = "tree";
  fs::create_directory("tree");
  writeFile("tree/a", "x");
  fs::current_path("tree");
  for (int level = 0; level < kLevels; ++level) {
    fs::create_directory(name);
    ASSERT_EQ(::chdir(name.c_str()), 0);
    if (deepest.size() + name.size() < 4096) deepest += "/" + name;
  }
  fs::current_path(directory());
  deepest += "/" + name;  // the first that is too long
  EXPECT_EQ(
      runOdd({"--recursive", "tree", "f"}),
      (Outcome{1, answersTo({"tree/a", "f"}), "quorl-js: " + deepest + ": File name too long\n"}));
}

// ---- Lists

TEST_F(Lists, GiveNamesByteForByte) {
  struct Row {
    const char* why;
    std::string list;
    Words options;
    Words files;
  };
  const std::vector<Row> rows = {
      {"one a line", "f\ng\n", {}, {"f", "g"}},
      {"the last line without its end", "f\ng", {}, {"f", "g"}},
      {"empty lines", "\n\nf\n\ng\n\n", {}, {"f", "g"}},
      {"no line", "", {}, {}},
      {"empty lines alone", "\n\n", {}, {}},
      {"nothing is trimmed", " f \n\tg\r\n", {}, {" f ", "\tg\r"}},
      {"quotes and backslashes", "a\"b\n'c d'\n\\\n", {}, {"a\"b", "'c d'", "\\"}},
      {"options are names",
       "-f\n--\n--help\n--defines=A\n-\n",
       {},
       {"-f", "--", "--help", "--defines=A", "-"}},
      {"bytes from 0x80 up", "\xff\xfe\n\xc3\x28.js\n", {}, {"\xff\xfe", "\xc3\x28.js"}},
      {"brackets and blanks", "[a,b]\n{}\n%%\n", {}, {"[a,b]", "{}", "%%"}},
      {"NUL bytes end names", {"f\0g\0", 4}, {"-0"}, {"f", "g"}},
      {"by the long option", {"f\0g\0", 4}, {"--null"}, {"f", "g"}},
      {"the last name without its end", {"f\0g", 3}, {"-0"}, {"f", "g"}},
      {"empty names", {"\0\0f\0\0g\0\0", 8}, {"-0"}, {"f", "g"}},
      {"line feeds are of the name", {"a\nb\0\n\0", 6}, {"-0"}, {"a\nb", "\n"}},
      {"the files of the command line come first",
       "f\ng\n",
       {"h", "--", "-i"},
       {"h", "-i", "f", "g"}},
      {"a name twice", "f\nf\n", {"f"}, {"f", "f", "f"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    writeFile("list", row.list);
    const Outcome good{0, answersTo(row.files), ""};
    Words arguments{"--files-from", "list"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    EXPECT_EQ(runOdd(arguments), good);
    arguments[1] = "-";
    EXPECT_EQ(runOddWithInput("< list", arguments), good);
    arguments[1] = "/dev/stdin";  // a pipe here: a list need not be a regular file
    EXPECT_EQ(runProgram("/bin/sh",
                         [&] {
                           Words words{"-c",          "cat list | \"$@\"", "sh",
                                       QUORL_JS_PATH, "--plugin",          ODD_PLUGIN_PATH};
                           words.insert(words.end(), arguments.begin(), arguments.end());
                           return words;
                         }()),
              good);
  }
}

TEST_F(Lists, NameDirectoriesAndFilesThatFail) {
  fs::create_directory("tree");
  writeFile("tree/a", "x");
  writeFile("list", "no-memory\ntree\nf\n");
  const std::string told = "quorl-js: no-memory: no memory for the answer\n";
  EXPECT_EQ(runOdd({"--files-from=list", "--recursive"}),
            (Outcome{1, answersTo({"tree/a", "f"}), told}));
  EXPECT_EQ(runOdd({"--files-from=list"}),
            (Outcome{1, answersTo({"tree", "f"}),
                     told + "quorl-js: tree: is a directory (use -r to read it)\n"}));
}

TEST_F(Lists, MayBeLong) {
  constexpr int kNames = 100'000;
  std::string list;
  Words files;
  for (int number = 0; number < kNames; ++number) {
    files.push_back("a file with the number " + std::to_string(number) + ".js");
    list += files.back() + "\n";
  }
  writeFile("list", list);
  EXPECT_TRUE(isOutcome({0, answersTo(files), ""}, runOdd({"--files-from", "list"})));
}

TEST_F(Lists, ThatAreAnOutputAreRefused) {
  writeFile("a.js", "let a = 1;\n");
  fs::create_symlink("list", "link");
  fs::create_symlink("new", "to-new");
  struct Row {
    Words arguments;
    std::string message;
  };
  const std::vector<Row> rows = {
      {{"--files-from", "list", "-o", "list"}, "list: is the list and the output"},
      {{"--files-from", "link", "-o", "./list"}, "./list: is the list and the output"},
      {{"--files-from", "list", "--diagnostics", "link"},
       "link: is the list and the diagnostics file"},
      {{"a.js", "-o", "new", "--diagnostics", "./new"},
       "./new: is the output and the diagnostics file"},
      {{"a.js", "-o", "to-new", "--diagnostics", "new"},
       "new: is the output and the diagnostics file"},
      {{"a.js", "-o", "list", "--diagnostics", "link"},
       "link: is the output and the diagnostics file"},
      {{"merge", "a.js", "--files-from", "link", "-o", "list"}, "list: is the list and the output"},
      {{"--files-from", "gone", "--diagnostics", "new"}, "list gone: No such file or directory"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(joined(row.arguments));
    writeFile("list", "a.js\n");
    EXPECT_EQ(run(row.arguments), (Outcome{2, "", "quorl-js: " + row.message + "\n"}));
    EXPECT_EQ(contentsOf("list"), "a.js\n");
    EXPECT_FALSE(fs::exists("new"));
  }
  EXPECT_EQ(host_test::runProgram("/bin/sh", {"-c", "exec \"$@\" <list", "sh", QUORL_JS_PATH,
                                              "--files-from=-", "-o", "list"}),
            (Outcome{2, "", "quorl-js: list: is the list and the output\n"}));
  EXPECT_EQ(runOdd({"a.js", "-o", "/dev/null", "--diagnostics", "/dev/null"}),
            (Outcome{0, "", ""}));
}

TEST_F(Lists, WithWindowsLineEndsGetAHintWhicheverNameIsThere) {
  writeFile("b.js", "let b = 1;\n");
  writeFile("list", "gone.js\r\nb.js\r\n");
  EXPECT_EQ(
      runOdd({"--files-from=list"}),
      (Outcome{0, answersTo({"gone.js\r", "b.js\r"}),
               "quorl-js: list list: lines end in CR LF; remove the CRs with tr -d '\\r'\n"}));
}

TEST_F(Lists, ThatCannotBeReadEndTheRunBeforeTheFirstFile) {
  fs::create_directory("folder");
  writeFile("nul", std::string("f\0g\0", 4));
  struct Row {
    std::string list;
    std::string message;
  };
  const std::vector<Row> rows = {
      {"gone", "list gone: No such file or directory"},
      {"nul/f", "list nul/f: Not a directory"},
      {"folder", "list folder: Is a directory"},
      {"", "list : No such file or directory"},
      {"a\nb", "list a\\x0ab: No such file or directory"},
      {"nul", "list nul: a name has a NUL byte in it; see --null"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.list);
    EXPECT_EQ(runOdd({"f", "--files-from=" + row.list}),
              (Outcome{2, "", "quorl-js: " + row.message + "\n"}));
  }
  EXPECT_EQ(runOddWithInput("<&-", {"f", "--files-from", "-"}),
            (Outcome{2, "", "quorl-js: list -: Bad file descriptor\n"}));
  EXPECT_EQ(runOddWithInput("< folder", {"f", "--files-from", "-"}),
            (Outcome{2, "", "quorl-js: list -: Is a directory\n"}));
}

// ---- What is no regular file. A FIFO without a writer keeps whoever opens it waiting.

void makeSocket(const char* name) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, name, sizeof address.sun_path - 1);
  const int end = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(::bind(end, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ::close(end);
}

TEST_F(IrregularFiles, AreSkippedAndFailTheRunIfNamed) {
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  makeSocket("socket");
  fs::create_symlink("pipe", "link");
  writeFile("list", "f\npipe\ng\n");
  struct Row {
    const char* why;
    Words arguments;
    Words files;
    std::string messages;
  };
  const std::vector<Row> rows = {
      {"a FIFO", {"pipe"}, {}, skipped("pipe")},
      {"a link to one", {"link"}, {}, skipped("link")},
      {"a socket", {"socket"}, {}, skipped("socket")},
      {"a device", {"/dev/null"}, {}, skipped("/dev/null")},
      {"files around it are done", {"f", "pipe", "g"}, {"f", "g"}, skipped("pipe")},
      {"in a list", {"--files-from=list"}, {"f", "g"}, skipped("pipe")},
      {"named beside a walk", {"--recursive", "pipe", "f"}, {"f"}, skipped("pipe")},
      {"walked as named",
       {"--recursive", "link", "socket"},
       {},
       skipped("link") + skipped("socket")},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(runOdd(row.arguments), (Outcome{1, answersTo(row.files), row.messages}));
  }
}

TEST_F(IrregularFiles, AreToldInOneLineWhateverTheirNames) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"a\nb", "a\\x0ab"},      {"esc\x1b", "esc\\x1b"}, {" '\"", " '\""}, {"-p", "-p"},
#ifndef __APPLE__  // whose file system takes UTF-8 names only
      {"\xff\xfe", "\xff\xfe"},
#endif
  };
  for (const auto& [name, shown] : rows) {
    ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);
    EXPECT_EQ(runOdd({"--", name}), (Outcome{1, "", skipped(shown)}));
  }
}

TEST_F(IrregularFiles, MetBelowADirectoryDoNotFailTheRun) {
  fs::create_directory("tree");
  ASSERT_EQ(::mkfifo("tree/pipe", 0600), 0);
  fs::create_symlink("pipe", "tree/link");
  fs::create_symlink("gone", "tree/dangling");
  fs::create_symlink("self", "tree/self");
  fs::create_symlink("/dev/null", "tree/null");
  writeFile("tree/a", "x");
  writeFile("tree/z", "x");
  EXPECT_EQ(runOdd({"--recursive", "tree"}),
            (Outcome{0, answersTo({"tree/a", "tree/z"}),
                     "quorl-js: tree/dangling: broken link, skipped\n" + skipped("tree/link") +
                         skipped("tree/null") + skipped("tree/pipe") +
                         "quorl-js: tree/self: broken link, skipped\n"}));
}

TEST_F(IrregularFiles, AreAlsoStandardInputUnlessItIsAFile) {
  writeFile("a", "x");
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  EXPECT_EQ(runOddWithInput("< a", {"/dev/stdin"}), (Outcome{0, answersTo({"/dev/stdin"}), ""}));
  for (const char* redirection : {"< /dev/null", "<> pipe"}) {
    EXPECT_EQ(runOddWithInput(redirection, {"/dev/stdin", "/dev/fd/0"}),
              (Outcome{1, "", skipped("/dev/stdin") + skipped("/dev/fd/0")}))
        << redirection;
  }
}

}  // namespace
