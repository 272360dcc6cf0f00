#include "builder/scope_wrappers.h"

#include <utility>

namespace builder {

ObjectBranch* addScope(ObjectBranch* parent, BranchType branchType, std::string_view label,
                       std::string contents, std::string_view tags, const std::string& path) {
  ObjectBranch* const scope = tree::makeNode(parent, branchType, label, 0, path);
  scope->contents = std::move(contents);
  scope->tags = tags;
  parent->children.push_back(scope);
  return scope;
}

}  // namespace builder
