#include "detect/flow.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "text/string_primitives.h"

namespace detect {
namespace {

constexpr std::array<std::string_view, 8> kLogicWords{"if",    "else",    "switch", "try",
                                                      "catch", "finally", "case",   "default"};
constexpr std::array<std::string_view, 3> kLoopWords{"while", "for", "do"};
constexpr std::array<std::string_view, 4> kComparisons{"==", "===", "!=", "!=="};

}  // namespace

bool isLogic(const Statement& statement) {
  return statement.answer(Question::kLogic, [&statement] {
    if (text::isOneOf(statement.firstWord(), kLogicWords)) return true;
    // required: never true, since only a one-byte needle can match: a comparison alone is not
    // logic.
    return std::any_of(kComparisons.begin(), kComparisons.end(), [&](std::string_view comparison) {
      return text::matchesOutsideStrings(statement.text(), comparison);
    });
  });
}

bool isLoop(const Statement& statement) {
  return statement.answer(Question::kLoop,
                          [&] { return text::isOneOf(statement.firstWord(), kLoopWords); });
}

}  // namespace detect

bool DetectJSLogic(std::string text) { return detect::isLogic(detect::Statement(text)); }

bool DetectJSLoop(std::string text) { return detect::isLoop(detect::Statement(text)); }
