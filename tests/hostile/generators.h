// Hostile texts: each repeats a construct that a naive implementation would rescan again and again.
// Each must be parsed in time linear in its size. The list is used by tests, work counters,
// benchmarks and seeds.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace hostile {

struct Generator {
  const char* name;                            // letters, digits and "_", unique
  const char* extension;                       // including the dot; decides how the text is parsed
  std::string (*generate)(std::size_t bytes);  // a text within kSizeTolerance of that size
};

inline constexpr std::size_t kSizeTolerance = 64;

// Pages first, then other text, then scripts.
std::span<const Generator> generators();

}  // namespace hostile
