// Compares the splitting of leaves, which works on slices, with the reference implementation.
#include <random>
#include <set>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "reference/plain_inline_functions.h"
#include "refine/inline_functions.h"
#include "support/make_tree.h"
#include "support/many_texts.h"
#include "support/same_tree.h"
#include "tree/object_branch.h"

namespace {

using std::string_view_literals::operator""sv;
using support::addNode;

// A tree with the text in two leaves, one of them deeper, and in a node above a leaf. Its numbers
// start at 1 so that it can be destroyed.
ObjectBranch* newTree(const std::string& text, const std::string& label) {
  currentIndex = 1;
  objectCount = 0;
  ObjectBranch* root = addNode(nullptr, kBranchFilePath, "filepath", "a.txt", "dir/a.txt");
  ObjectBranch* inner = addNode(root, kBranchContainer, label, text, "dir/a.txt");
  inner->lineNumber = 3;
  addNode(inner, kBranchLine, label, text, "below/a.txt")->lineNumber = 4;
  addNode(root, kBranchLine, label, text, "dir/a.txt")->lineNumber = 5;
  return root;
}

void noteLabels(const ObjectBranch* node, std::set<std::string>& labels) {
  labels.insert(node->branchTypeAsString);
  for (const ObjectBranch* child : node->children) noteLabels(child, labels);
}

void expectPlainSplit(const std::string& text, const std::string& label,
                      std::set<std::string>& labels) {
  ObjectBranch* real = newTree(text, label);
  GenerateInlineFunctions(real, true);
  const int nextId = currentIndex;
  const int count = objectCount;
  ObjectBranch* plain = newTree(text, label);
  reference::generateInlineFunctions(plain);
  ASSERT_EQ(support::treeDifference(real, plain), "") << testing::PrintToString(text);
  ASSERT_EQ(nextId, currentIndex) << testing::PrintToString(text);
  ASSERT_EQ(count, objectCount) << testing::PrintToString(text);
  noteLabels(real, labels);
  support::destroyTree(real);
  support::destroyTree(plain);
}

constexpr std::string_view kBytes[] = {"a ", "{", "}", ";", "return ", "= ", "' "};

TEST(InlineFunctionsPlainReading, OfAllShortTexts) {
  std::set<std::string> labels;
  support::forEachText(kBytes, 6, "", [&labels](const std::string& text) {
    expectPlainSplit(text, "define", labels);
  });
}

// clang-format off
constexpr std::string_view kPieces[] = {
    "a", "{", "}", ";", " ", "(", ")", "=>", ",", "'", "\"", "`", "\\", "\0"sv, "\xE9", "\n", "\f",
    "{", "}", ";", " {", "} ", "};", "return ", " = ", "(a) ", "function", "class ", "if ",
    "while ", "async ", "let ", "'s'", "else {", "f(a) {", "x = 1;", "function f() {",
    "var g = (a) => {", "class B {", "for ("};
// clang-format on

TEST(InlineFunctionsPlainReading, OfRandomTexts) {
  std::mt19937 random(20240312);
  std::set<std::string> labels;
  for (int left = support::textCount(100'000); left > 0 && !HasFatalFailure(); --left) {
    const std::string text = support::randomText(kPieces, 30, random);
    expectPlainSplit(text, random() % 2 == 0 ? "define" : "namespace", labels);
  }
  EXPECT_EQ(labels, (std::set<std::string>{"class", "classvar", "container", "define", "filepath",
                                           "function", "line", "logic", "loop", "namespace"}))
      << "the texts must show all kinds of nodes";
}

}  // namespace
