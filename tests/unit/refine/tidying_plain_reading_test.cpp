// Compares the passes that tidy a tree with the reference implementation.
#include "refine/tidying.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "reference/plain_refine.h"
#include "support/dump_tree.h"
#include "support/heap.h"
#include "support/many_texts.h"
#include "support/random_tree.h"
#include "tree/object_branch.h"

namespace {

constexpr std::string_view kBraceTexts[] = {"}", "{", "};", "",    " } ", "\f{\n", "{}", "});",
                                            "a", "b", "c",  "} ;", "{ {", "\t",    ")",  ";"};
constexpr std::string_view kDefinePieces[] = {"A", " ", "\n", "LEVEL 2", "\f", "\t", "\r"};

TEST(TidyingPlainReading, OfRandomTrees) {
  std::mt19937 random(20240306);
  for (int i = support::textCount(100'000); i > 0 && !HasFatalFailure(); --i) {
    const support::NodeSweep sweep;
    const support::TreePlan plan = support::randomPlan(kBraceTexts, 20, random);
    std::vector<std::string> defines;
    for (std::size_t left = random() % 3; left > 0; --left)
      defines.push_back(support::randomText(kDefinePieces, 4, random));
    ObjectBranch* const real = support::growTree(plan)[0];
    AppendAllDefines(real, defines);
    RemoveBraceOnlyNodes(real);
    const std::int32_t nextId = currentIndex;
    ObjectBranch* const plain = support::growTree(plan)[0];
    reference::appendAllDefines(plain, defines);
    reference::removeBraceOnlyNodes(plain);
    ASSERT_EQ(support::dumpTree(real), support::dumpTree(plain));
    ASSERT_EQ(nextId, currentIndex);
    if (real->children.empty()) continue;
    ASSERT_EQ(support::describeNode(*real->children.back()),
              support::describeNode(*plain->children.back()));
  }
}

}  // namespace
