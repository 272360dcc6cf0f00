// Any other text, and the scanner and the splitting of leaves against the plain readings of their
// rules.
#include "builder/character_scanner.h"
#include "harness.h"
#include "reference/plain_inline_functions.h"
#include "reference/plain_scanner.h"
#include "refine/inline_functions.h"
#include "route_run.h"
#include "run_nodes.h"
#include "support/make_tree.h"
#include "support/same_tree.h"
#include "targets.h"
#include "text/file_names.h"

namespace fuzz {
namespace {

struct Scanned {
  ObjectBranch* root = nullptr;
  std::string chunk;
  std::string printed;
  std::int32_t nextId = 0;
  std::int32_t count = 0;
};

// Runs scan from the node where a run of that setting would begin. It gives what it printed.
template <typename Scan>
Scanned scanned(const RouteRun& run, Scan scan) {
  resetCounts();
  Scanned result;
  result.root = support::addNode(nullptr, kBranchFilePath, "filepath", "a", run.path);
  ObjectBranch* start = result.root;
  const auto addWrapper = [&](const char* label) {
    start = support::addNode(start, kBranchNone, label, label, run.path);
  };
  if (run.setting->namespaceName.empty()) {
    addWrapper("namespace");
    if (run.setting->className.empty()) addWrapper("class");
  }
  result.printed = scan(result.root, start, result.chunk);
  result.nextId = currentIndex;
  result.count = objectCount;
  return result;
}

}  // namespace

void testScanner(std::string_view input) {
  const RouteRun run = runRoute(input, kScannerNames);
  if (run.answer.empty()) return;
  require(!text::isScriptPath(run.path) && !text::isPagePath(run.path), "the name is no other's");
  require(run.built.err.empty(), "the scanner has no warnings");

  const bool isJavaScript = run.setting->isJavaScript;
  const Scanned fast =
      scanned(run, [&](ObjectBranch* root, ObjectBranch* start, std::string& chunk) {
        const Printed printed = printedBy(
            [&] { builder::scanCharacters(run.cleaned, root, start, isJavaScript, chunk); });
        return printed.out;
      });
  const Scanned plain =
      scanned(run, [&](ObjectBranch* root, ObjectBranch* start, std::string& chunk) {
        return reference::scanCharacters(run.cleaned, root, start, isJavaScript, chunk);
      });
  require(support::treeDifference(fast.root, plain.root).empty(), "the text reads as its rules do");
  require(fast.chunk == plain.chunk, "the same is left in the chunk");
  require(fast.printed == plain.printed, "the same is printed");
  require(fast.nextId == plain.nextId && fast.count == plain.count, "as many nodes are made");

  currentIndex = fast.nextId;
  GenerateInlineFunctions(fast.root, true);
  currentIndex = plain.nextId;
  reference::generateInlineFunctions(plain.root);
  require(support::treeDifference(fast.root, plain.root).empty(), "leaves split as the rules do");
}

}  // namespace fuzz
