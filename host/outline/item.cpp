#include "outline/item.h"

#include <array>

namespace host::outline {

namespace {

constexpr std::array<std::string_view, kKindCount> kWords = {
    "function", "method",    "constructor", "getter",   "setter", "class",  "interface",
    "enum",     "namespace", "type",        "variable", "field",  "module", "callback",
    "logic",    "loop",      "statement",   "element",  "link",   "script", "block"};

}  // namespace

std::string_view kindWord(Kind kind) { return kWords[static_cast<std::size_t>(kind)]; }

std::vector<std::string_view> kindWords() { return {kWords.begin(), kWords.end()}; }

}  // namespace host::outline
