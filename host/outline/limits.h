// What the module reads, and a text that it drops.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace host::outline {

// That many lines of a script, counted in its cleaned text, and none that is longer or holds more
// braces of a kind.
inline constexpr std::int32_t kMaxScriptLines = 100'000;
inline constexpr std::size_t kMaxLineBytes = 10'000;
inline constexpr std::int64_t kMaxBraces = 100;

inline constexpr std::size_t kMaxPageBytes = 52'428'800;
inline constexpr std::size_t kMaxOtherBytes = 10'485'760;

// What is behind it is dropped, up to the next semicolon.
inline constexpr std::string_view kMarker = "TTTTT";

}  // namespace host::outline
