// Compares the record pass and the writing of records, which use tables and a single block of
// memory, with the reference implementation: the text, the output, and the final state of every
// node.
#include "records/record_pass.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "reference/plain_records.h"
#include "support/capture.h"
#include "support/heap.h"
#include "support/many_texts.h"
#include "support/random_tree.h"
#include "tree/object_branch.h"

namespace {

using std::string_view_literals::operator""sv;

// clang-format off
constexpr std::string_view kTexts[] = {
    "", "{", "}", "};", "{}", "(", ")", ";", ");", "));", "});", " } ", "\f", "}}", "{ }", "a",
    "if (x) {", "else {", "import a;", "export { a };", "export function f() {", "while (x)",
    "for (;;) {", "function Foo() {", "function foo(a) {", "function () {", "var x = 1;",
    "x = y + 1;", "let f = (a) => {", "(function() {", "(() => {", "return x;", "class A {",
    "TTTTT", "function TTTTT() {", "f(a) { TTTTT }", "s = \"q\" + 'it\\'s';", "a\tb\r\nc\\d",
    "$('.menu').on('click', function() {", "addEventListener(\"click\", function () {",
    "setTimeout('a long text that is cut behind 25 bytes', function () {", "''function(a) {",
    "href: page?a=1", "caf\xC3\xA9 = \"\0\";"sv, "exports.a = 1;", "namespace global", " x = 1",
    "say(\"a 'b' c\") {", "module.exports = x"};
// clang-format on

struct Passed {
  std::string text;
  std::vector<std::string> nodes;
  std::int32_t nextId = 0;
  std::int32_t count = 0;

  bool operator==(const Passed&) const = default;
};

template <typename Pass>
Passed passed(const support::TreePlan& plan, const std::vector<std::size_t>& withNull, Pass pass) {
  const std::vector<ObjectBranch*> nodes = support::growTree(plan);
  for (const std::size_t place : withNull) {
    auto& children = nodes[place]->children;
    children.insert(children.begin(), nullptr);
  }
  objectCount = 0;
  Passed result;
  result.text = pass(nodes[0]);
  result.nextId = currentIndex;
  result.count = objectCount;
  for (const ObjectBranch* node : nodes) result.nodes.push_back(support::describeNode(*node));
  return result;
}

std::string difference(const Passed& real, const Passed& plain) {
  if (real == plain) return "";
  if (real.text != plain.text) return real.text + " and\n" + plain.text;
  for (std::size_t i = 0; i < real.nodes.size(); ++i)
    if (real.nodes[i] != plain.nodes[i]) return real.nodes[i] + " and\n" + plain.nodes[i];
  return "the counters";
}

// Shuffles the plan's numbers: out of order, far apart or, occasionally, duplicated.
void renumber(support::TreePlan& plan, std::mt19937& random) {
  const std::int32_t step = random() % 2 == 0 ? 7 : 100'000;
  const std::int32_t shift = static_cast<std::int32_t>(random() % 20) - 10;
  for (support::NodePlan& node : plan) node.id = step * node.id + shift;
  for (std::size_t i = plan.size(); i > 1; --i) std::swap(plan[i - 1].id, plan[random() % i].id);
  if (random() % 4 == 0) plan[random() % plan.size()].id = plan[random() % plan.size()].id;
}

TEST(RecordPassPlainReading, OfRandomTrees) {
  std::mt19937 random(20240303);
  std::string first;
  std::string plainPrinted;
  const std::string printed = support::stdoutOf([&] {
    for (int i = support::textCount(80'000); i > 0 && first.empty(); --i) {
      const support::NodeSweep sweep;
      support::TreePlan plan = support::randomPlan(kTexts, 12, random);
      // Occasionally a text that is larger than any expected block.
      if (random() % 64 == 0)
        plan[random() % plan.size()].contents.append(random() % 20'000,
                                                     random() % 2 == 0 ? '"' : 'a');
      if (random() % 4 == 0) renumber(plan, random);
      std::vector<std::size_t> withNull;
      if (random() % 8 == 0) withNull.push_back(random() % plan.size());
      const Passed real = passed(plan, withNull, [](ObjectBranch* root) {
        return StartGeneratingObjects(root, "").str();
      });
      const Passed plain = passed(plan, withNull, [&](ObjectBranch* root) {
        const reference::Records records = reference::generateRecords(root);
        plainPrinted += records.printed;
        return records.text;
      });
      first = difference(real, plain);
    }
  });
  EXPECT_EQ(first, "");
  EXPECT_TRUE(printed == plainPrinted);
}

void expectPlainNode(const std::string& contents) {
  ObjectBranch node;
  node.contents = contents;
  ASSERT_EQ(ShouldSkipNode(node), reference::shouldSkipNode(node))
      << testing::PrintToString(contents);
  ASSERT_EQ(ExtractSimpleFunctionNameForPreview(contents), reference::previewName(contents))
      << testing::PrintToString(contents);
}

constexpr std::string_view kNamePieces[] = {"'",  "\"", "a", " ", "(",  ")", "function ",  "\\",
                                            "\n", "{",  "}", ";", "\f", ",", "word word ", "$"};

TEST(RecordPassPlainReading, OfSkippedTextsAndPreviewNames) {
  support::forEachText("{}(); \f", 7, expectPlainNode);
  support::forEachText("'\"a (=", 7, expectPlainNode);
  support::forRandomTexts(kNamePieces, 20, 300'000, expectPlainNode);
}

}  // namespace
