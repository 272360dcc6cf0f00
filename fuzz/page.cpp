// Pages, and the page parser against the plain reading of its rules.
#include "harness.h"
#include "html/html_structure.h"
#include "reference/plain_page.h"
#include "route_run.h"
#include "run_nodes.h"
#include "support/make_tree.h"
#include "support/same_tree.h"
#include "targets.h"
#include "text/file_names.h"

namespace fuzz {
namespace {

ObjectBranch* newTop(const std::string& path) {
  resetCounts();
  return support::addNode(nullptr, kBranchClass, "class", "HTMLDocument", path);
}

}  // namespace

void testPage(std::string_view input) {
  const RouteRun run = runRoute(input, kPageNames);
  if (run.answer.empty()) return;
  require(text::isPagePath(run.path), "the name is a page's");

  ObjectBranch* const fast = newTop(run.path);
  detect::AnswerTable answers(0);
  const Printed printed =
      printedBy([&] { html::parseStructure(run.cleaned, fast, run.path, 0, answers); });
  ObjectBranch* const plain = newTop(run.path);
  const int strayTags = reference::parsePage(run.cleaned, plain, run.path, 0);
  require(support::treeDifference(fast, plain).empty(), "the page reads as its rules do");

  std::string warnings;
  for (int i = 0; i < strayTags; ++i) {
    warnings += "Warning: Attempting to pop from empty element stack\n";
  }
  require(printed == Printed{"", warnings}, "each stray closing tag is warned of");
  require(run.built.err == warnings, "a whole run warns of the same tags");
}

}  // namespace fuzz
