// Whole runs of the three routes, compared with the reference implementation, and checks that hold
// for any answer.
#include "routes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "answer_check.h"
#include "builder/tree_builder.h"
#include "cleaner/cleaner.h"
#include "harness.h"
#include "reference/plain_cleaner.h"
#include "reference/plain_run.h"
#include "reference/plain_tree.h"
#include "run_nodes.h"
#include "support/random_tree.h"
#include "targets.h"
#include "tree/object_branch.h"
#include "tree/walk.h"

namespace fuzz {
namespace {

struct Outcome {
  std::vector<std::string> defines;
  std::string text;  // the tree was built from it
  std::string answer;
  std::string leftInChunk;
  Printed whileCleaning;
  Printed whileBuilding;
  std::vector<std::string> nodes;  // everything below the root and below each orphan
  std::int32_t nextId = 0;
  std::int32_t count = 0;
  bool operator==(const Outcome&) const = default;
};

// The outcome of work, which takes a run's arguments and does everything between reading the file
// and returning the answer.
template <typename Work>
Outcome outcomeOf(const Setting& setting, std::string_view file, Work work) {
  Outcome outcome;
  for (const std::string_view define : setting.defines) {
    if (!define.empty()) outcome.defines.emplace_back(define);
  }
  outcome.text = file;
  outcome.leftInChunk = setting.chunk;
  const std::set<ObjectBranch*> before = allAllocatedNodes;
  resetCounts();
  work(outcome);
  for (ObjectBranch* top : allAllocatedNodes) {
    if (before.contains(top) || top->parent != nullptr) continue;
    tree::walkPreOrder(top, [&outcome](const ObjectBranch* node) {
      outcome.nodes.push_back(support::describeNode(*node));
      return tree::Descend::kYes;
    });
  }
  std::sort(outcome.nodes.begin(), outcome.nodes.end());
  outcome.nextId = currentIndex;
  outcome.count = objectCount;
  return outcome;
}

Outcome runOf(const std::string& path, const Setting& setting, std::string_view file) {
  return outcomeOf(setting, file, [&](Outcome& outcome) {
    ObjectBranch* const root = tree::makeNode();
    outcome.whileCleaning = printedBy([&] {
      if (setting.isCleaned) cleaner::clean(outcome.text, {}, outcome.defines);
    });
    outcome.whileBuilding = printedBy([&] {
      const builder::BuildRequest request{path,
                                          setting.namespaceName,
                                          setting.className,
                                          outcome.text,
                                          setting.isJavaScript,
                                          outcome.defines,
                                          outcome.leftInChunk};
      outcome.answer = builder::buildRecords(request, root).view();
    });
  });
}

std::string warningsOf(int strayTags) {
  std::string lines;
  for (int i = 0; i < strayTags; ++i) {
    lines += "Warning: Attempting to pop from empty element stack\n";
  }
  return lines;
}

Outcome plainRunOf(const std::string& path, const Setting& setting, std::string_view file) {
  return outcomeOf(setting, file, [&](Outcome& outcome) {
    ObjectBranch* const root = reference::newNode();
    if (setting.isCleaned) {
      const reference::Simulated cleaned = reference::cleanText(outcome.text, {}, outcome.defines);
      outcome.text = cleaned.text;
      outcome.defines = cleaned.defines;
      outcome.whileCleaning.out = cleaned.report;
    }
    const reference::Run run = reference::buildTree(
        {path, std::string(setting.namespaceName), std::string(setting.className), outcome.text,
         setting.isJavaScript, outcome.defines},
        root, outcome.leftInChunk);
    outcome.answer = run.answer;
    outcome.whileBuilding = {run.printed, warningsOf(run.strayTags)};
  });
}

void requireSame(const Outcome& run, const Outcome& plain) {
  require(run.text == plain.text, "the text is cleaned as the rules say");
  require(run.defines == plain.defines, "the names that directives mention");
  require(run.whileCleaning == plain.whileCleaning, "long directives are reported");
  require(run.answer == plain.answer, "the answer is that of the rules");
  require(run.leftInChunk == plain.leftInChunk, "the same is left in the chunk");
  require(run.whileBuilding == plain.whileBuilding, "what is printed follows the rules");
  require(run.nodes == plain.nodes, "the nodes are those of the rules");
  require(run.nextId == plain.nextId && run.count == plain.count, "as many nodes are made");
}

std::size_t countOf(std::string_view text, std::string_view piece) {
  std::size_t count = 0;
  for (std::size_t at = text.find(piece); at != std::string_view::npos;
       at = text.find(piece, at + piece.size())) {
    ++count;
  }
  return count;
}

// Builds one file twice and compares both with the reference implementation.
void testRun(std::string_view input, std::span<const std::string_view> names) {
  if (input.size() < 2) return;
  const Pick pick = pickBy(static_cast<unsigned char>(input.front()), names);
  const std::string path(pick.name);
  const std::string_view file = input.substr(1);

  const Outcome run = runOf(path, pick.setting, file);
  require(runOf(path, pick.setting, file) == run, "the same file twice gives the same bytes");
  requireSame(run, plainRunOf(path, pick.setting, file));

  const auto lines = std::count(run.text.begin(), run.text.end(), '\n');
  const AnswerCheck check = checkAnswer(run.answer, path, static_cast<int>(lines) + 1);
  require(check.fault.empty(), check.fault);
  require(countOf(run.whileBuilding.out, " and now is ") == check.records,
          "each record is reported once");
  require(check.records < static_cast<std::size_t>(run.nextId), "each record had a number");
}

}  // namespace

void testScript(std::string_view input) { testRun(input, kScriptNames); }
void testPage(std::string_view input) { testRun(input, kPageNames); }
void testScanner(std::string_view input) { testRun(input, kScannerNames); }

}  // namespace fuzz
