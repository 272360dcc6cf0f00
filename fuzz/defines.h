// The names of the file among which the first byte of the defines' target picks.
#pragma once

#include <array>
#include <string_view>

namespace fuzz {

inline constexpr std::array<std::string_view, 4> kDefinesNames{"a.js", "a.html", "a.css",
                                                               "it's.mjs"};

}  // namespace fuzz
