#include "outline/item.h"

#include <array>
#include <cstddef>

namespace host::outline {

std::string_view kindWord(Kind kind) {
  constexpr std::array<std::string_view, 21> kWords = {
      "function", "method",    "constructor", "getter",   "setter", "class",  "interface",
      "enum",     "namespace", "type",        "variable", "field",  "module", "callback",
      "logic",    "loop",      "statement",   "element",  "link",   "script", "block"};
  static_assert(kWords.size() == static_cast<std::size_t>(Kind::kBlock) + 1, "a word a kind");
  return kWords[static_cast<std::size_t>(kind)];
}

}  // namespace host::outline
