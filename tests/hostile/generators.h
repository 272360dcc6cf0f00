// Texts that are meant to hurt: each repeats something that a plain reading of the rules would look
// at again and again. Every one has to cost time in proportion to its size. The list feeds whatever
// wants such texts: tests, counts of work, benchmarks, seeds.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace hostile {

struct Generator {
  const char* name;                            // letters, digits and "_", unique
  const char* extension;                       // with the dot; decides how the text is read
  std::string (*generate)(std::size_t bytes);  // a text within kSizeTolerance of that size
};

inline constexpr std::size_t kSizeTolerance = 64;

// Pages first, then other text, then scripts.
std::span<const Generator> generators();

}  // namespace hostile
