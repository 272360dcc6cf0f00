// The names that the outline target gives its input; the first byte picks one.
#pragma once

#include <array>
#include <string_view>

namespace fuzz {

inline constexpr std::array<std::string_view, 6> kOutlineNames{"a.js",   "a.ts", "a.tsx",
                                                               "a.html", "a.c",  "a.php"};

}  // namespace fuzz
