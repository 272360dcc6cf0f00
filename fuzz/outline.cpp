// The outline of any bytes, made of the records that the module gives for them: it keeps the rules
// of outlines, and so does the outline made with the answer cut short.
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "builder/tree_builder.h"
#include "cleaner/cleaner.h"
#include "harness.h"
#include "outline/outline.h"
#include "outline_rules.h"
#include "outline_target.h"
#include "run_nodes.h"
#include "targets.h"
#include "tree/object_branch.h"

namespace fuzz {
namespace {

std::string answerFor(std::string_view name, std::string_view file) {
  const std::string path(name);
  std::string text(file);
  std::vector<std::string> defines;
  std::string chunk;
  std::string answer;
  resetCounts();
  printedBy([&] {
    cleaner::clean(text, {}, defines);
    const builder::BuildRequest request{path, {}, {}, text, true, defines, chunk};
    answer = builder::buildRecords(request, tree::makeNode()).view();
  });
  return answer;
}

}  // namespace

void testOutline(std::string_view input) {
  if (input.empty()) return;
  const auto pick = static_cast<unsigned char>(input.front());
  const std::string_view file = input.substr(1);
  const std::string answer = answerFor(kOutlineNames[pick % kOutlineNames.size()], file);
  const std::string fault = brokenRule(host::outline::makeOutline(file, answer), file, answer);
  require(fault.empty(), fault);
  // Records of other bytes than these may not break anything either.
  host::outline::makeOutline(file.substr(file.size() / 2), answer);
  host::outline::makeOutline(file, std::string_view(answer).substr(0, answer.size() / 2));
}

}  // namespace fuzz
