// The batch driver: what it prints for a file, how it differs from ParseJS, and its helpers for
// files.
#include "plugin/batch_driver.h"

#include <dirent.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/exported_data.h"
#include "plugin/plugin_api.h"
#include "support/capture.h"
#include "support/heap.h"
#include "support/temp_dir.h"

namespace {

using namespace std::string_view_literals;
using support::TempDir;
using Names = std::vector<std::string>;

constexpr std::string_view kCleanup = "Cleaning up parse tree...\nCleanup complete\n";

std::string processPrinted(const std::string& path, const std::string& second = "") {
  return support::stdoutOf([&] { ProcessSingleFile(path, second); });
}

std::string parsePrinted(const std::string& path, const char* defines = nullptr) {
  return support::stdoutOf([&] { ParseJS(path.c_str(), defines); });
}

std::string banner(const std::string& path) { return "\n=== Processing: " + path + " ===\n"; }

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Names sorted(Names names) {
  std::sort(names.begin(), names.end());
  return names;
}

// Sets each variable of the run that the driver may change.
class LeftOvers {
 public:
  LeftOvers() {
    AllBranches = {&node_};
    chunk = "left";
    currentIndex = 1000;
    objectCount = 1000;
  }
  LeftOvers(const LeftOvers&) = delete;
  LeftOvers& operator=(const LeftOvers&) = delete;
  ~LeftOvers() { AllBranches.clear(); }

 private:
  ObjectBranch node_;
};

TEST(IsDirectory, AsksTheFileSystem) {
  const TempDir root;
  std::filesystem::create_directory(root.path("dir.js"));
  const std::string file = root.write("file", "x");
  std::filesystem::create_directory_symlink("dir.js", root.path("to_dir"));
  std::filesystem::create_symlink("file", root.path("to_file"));
  std::filesystem::create_symlink("gone", root.path("to_nothing"));
  EXPECT_TRUE(IsDirectory(root.path("dir.js")));
  EXPECT_TRUE(IsDirectory(root.path("dir.js/")));
  EXPECT_TRUE(IsDirectory(root.path("dir.js/..")));
  EXPECT_TRUE(IsDirectory(root.path("to_dir"))) << "a link is followed";
  EXPECT_TRUE(IsDirectory("/"));
  EXPECT_TRUE(IsDirectory("."));
  EXPECT_FALSE(IsDirectory(file));
  EXPECT_FALSE(IsDirectory(file + "/"));
  EXPECT_FALSE(IsDirectory(root.path("to_file")));
  EXPECT_FALSE(IsDirectory(root.path("to_nothing")));
  EXPECT_FALSE(IsDirectory(root.path("gone")));
  EXPECT_FALSE(IsDirectory(""));
  EXPECT_FALSE(IsDirectory("/dev/null"));
}

struct BatchFileCase {
  std::string_view name;
  bool is;
  std::string_view why = "";
};

constexpr BatchFileCase kBatchFiles[] = {
    {"a.js", true},
    {"a.jsx", true},
    {"a.ts", true},
    {"a.tsx", true},
    {"a.html", true},
    {"a.htm", true},
    {"a.xhtml", true},
    {"a.php", true},
    {"a.mjs", false, "required: no batch file, though a script"},
    {"a.cjs", false, "required: no batch file, though a script"},
    {"a.es6", false, "required: no batch file, though a script"},
    {"a.es", false, "required: no batch file, though a script"},
    {"a.JS", false, "letter case counts"},
    {"a.Html", false},
    {"a", false},
    {"", false},
    {"js", false, "no dot, no extension"},
    {".js", true, "a leading dot counts"},
    {"a.", false},
    {"a.j", false},
    {"a.jsy", false},
    {"a.jsxx", false},
    {"a.tsxx", false},
    {"a.ht", false},
    {"a.htmlx", false},
    {"a.shtml", false},
    {"a.xht", false},
    {"a.php5", false},
    {"a.js ", false, "nothing is trimmed"},
    {"a. js", false},
    {"a.js.txt", false, "the last dot decides"},
    {"a.txt.js", true},
    {"/dir.d/a.php", true, "a path does as well"},
    {"dir.js/file", false, "the extension is js/file"},
    {"a.js\0"sv, false},
    {"a.\xC3\xA9js", false},
};

TEST(IsJavaScriptFile, Table) {
  for (const BatchFileCase& row : kBatchFiles) {
    SCOPED_TRACE(testing::PrintToString(row.name) + " " + std::string(row.why));
    EXPECT_EQ(IsJavaScriptFile(std::string(row.name)), row.is);
  }
}

// A directory with every kind of entry that the listing must distinguish.
class ListedDirectory : public testing::Test {
 protected:
  ListedDirectory() {
    std::filesystem::create_directories(root_.path("src/x.js/y.html"));
    std::filesystem::create_directory(root_.path("src/deep"));
    for (const char* name : {"src/a.js", "src/b.html", "src/c.php", "src/.js", "src/.hidden.ts",
                             "src/a b.tsx", "src/m.mjs", "src/A.JS", "src/none", "src/a.js.txt",
                             "src/x.js/below.js", "src/deep/below.js"}) {
      root_.write(name, "x");
    }
    std::filesystem::create_directory_symlink("deep", root_.path("src/to_dir.js"));
    std::filesystem::create_symlink("a.js", root_.path("src/to_file.js"));
    std::filesystem::create_symlink("gone", root_.path("src/to_nothing.js"));
  }

  // The names expected in the listing, each after the prefix, in byte order. A dangling link is not
  // a directory and is listed as a file.
  static Names behind(const std::string& prefix) {
    Names names;
    for (const char* name : {".hidden.ts", ".js", "a b.tsx", "a.js", "b.html", "c.php",
                             "to_file.js", "to_nothing.js"}) {
      names.push_back(prefix + name);
    }
    return names;
  }

  TempDir root_;
};

TEST_F(ListedDirectory, ListsTheBatchFilesDirectlyInIt) {
  const std::string path = root_.path("src");
  EXPECT_EQ(sorted(GetFilesInDirectory(path)), behind(path + "/"));
}

TEST_F(ListedDirectory, AcceptsAPathWithOrWithoutASlash) {
  const std::string path = root_.path("src");
  EXPECT_EQ(GetFilesInDirectory(path + "/"), GetFilesInDirectory(path));
  EXPECT_EQ(sorted(GetFilesInDirectory(path + "//")), behind(path + "//"))
      << "a path that ends in a slash is kept as it is";
}

TEST_F(ListedDirectory, KeepsARelativePath) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(root_.path(""));
  EXPECT_EQ(sorted(GetFilesInDirectory("src")), behind("src/"));
  EXPECT_EQ(sorted(GetFilesInDirectory("src/")), behind("src/"));
  EXPECT_EQ(sorted(GetFilesInDirectory("./src/deep/..")), behind("./src/deep/../"));
  std::filesystem::current_path(before);
}

TEST_F(ListedDirectory, KeepsTheSystemsOrder) {
  for (int i = 0; i < 40; ++i) root_.write("src/" + std::to_string(i * 7919 % 101) + ".js", "x");
  const std::string path = root_.path("src");
  Names expected;
  DIR* const directory = opendir(path.c_str());
  ASSERT_NE(directory, nullptr);
  while (const dirent* entry = readdir(directory)) {
    const std::string full = path + "/" + entry->d_name;
    if (IsJavaScriptFile(full) && !IsDirectory(full)) expected.push_back(full);
  }
  closedir(directory);
  EXPECT_EQ(expected.size(), 48u);
  EXPECT_EQ(GetFilesInDirectory(path), expected);
}

TEST_F(ListedDirectory, IsEmptyAndSilentIfItDoesNotOpen) {
  std::filesystem::create_directory(root_.path("empty"));
  for (const std::string& path : {root_.path("gone"), root_.path("src/a.js"), root_.path("empty"),
                                  root_.path("src/to_nothing.js"), std::string()}) {
    Names names{"none"};
    EXPECT_EQ(support::stdoutOf([&] { names = GetFilesInDirectory(path); }), "") << path;
    EXPECT_EQ(names, Names{}) << path;
  }
}

TEST(ProcessSingleFile, ReportsAFileThatDoesNotOpen) {
  const TempDir root;
  const std::string path = root.path("gone.js");
  EXPECT_EQ(processPrinted(path), banner(path) + "Error: Could not open file " + path + "\n");
  EXPECT_EQ(processPrinted(""), "\n=== Processing:  ===\nError: Could not open file \n");
}

TEST(ProcessSingleFile, ReportsAnEmptyFile) {
  const TempDir root;
  std::filesystem::create_directory(root.path("dir.js"));
  for (const std::string& path : {root.write("a.js", ""), root.write("a.html", ""),
                                  root.write("it's \"a\".txt", ""), root.path("dir.js")}) {
    EXPECT_EQ(processPrinted(path), banner(path) + "Warning: File is empty: " + path + "\n")
        << "paths are printed as they stand";
  }
}

TEST(ProcessSingleFile, PrintsTheRecordLinesBetweenBannerAndCleanup) {
  const TempDir root;
  const std::string path =
      root.write("greet.js", "function Greeter(name) {\n  var label = name;\n}\nlet total = 1;\n");
  EXPECT_EQ(processPrinted(path), banner(path) +
                                      "nodeid was 0 and now is 0\n"
                                      "nodeid was 1 and now is 1\n"
                                      "nodeid was 2 and now is 2\n"
                                      "nodeid was 3 and now is 3\n"
                                      "nodeid was 4 and now is 4\n"
                                      "nodeid was 5 and now is 5\n"
                                      "Successfully processed: " +
                                      path + "\n" + std::string(kCleanup));
}

TEST(ProcessSingleFile, PicksTheRouteByTheExtension) {
  const TempDir root;
  // A page: the file, its two wrappers, the element.
  const std::string page = root.write("a.html", "<p>x</p>\n");
  // A script: the file, its two wrappers, a line; the dropped line leaves a gap in the numbers.
  const std::string script = root.write("a.js", ");\na();\n");
  EXPECT_EQ(processPrinted(page), banner(page) +
                                      "nodeid was 0 and now is 0\n"
                                      "nodeid was 1 and now is 1\n"
                                      "nodeid was 2 and now is 2\n"
                                      "nodeid was 3 and now is 3\n"
                                      "Successfully processed: " +
                                      page + "\n" + std::string(kCleanup));
  EXPECT_EQ(processPrinted(script), banner(script) +
                                        "nodeid was 0 and now is 0\n"
                                        "nodeid was 1 and now is 1\n"
                                        "nodeid was 2 and now is 2\n"
                                        "nodeid was 4 and now is 3\n"
                                        "Successfully processed: " +
                                        script + "\n" + std::string(kCleanup));
  // Other text: the file and a class wrapper. The namespace wrapper between them has no record.
  const std::string text = root.write("a.txt", "ab");
  EXPECT_EQ(processPrinted(text), banner(text) +
                                      "nodeid was 0 and now is 0\n"
                                      "nodeid was 2 and now is 1\n"
                                      "Successfully processed: " +
                                      text + "\n" + std::string(kCleanup));
}

TEST(ProcessSingleFile, CleansTheTextFirst) {
  const TempDir root;
  const std::string path =
      root.write("a.js", "#pragma 789 123456789 123456789 123456789 123456789\n");
  EXPECT_EQ(processPrinted(path), banner(path) +
                                      "[[#pragma 789 123456789 123456789 123456789 123456789]]\n"
                                      "nodeid was 0 and now is 0\n"
                                      "nodeid was 1 and now is 1\n"
                                      "nodeid was 2 and now is 2\n"
                                      "Successfully processed: " +
                                      path + "\n" + std::string(kCleanup))
      << "a directive line of 51 bytes is reported once";
}

TEST(ProcessSingleFile, IgnoresItsSecondArgument) {
  const TempDir root;
  const std::string path = root.write("a.js", "a();\n");
  const std::string other = root.write("other.js", "b();\n");
  const std::string expected = processPrinted(path);
  for (const std::string& second : {other, root.path("gone"), std::string("\0x", 2)}) {
    EXPECT_EQ(processPrinted(path, second), expected) << second;
  }
}

TEST(ProcessSingleFile, WritesNoFile) {
  const TempDir root;
  const std::string path = root.write("a.js", "a();\n");
  processPrinted(path, root.path("records"));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root.path("")), {}), 1);
  EXPECT_EQ(bytesOf(path), "a();\n");
}

TEST(ProcessSingleFile, NumbersEveryRunFromZero) {
  const TempDir root;
  const std::string path = root.write("a.js", "a();\nb();\n");
  const std::string first = processPrinted(path);
  EXPECT_EQ(processPrinted(path), first);
  EXPECT_EQ(currentIndex, 7) << "file, two wrappers, two lines, the defines and the record pass";
  EXPECT_EQ(objectCount, 7) << "as many as the nodes";
}

TEST(ProcessSingleFile, ResetsTheCountersOnEveryOutcome) {
  const TempDir root;
  for (const std::string& path : {root.path("gone.js"), root.write("empty.js", "")}) {
    SCOPED_TRACE(path);
    const LeftOvers leftOvers;
    const auto registered = allAllocatedNodes.size();
    processPrinted(path);
    EXPECT_EQ(currentIndex, 0);
    EXPECT_EQ(objectCount, 0);
    EXPECT_EQ(chunk, "");
    EXPECT_EQ(AllBranches.size(), 1u) << "cleared after a success only";
    EXPECT_EQ(allAllocatedNodes.size(), registered) << "no node is made";
  }
  const LeftOvers leftOvers;
  processPrinted(root.write("a.txt", "ab"));
  EXPECT_EQ(chunk, "ab") << "the scanner's unfinished statement stays";
  EXPECT_TRUE(AllBranches.empty());
}

TEST(ProcessSingleFile, ReportsAFailedRun) {
  const TempDir root;
  const support::WorkingDirectory here(root.path("."));
  const std::string path = "a.js";
  root.write(path, "a();\n");
  const LeftOvers leftOvers;
  const std::string printed = support::stdoutOf([&] {
    const support::FailingNew failing(sizeof(ObjectBranch));
    ProcessSingleFile(path, "");
  });
  EXPECT_EQ(printed, banner(path) + "Exception while processing " + path +
                         ": Memory allocation failed for ObjectBranch\n");
  EXPECT_EQ(AllBranches.size(), 1u) << "a failure clears nothing";
  EXPECT_EQ(currentIndex, 0);
}

#ifdef __GLIBCXX__
// Runs out of memory for the file's text after the root is attached: the root's text is the file's
// name, and no other block of a run has that size. (Other libraries round sizes up.)
TEST(ProcessSingleFile, KeepsTheTreeOfAFailedRun) {
  const TempDir root;
  const support::WorkingDirectory here(root.path("."));
  const std::string name = std::string(150, 'n') + ".js";
  const std::string path = "./" + name;
  root.write(name, "a();\n");
  const LeftOvers leftOvers;
  const std::string processed = support::stdoutOf([&] {
    const support::FailingNew failing(name.size() + 1);
    ProcessSingleFile(path, "");
  });
  EXPECT_EQ(AllBranches.size(), 1u);
  std::string answer;
  const std::string parsed = support::stdoutOf([&] {
    const support::FailingNew failing(name.size() + 1);
    answer = ParseJS(path.c_str(), nullptr);
  });
  EXPECT_EQ(processed, banner(path) + "Exception while processing " + path + ": std::bad_alloc\n");
  EXPECT_EQ(parsed, kCleanup) << "ParseJS cuts the tree off";
  EXPECT_EQ(answer, "[{\"error\": \"Parser exception: std::bad_alloc\"}]");
}
#endif

// The pipeline's two callers, compared.
TEST(ProcessSingleFile, DiffersFromParseJS) {
  const TempDir root;
  const std::string gone = root.path("gone.js");
  const std::string path = root.write("a.js", "#ifdef X\n#endif\na();\n");
  const std::string lines =
      "nodeid was 0 and now is 0\n"
      "nodeid was 1 and now is 1\n"
      "nodeid was 2 and now is 2\n"
      "nodeid was 3 and now is 3\n"
      "nodeid was 4 and now is 4\n";
  {
    const LeftOvers leftOvers;
    EXPECT_EQ(parsePrinted(gone), "") << "a failure is an answer";
    EXPECT_EQ(objectCount, 1);
    EXPECT_TRUE(AllBranches.empty());
  }
  {
    const LeftOvers leftOvers;
    EXPECT_NE(processPrinted(gone), "") << "a failure is printed";
    EXPECT_EQ(objectCount, 0);
    EXPECT_EQ(AllBranches.size(), 1u);
  }
  EXPECT_EQ(parsePrinted(path), lines + std::string(kCleanup)) << "no banner and no last word";
  const int nodes = currentIndex;
  EXPECT_EQ(objectCount, nodes + 1);
  EXPECT_EQ(processPrinted(path), banner(path) + lines + "Successfully processed: " + path + "\n" +
                                      std::string(kCleanup));
  EXPECT_EQ(currentIndex, nodes);
  EXPECT_EQ(objectCount, nodes);
}

TEST(ProcessSingleFile, ForgetsTheDefinesOfEarlierRuns) {
  const TempDir root;
  const std::string path = root.write("a.js", "a();\n");
  const std::string lines =
      "nodeid was 0 and now is 0\n"
      "nodeid was 1 and now is 1\n"
      "nodeid was 2 and now is 2\n"
      "nodeid was 3 and now is 3\n";
  EXPECT_EQ(parsePrinted(path, "D"), lines + "nodeid was 4 and now is 4\n" + std::string(kCleanup))
      << "the defines have a record";
  EXPECT_EQ(processPrinted(path), banner(path) + lines + "Successfully processed: " + path + "\n" +
                                      std::string(kCleanup));
}

TEST(ProcessSingleFile, KeepsTheAnswerOfParseJS) {
  const TempDir root;
  const std::string path = root.write("a.js", "a();\n");
  const char* answer = nullptr;
  support::stdoutOf([&] { answer = ParseJS(path.c_str(), nullptr); });
  const std::string before = answer;
  processPrinted(path);
  processPrinted(root.path("gone.js"));
  EXPECT_EQ(answer, before);
  CleanupJS();
}

TEST(WriteAFile, ReplacesTheFilesContent) {
  const TempDir root;
  const std::string path = root.path("a");
  writeafile("first, and longer", path);
  EXPECT_EQ(bytesOf(path), "first, and longer");
  writeafile("second", path);
  EXPECT_EQ(bytesOf(path), "second");
  writeafile("", path);
  EXPECT_EQ(bytesOf(path), "");
}

TEST(AppendAFile, AppendsToTheFile) {
  const TempDir root;
  const std::string path = root.path("a");
  appendafile("first", path);
  EXPECT_EQ(bytesOf(path), "first") << "a missing file is made";
  appendafile("second", path);
  EXPECT_EQ(bytesOf(path), "firstsecond") << "with nothing between";
  appendafile("", path);
  EXPECT_EQ(bytesOf(path), "firstsecond");
  writeafile("third", path);
  appendafile("4", path);
  EXPECT_EQ(bytesOf(path), "third4");
}

TEST(WriteAFile, WritesEveryByteUnchanged) {
  const TempDir root;
  const std::string path = root.path("a");
  const std::string odd("\0\r\n\n\x80\xFF\x1A", 7);
  writeafile(odd, path);
  EXPECT_EQ(bytesOf(path), odd);
  appendafile(odd, path);
  EXPECT_EQ(bytesOf(path), odd + odd);
}

TEST(WriteAFile, FailsSilentlyIfTheFileDoesNotOpen) {
  const TempDir root;
  std::filesystem::create_directory(root.path("dir"));
  for (const std::string& path : {root.path("gone/a"), root.path("dir"), std::string()}) {
    const auto both = [&] {
      writeafile("text", path);
      appendafile("text", path);
    };
    EXPECT_EQ(support::stdoutOf(both), "") << path;
    EXPECT_EQ(support::stderrOf(both), "") << path;
  }
  EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(root.path("")), {}), 1);
}

struct TextCase {
  std::string_view text;
  std::string_view result;
  std::string_view why = "";
};

TEST(ExtractNamespaceName, Table) {
  constexpr TextCase kCases[] = {
      {"namespace Foo::Bar {", "Foo::Bar"},
      {"namespace {", ""},
      {"no such word", ""},
      {"", ""},
      {"namespace", "", "the blank belongs to the word"},
      {"namespace ", ""},
      {"namespace\tA", ""},
      {"namespace\nA", ""},
      {"namespace  A", "", "the name begins right after the first blank"},
      {"namespace A", "A"},
      {"using namespace std;", "std"},
      {"mynamespace x", "x", "required: no word boundary"},
      {"namespaces namespace B", "B"},
      {"namespace A { namespace B {", "A", "the first one counts"},
      {"namespace - namespace B", "", "the first one counts, though nameless"},
      {"Namespace A", "", "letter case counts"},
      {"namespace _a_1:b-c", "_a_1:b"},
      {"namespace ::A", "::A"},
      {"namespace 9", "9"},
      {"namespace A.B", "A"},
      {"namespace $a", ""},
      {"namespace A\0B"sv, "A", "NUL ends the name"},
      {"\0namespace A"sv, "A", "but not the search"},
      {"namespace a\xC3\xA9", "a", "bytes beyond ASCII are not letters"},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(ExtractNamespaceName(std::string(row.text)), row.result);
  }
}

TEST(GetFileNameWithoutExtension, Table) {
  constexpr TextCase kCases[] = {
      {"/a/b.tar.gz", "b.tar"},
      {"C:\\x\\y.js", "y", "a backslash separates too"},
      {"/a/.hidden", "", "all after the last dot is extension"},
      {"/a.b/c", "c", "a dot in a folder is none in the file"},
      {"a.b\\c", "c"},
      {"a.js", "a"},
      {"a", "a"},
      {"a.", "a"},
      {"a..js", "a."},
      {".", ""},
      {"..", "."},
      {"", ""},
      {"/", ""},
      {"a.b/", "", "nothing after the last separator"},
      {"a\\b/c.d", "c", "the later separator counts, whichever it is"},
      {"a/b\\c.d", "c", "the later separator counts, whichever it is"},
      {"a b.js ", "a b", "nothing is trimmed"},
      {"a\0b.js"sv, "a\0b"sv},
      {"\xC3\xA9.js", "\xC3\xA9"},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(GetFileNameWithoutExtension(std::string(row.text)), row.result);
  }
}

TEST(SanitizeFileName, Table) {
  constexpr TextCase kCases[] = {
      {"a-b c_d.js", "abc_djs"},
      {"", ""},
      {"-. /\\", ""},
      {"Az09_", "Az09_"},
      {"@AZ[`az{/09:", "AZaz09", "the neighbours of the ranges go"},
      {"^_`", "_"},
      {"a\0b"sv, "ab"},
      {"caf\xC3\xA9", "caf", "bytes beyond ASCII are not letters"},
      {"../etc/passwd", "etcpasswd"},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(SanitizeFileName(std::string(row.text)), row.result);
  }
}

TEST(SanitizeFileName, KeepsSixtyThreeOfAllBytes) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(SanitizeFileName(all),
            "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz");
}

}  // namespace
