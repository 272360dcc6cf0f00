// Compares the scanner, which moves runs of bytes and tracks the state of the chunk, with the
// reference implementation: the trees, the numbers, the output and the final chunk.
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "builder/character_scanner.h"
#include "builder/node_emission.h"
#include "reference/plain_scanner.h"
#include "support/capture.h"
#include "support/make_tree.h"
#include "support/many_texts.h"
#include "support/same_tree.h"
#include "tree/object_branch.h"

namespace {

using std::string_view_literals::operator""sv;
using support::addNode;
using support::forEachText;

enum class Start { kRoot, kNamespace, kClass };

struct Setting {
  Start start = Start::kClass;
  bool isJavaScript = true;
  std::string path = "a.txt";
  std::string chunk = "";
};

struct Scanned {
  ObjectBranch* root = nullptr;
  std::string chunk;
  int nextId = 0;
  int count = 0;
};

// Runs scan on a new tree, numbered from 1 so that it can be destroyed.
template <typename Scan>
Scanned scanned(const Setting& setting, Scan scan) {
  currentIndex = 1;
  objectCount = 0;
  Scanned result;
  result.chunk = setting.chunk;
  result.root = addNode(nullptr, kBranchFilePath, "filepath", "a.txt", setting.path);
  ObjectBranch* start = result.root;
  // Nodes copy the path of the current node, so the wrappers get a different one.
  if (setting.start != Start::kRoot)
    start = addNode(start, kBranchNone, "namespace", "namespace global", "below/" + setting.path);
  if (setting.start == Start::kClass)
    start = addNode(start, kBranchNone, "class", "class GlobalScope", "below/" + setting.path);
  scan(result.root, start, result.chunk);
  result.nextId = currentIndex;
  result.count = objectCount;
  return result;
}

// Keeps the first difference. Assertions come later, since error nodes print to the standard output
// that a failure would also use.
class Comparison {
 public:
  void operator()(const std::string& text, const Setting& setting) {
    if (!first_.empty()) return;
    const Scanned real =
        scanned(setting, [&](ObjectBranch* root, ObjectBranch* start, std::string& chunk) {
          builder::scanCharacters(text, root, start, setting.isJavaScript, chunk);
        });
    const Scanned plain =
        scanned(setting, [&](ObjectBranch* root, ObjectBranch* start, std::string& chunk) {
          printed_ += reference::scanCharacters(text, root, start, setting.isJavaScript, chunk);
        });
    std::string difference = support::treeDifference(real.root, plain.root);
    if (difference.empty() && real.chunk != plain.chunk)
      difference = "chunk " + real.chunk + " and " + plain.chunk;
    if (difference.empty() && real.nextId != plain.nextId) difference = "the next number";
    if (difference.empty() && real.count != plain.count) difference = "the count";
    if (!difference.empty())
      first_ = testing::PrintToString(text) + " from start " +
               std::to_string(static_cast<int>(setting.start)) +
               (setting.isJavaScript ? "" : ", no script") + ", behind " +
               testing::PrintToString(setting.chunk) + ": " + difference;
    noteLabels(real.root);
    support::destroyTree(real.root);
    support::destroyTree(plain.root);
  }

  const std::string& first() const { return first_; }
  const std::string& printed() const { return printed_; }
  const std::set<std::string>& labels() const { return labels_; }

 private:
  void noteLabels(const ObjectBranch* node) {
    labels_.insert(node->branchTypeAsString);
    for (const ObjectBranch* child : node->children) noteLabels(child);
  }

  std::string first_;
  std::string printed_;
  std::set<std::string> labels_;
};

void expectNoDifference(const Comparison& comparison, const std::string& printed) {
  EXPECT_EQ(comparison.first(), "");
  EXPECT_TRUE(printed == comparison.printed());
  EXPECT_NE(printed, "") << "no text ended in an error";
}

constexpr std::string_view kBytes[] = {"a", " ", "\n", ";", "{", "}", "(", ")", "\\", "\""};

TEST(ScannerPlainReading, OfAllShortTexts) {
  Comparison comparison;
  const std::string printed = support::stdoutOf([&comparison] {
    for (const Start start : {Start::kRoot, Start::kNamespace, Start::kClass}) {
      const int bytes = start == Start::kClass ? 7 : 6;
      forEachText("a\n;{}()", bytes,
                  [&](const std::string& text) { comparison(text, {.start = start}); });
    }
    forEachText(kBytes, 5, "", [&](const std::string& text) { comparison(text, {}); });
  });
  expectNoDifference(comparison, printed);
}

constexpr std::string_view kClosings[] = {")", ",", " ", "\f", "x", ";", "\n"};
constexpr std::string_view kStringBytes[] = {"'", "\"", "`", "\\", "\n", ";", "a"};
constexpr std::string_view kBracketBytes[] = {"[", "]", " ", "\n", ";", "{", "}", "(", "'", "a"};

TEST(ScannerPlainReading, OfAllShortTextsOfOtherBytes) {
  Comparison comparison;
  const std::string printed = support::stdoutOf([&comparison] {
    forEachText(kClosings, 6, "", [&](const std::string& text) { comparison(text + "\n;", {}); });
    forEachText(kStringBytes, 6, "",
                [&](const std::string& text) { comparison(text + "\n;", {}); });
    forEachText(kBracketBytes, 5, "", [&](const std::string& text) {
      comparison(text + "\n;", {.isJavaScript = false});
      comparison(text + "\n}}}", {});
    });
  });
  expectNoDifference(comparison, printed);
}

TEST(ScannerPlainReading, OfShortTextsInLongRuns) {
  Comparison comparison;
  const std::string printed = support::stdoutOf([&comparison] {
    support::forEachTextInARun("'\\\n;{}(", 3, 'a',
                               [&](const std::string& text) { comparison(text + "\n}}}", {}); });
  });
  expectNoDifference(comparison, printed);
}

// clang-format off
constexpr std::string_view kPieces[] = {
    "a", " ", "\n", ";", "{", "}", "(", ")", "\\", "\"", "'", "`", ",", "[", "]", "x", "{", "{",
    ";", "\n", "\f", "\v", "\t", "\r", "\0"sv, "\x80", "=>", " = ", "class", "require", "import ",
    "const ", "export ", "exports.", "\\ ", "\\\n", ") ) )", "}) )", "));", "; ;", ");\n", "x;",
    "'s'", "foo(1)", "f(x) {", "b {\n", "class A {", "import a;", "import a\n",
    "const b = require;"};
// clang-format on

constexpr const char* kChunks[] = {"",    "",   "",  " ",   ")",     "}",
                                   "});", "};", "{", "a\\", "a \\ ", ","};
constexpr const char* kPaths[] = {"a.txt", "script/a.txt", "a.html.bak", "A.HTML"};

TEST(ScannerPlainReading, OfRandomTexts) {
  Comparison comparison;
  const std::string printed = support::stdoutOf([&comparison] {
    std::mt19937 random(20240311);
    for (int left = support::textCount(200'000); left > 0; --left) {
      Setting setting;
      setting.start = static_cast<Start>(random() % 3);
      setting.isJavaScript = random() % 4 != 0;
      setting.path = kPaths[random() % std::size(kPaths)];
      setting.chunk = kChunks[random() % std::size(kChunks)];
      comparison(support::randomText(kPieces, 30, random), setting);
    }
  });
  expectNoDifference(comparison, printed);
  EXPECT_EQ(comparison.labels(),
            (std::set<std::string>{"class", "container", "define", "error: NULL parent branch",
                                   "error: Zero child objects", "filepath", "line", "namespace"}))
      << "the texts must show all kinds of nodes";
}

TEST(ScannerPlainReading, OfTheCleaningOfAChunk) {
  constexpr std::string_view kChunkBytes[] = {")", "(", ",", " ", "\n", "\f", "x"};
  forEachText(kChunkBytes, 7, "", [](const std::string& text) {
    ASSERT_EQ(CleanupChunk(text), reference::cleanedChunk(text)) << testing::PrintToString(text);
  });
}

}  // namespace
