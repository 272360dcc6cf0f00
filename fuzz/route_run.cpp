#include "route_run.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "answer_check.h"
#include "builder/tree_builder.h"
#include "cleaner/cleaner.h"
#include "run_nodes.h"
#include "tree/object_branch.h"

namespace fuzz {
namespace {

struct Outcome {
  std::vector<std::string> defines;
  std::string cleaned;
  std::string answer;
  std::string leftInChunk;
  Printed whileCleaning;
  Printed whileBuilding;
  std::int32_t nextId = 0;
  std::int32_t count = 0;
  bool operator==(const Outcome&) const = default;
};

// What a call for a file does between reading it and handing out the answer.
Outcome outcomeOf(const std::string& path, const Setting& setting, std::string_view file) {
  Outcome outcome;
  for (const std::string_view define : setting.defines) {
    if (!define.empty()) outcome.defines.emplace_back(define);
  }
  outcome.cleaned = file;
  resetCounts();
  ObjectBranch* const root = tree::makeNode();
  outcome.whileCleaning =
      printedBy([&outcome] { cleaner::clean(outcome.cleaned, {}, outcome.defines); });
  outcome.whileBuilding = printedBy([&] {
    const builder::BuildRequest request{path,
                                        setting.namespaceName,
                                        setting.className,
                                        outcome.cleaned,
                                        setting.isJavaScript,
                                        outcome.defines,
                                        outcome.leftInChunk};
    outcome.answer = builder::buildRecords(request, root).view();
  });
  outcome.nextId = currentIndex;
  outcome.count = objectCount;
  return outcome;
}

std::size_t countOf(std::string_view text, std::string_view piece) {
  std::size_t count = 0;
  for (std::size_t at = text.find(piece); at != std::string_view::npos;
       at = text.find(piece, at + piece.size())) {
    ++count;
  }
  return count;
}

}  // namespace

RouteRun runRoute(std::string_view input, std::span<const std::string_view> names) {
  RouteRun run;
  if (input.size() < 2) return run;
  const Pick pick = pickBy(static_cast<unsigned char>(input.front()), names);
  run.path = pick.name;
  run.setting = &pick.setting;

  const Outcome first = outcomeOf(run.path, pick.setting, input.substr(1));
  require(outcomeOf(run.path, pick.setting, input.substr(1)) == first,
          "the same file twice gives the same bytes");

  const auto lines = std::count(first.cleaned.begin(), first.cleaned.end(), '\n');
  const AnswerCheck check = checkAnswer(first.answer, run.path, static_cast<int>(lines) + 1);
  require(check.fault.empty(), check.fault);
  require(countOf(first.whileBuilding.out, " and now is ") == check.records,
          "each record is reported once");
  require(check.records < static_cast<std::size_t>(first.nextId), "each record had a number");

  run.cleaned = first.cleaned;
  run.answer = first.answer;
  run.built = first.whileBuilding;
  return run;
}

}  // namespace fuzz
