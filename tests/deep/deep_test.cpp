// Trees as deep as the scanner route can make them, built, refined, written and detached on a stack
// that a recursive walk would overflow at once.
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "plugin/plugin_api.h"
#include "records/record_pass.h"
#include "refine/inline_functions.h"
#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "support/redirected.h"
#include "support/sanitized.h"
#include "support/temp_dir.h"
#include "tree/object_branch.h"

namespace {

// A sanitizer needs several times the memory and much larger stack frames.
#ifdef QUORL_TEST_IS_SANITIZED
constexpr std::size_t kShare = 10;
constexpr std::size_t kStackBytes = 512 * 1024;
#else
constexpr std::size_t kShare = 1;
constexpr std::size_t kStackBytes = 128 * 1024;
#endif

constexpr std::size_t kLimit = 10'485'760 / kShare;  // bytes that the scanner reads

std::string repeat(std::string_view piece, std::size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  while (count-- > 0) text += piece;
  return text;
}

void* callThrough(void* run) {
  (*static_cast<const std::function<void()>*>(run))();
  return nullptr;
}

void runOnSmallStack(const std::function<void()>& run) {
  const support::Redirected records(STDOUT_FILENO, "/dev/null", O_WRONLY);  // one line per record
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_t thread;
  std::function<void()> copy = run;
  if (pthread_attr_setstacksize(&attributes, kStackBytes) != 0 ||
      pthread_create(&thread, &attributes, callThrough, &copy) != 0)
    throw std::runtime_error("no thread with a small stack");
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// Returns the answer for a file with the text; valid until the next call.
std::string_view parse(const std::string& text, const char* name = "a.txt") {
  const support::TempDir directory;
  directory.write(name, text);
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(directory.path("."));
  const char* answer = nullptr;
  runOnSmallStack([&answer, name] { answer = ParseJS(name, nullptr); });
  std::filesystem::current_path(before);
  return answer == nullptr ? std::string_view() : std::string_view(answer);
}

std::size_t recordsIn(std::string_view answer) {
  constexpr std::string_view kEnd = "\n    \"calloutIDs\": []\n  }";
  std::size_t count = 0;
  for (std::size_t at = answer.find(kEnd); at != std::string_view::npos;
       at = answer.find(kEnd, at + kEnd.size()))
    ++count;
  return count;
}

struct Record {
  int line;
  std::string children;  // the text between the brackets
  std::size_t id;
  std::int64_t parent;
  std::string label;
  std::string tags;
  std::string contents;
  std::string file = "a.txt";
  std::string function = "";
};

std::string textOf(const Record& record) {
  return "  {\n    \"lineNumber\": " + std::to_string(record.line) +
         ",\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n    \"childNodeIDs\": [" +
         record.children + "],\n    \"nodeID\": " + std::to_string(record.id) +
         ",\n    \"parentID\": " + std::to_string(record.parent) +
         ",\n    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n"
         "    \"branchTypeAsString\": \"" +
         record.label + "\",\n    \"filePath\": \"" + record.file + "\",\n    \"tags\": [" +
         record.tags + "],\n    \"contents\": \"" + record.contents +
         "\",\n    \"simpleFunctionName\": \"" + record.function +
         "\",\n    \"calloutIDs\": []\n  }";
}

std::string listOf(std::size_t child) { return "   \n      " + std::to_string(child) + "\n    "; }

constexpr const char* kWrapperTags = "\n      \"auto-generated\"\n      \"scope-wrapper\"\n";

// The answer up to and including the record of the class wrapper with these children.
std::string answerHead(const std::string& wrapperChildren) {
  return "[\n" + textOf({0, "", 0, -1, "filepath", "", "a.txt"}) + ",\n" +
         textOf({0, wrapperChildren, 1, -1, "class", kWrapperTags, "class GlobalScope"});
}

void expectEnds(std::string_view answer, const std::string& head, const std::string& tail) {
  EXPECT_EQ(answer.substr(0, head.size()), head);
  ASSERT_GE(answer.size(), tail.size());
  EXPECT_EQ(answer.substr(answer.size() - tail.size()), tail);
}

// Blocks without a text have no records; only the node count shows them.
TEST(Deep, BracesAlone) {
  const std::size_t depth = kLimit;
  EXPECT_EQ(parse(repeat("{", depth)), answerHead("") + "\n]\n");
  EXPECT_EQ(static_cast<std::size_t>(currentIndex), depth + 5)
      << "root, wrappers, blocks, defines, record pass";
}

TEST(Deep, BracesAroundAStatement) {
  const std::size_t depth = kLimit / 4;
  const std::string_view answer = parse(repeat("{", depth) + "x;" + repeat("}", depth) + "y;\n");
  EXPECT_EQ(answer, answerHead(listOf(3)) + ",\n" + textOf({1, "", 2, -1, "line", "", "x"}) +
                        ",\n" + textOf({1, "", 3, 1, "line", "", "y"}) + "\n]\n")
      << "x has lost its parent, and y is in the wrapper again";
  EXPECT_EQ(static_cast<std::size_t>(currentIndex), depth + 7);
}

// Blocks with a text: each record is the parent of the next.
void expectChain(std::string_view answer, std::size_t depth) {
  EXPECT_EQ(recordsIn(answer), depth + 2);
  expectEnds(answer,
             answerHead(listOf(2)) + ",\n" + textOf({0, listOf(3), 2, 1, "define", "", "a"}) +
                 ",\n" + textOf({0, listOf(4), 3, 2, "define", "", "a"}) + ",\n",
             ",\n" +
                 textOf({0, "", depth + 1, static_cast<std::int64_t>(depth), "define", "", "a"}) +
                 "\n]\n");
}

TEST(Deep, UnclosedBlocks) {
  const std::size_t depth = kLimit / 2;
  expectChain(parse(repeat("a{", depth)), depth);
  EXPECT_EQ(static_cast<std::size_t>(currentIndex), depth + 5);
}

// At full size the closing braces are past the part that is scanned.
TEST(Deep, ClosedBlocks) {
  const std::size_t depth = kLimit / 2;
  expectChain(parse(repeat("a{", depth) + repeat("}", depth)), depth);
}

TEST(Deep, BlocksClosedWithinTheLimit) {
  const std::size_t depth = kLimit / 3 - 1;
  const std::string_view answer = parse(repeat("a{", depth) + repeat("}", depth) + "b;");
  EXPECT_EQ(recordsIn(answer), depth + 3);
  const std::string children = "   \n      2,\n      " + std::to_string(depth + 2) + "\n    ";
  expectEnds(answer, answerHead(children) + ",\n" + textOf({0, listOf(3), 2, 1, "define", "", "a"}),
             textOf({0, "", depth + 1, static_cast<std::int64_t>(depth), "define", "", "a"}) +
                 ",\n" + textOf({1, "", depth + 2, 1, "line", "", "b"}) + "\n]\n");
}

// One leaf with blocks in it: a backtick keeps the next quote escaped when the leaf is split, but
// not in the scan, so text inside a string can turn into code.
TEST(Deep, BlocksWithinALeaf) {
  const std::size_t depth = 1'000'000 / kShare;
  const std::string header = "'\\`'' ";
  currentIndex = 0;
  ObjectBranch* root = support::addNode(nullptr, kBranchFilePath, "filepath", "a.txt", "a.txt");
  ObjectBranch* leaf = support::addNode(
      root, kBranchLine, "line", header + repeat("a{", depth) + repeat("}", depth) + "b;", "a.txt");
  leaf->lineNumber = 1;
  std::string answer;
  runOnSmallStack([&] {
    GenerateInlineFunctions(root, true);
    answer = StartGeneratingObjects(root, "").str();
  });
  EXPECT_EQ(recordsIn(answer), depth + 3);
  ASSERT_EQ(leaf->children.size(), 2u);
  EXPECT_EQ(leaf->children[0]->contents, "''\\`'' a");
  EXPECT_EQ(support::dumpTree(leaf->children[1]), R"(line"b"@1)");
  const ObjectBranch* deepest = leaf->children[0];
  std::size_t levels = 1;
  for (; !deepest->children.empty(); ++levels) deepest = deepest->children[0];
  EXPECT_EQ(levels, depth);
  EXPECT_EQ(support::dumpTree(deepest), R"(container"a"@1)");
  EXPECT_EQ(static_cast<std::size_t>(deepest->nodeID), depth + 1);
  const std::string tail =
      textOf({1, "", depth + 1, static_cast<std::int64_t>(depth), "container", "", "a"}) + ",\n" +
      textOf({1, "", depth + 2, 1, "line", "", "b"}) + "\n]\n";
  expectEnds(answer, "[\n" + textOf({0, listOf(1), 0, -1, "filepath", "", "a.txt"}) + ",\n", tail);
}

// Scripts and pages keep 1,000 open scopes, including the outermost wrapper. Every deeper scope is
// a child of the last one kept.
struct Opened {
  const char* file;
  const char* text;  // opens a scope
  Record root;
  Record outer;  // wrappers
  Record inner;
  Record scope;  // the record of each, except its place
  int linesEach;
};

// Its id; the root and the wrappers have 0, 1 and 2.
constexpr std::size_t kLastKept = 999 + 2;

void expectOpened(const Opened& opened) {
  const std::size_t count = 100'000;
  const std::string_view answer = parse(repeat(opened.text, count), opened.file);
  EXPECT_EQ(recordsIn(answer), count + 3);
  const auto scopeAt = [&opened](std::size_t number, const std::string& children) {
    Record record = opened.scope;
    record.line = opened.linesEach * static_cast<int>(number);
    record.children = children;
    record.id = number + 2;
    record.parent = static_cast<std::int64_t>(std::min(number + 1, kLastKept));
    return textOf(record);
  };
  std::string expected = "[\n" + textOf(opened.root) + ",\n" + textOf(opened.outer) + ",\n" +
                         textOf(opened.inner) + ",\n";
  for (std::size_t number = 1; number < 999; ++number) {
    expected += scopeAt(number, listOf(number + 3)) + ",\n";
  }
  std::string others = "   \n      1002";
  for (std::size_t id = kLastKept + 2; id < count + 3; ++id) {
    others += ",\n      " + std::to_string(id);
  }
  expected += scopeAt(999, others + "\n    ");
  for (std::size_t number = 1000; number <= count; ++number) {
    expected += ",\n" + scopeAt(number, "");
  }
  EXPECT_TRUE(answer == expected + "\n]\n");
}

TEST(Deep, ScopesOfAScript) {
  const char* const file = "a.js";
  expectOpened(
      {file,
       "if (a) {\n",
       {0, listOf(1), 0, -1, "filepath", "", file, file},
       {0, listOf(2), 1, 0, "namespace", "\n      \"javascript-file\"\n", "namespace global", file},
       {0, listOf(3), 2, 1, "class", "\n      \"main-script\"\n", "A", file},
       {0, "", 0, 0, "logic", "", "if (a) {", file, "if"},
       1});
}

TEST(Deep, ElementsOfAPage) {
  const char* const file = "a.html";
  expectOpened(
      {file,
       "<b>",
       {0, listOf(1), 0, -1, "filepath", "", file, file},
       {0, listOf(2), 1, 0, "namespace", "\n      \"html-document\"\n", "namespace document", file},
       {0, listOf(3), 2, 1, "class", "\n      \"html-structure\"\n", "HTMLDocument", file},
       {0, "", 0, 0, "htmlelement", "", "b", file},
       0});
}

}  // namespace
