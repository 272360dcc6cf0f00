// The scope nodes that the builder adds around the source's own nodes.
#pragma once

#include <string>
#include <string_view>

#include "tree/object_branch.h"

namespace builder {

inline constexpr std::string_view kGeneratedTag = "\n      \"auto-generated\"\n";
inline constexpr std::string_view kScopeWrapperTags =
    "\n      \"auto-generated\"\n      \"scope-wrapper\"\n";

// Appends a new node without a source line to parent's children and returns it.
ObjectBranch* addScope(ObjectBranch* parent, BranchType branchType, std::string_view label,
                       std::string contents, std::string_view tags, const std::string& path);

}  // namespace builder
