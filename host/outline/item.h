// What an outline is made of.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host::outline {

enum class Kind : std::uint8_t {
  kFunction,  // declared, or the value of a variable or assignment
  kMethod,    // of a class or object, also a field or property that holds a function
  kConstructor,
  kGetter,
  kSetter,
  kClass,
  kInterface,
  kEnum,
  kNamespace,
  kType,  // a type alias
  kVariable,
  kField,     // of a class
  kModule,    // an import or an export list
  kCallback,  // a line that opens a function without a name
  kLogic,
  kLoop,
  kStatement,  // any other line
  kElement,    // of a page
  kLink,
  kScript,  // an inline script
  kBlock,   // of other text
};

inline constexpr std::size_t kKindCount = static_cast<std::size_t>(Kind::kBlock) + 1;

// The word for a kind in outputs: "function", "method", ...
std::string_view kindWord(Kind kind);

// All of them, in the order of the kinds.
std::vector<std::string_view> kindWords();

using KindSet = std::bitset<kKindCount>;

inline bool holds(const KindSet& kinds, Kind kind) { return kinds[static_cast<std::size_t>(kind)]; }

struct Item {
  Kind kind = Kind::kStatement;
  std::string name;            // empty if it has none
  std::int32_t record = -1;    // nodeID of its record; -1 for a definition on a line without one
  std::int32_t firstLine = 0;  // source lines from 1; LF, CR LF and CR end a line
  std::int32_t lastLine = 0;
  std::int32_t parent = -1;  // index of the innermost item that contains its lines
  std::int32_t depth = 0;    // how many items contain it
};

}  // namespace host::outline
