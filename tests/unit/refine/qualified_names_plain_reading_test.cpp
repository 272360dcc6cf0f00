// Compares the long names, whose climbs remember what they have read, and the walk for class nodes
// with the reference implementation.
#include "refine/qualified_names.h"

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "reference/plain_refine.h"
#include "support/heap.h"
#include "support/many_texts.h"
#include "support/random_tree.h"
#include "tree/object_branch.h"

namespace {

// clang-format off
constexpr std::string_view kTexts[] = {
    "a", "a", "", "x = 1;", "class Foo {", "class Foo extends HTMLElement {",
    "class Foo extends MyElementBase {", "class Foo extends", "class 'A' extends \"Element\"",
    "el.classList", "export default ", "export const x", "export {", "module.exports = ",
    "exports.a", "(function () {", "(() => {", "(async x", "define(function", "define(",
    "typeof exports typeof module", "typeof exports", "customElements.define(", "a.js", "Class",
    "extends HTMLDivElement"};
// clang-format on

TEST(QualifiedNamesPlainReading, OfRandomTrees) {
  std::mt19937 random(20240305);
  for (int i = support::textCount(30'000); i > 0 && !HasFatalFailure(); --i) {
    const support::NodeSweep sweep;
    const support::TreePlan plan = support::randomPlan(kTexts, 25, random);
    const std::vector<ObjectBranch*> real = support::growTree(plan);
    const std::vector<ObjectBranch*> plain = support::growTree(plan);
    for (std::size_t k = 0; k < plan.size(); ++k)
      ASSERT_EQ(climbForLongName(real[k]), reference::climbForLongName(plain[k]))
          << support::describeNode(*plain[k]);
    ExpandClassnames(real[0]);
    reference::expandClassnames(plain[0]);
    for (std::size_t k = 0; k < plan.size(); ++k)
      ASSERT_EQ(support::describeNode(*real[k]), support::describeNode(*plain[k]));
  }
}

constexpr std::string_view kHeadPieces[] = {"class ", "Foo", " extends ", "HTMLElement", "Element",
                                            "'",      "{",   " ",         "\"",          "extends"};

TEST(QualifiedNamesPlainReading, OfClassNames) {
  const auto compare = [](const std::string& text) {
    ASSERT_EQ(extractClassName(text), reference::extractClassName(text))
        << testing::PrintToString(text);
  };
  support::forEachText(kHeadPieces, 5, "", compare);
  support::forRandomTexts(kHeadPieces, 14, 200'000, compare);
}

}  // namespace
