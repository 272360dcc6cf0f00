// Tag texts of the scope nodes that the scanner route makes by itself.
#pragma once

#include <string_view>

namespace builder {

inline constexpr std::string_view kGeneratedTag = "\n      \"auto-generated\"\n";
inline constexpr std::string_view kScopeWrapperTags =
    "\n      \"auto-generated\"\n      \"scope-wrapper\"\n";

}  // namespace builder
