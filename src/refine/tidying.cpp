#include "refine/tidying.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include "refine/qualified_names.h"
#include "text/string_primitives.h"
#include "tree/walk.h"

namespace {

// Fewer texts than the record pass skips, and not to be merged with it: a node with one of the
// other texts keeps its children in the output.
bool isBraceOnly(const ObjectBranch& node) {
  // None of these texts contains white space, so trimming finds the same ones as reducing would.
  const std::string_view text = text::trimView(node.contents);
  return text.empty() || text == "}" || text == "{" || text == "};";
}

void removeBraceOnlyChildren(ObjectBranch& node) {
  constexpr std::size_t kAhead = 8;  // how many children ahead to prefetch
  std::vector<ObjectBranch*>& children = node.children;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < children.size(); ++i) {
    if (i + kAhead < children.size()) tree::prefetch(children[i + kAhead]);
    ObjectBranch* const child = children[i];
    if (child == nullptr) continue;
    if (isBraceOnly(*child)) {
      delete child;  // its subtree is no longer reachable
    } else {
      children[kept++] = child;
    }
  }
  children.resize(kept);
}

}  // namespace

void CleanUpBranchTypes(ObjectBranch* node) { static_cast<void>(node); }

void RemoveBraceOnlyNodes(ObjectBranch* node) {
  tree::walkPreOrder(node, [](ObjectBranch* visited) {
    removeBraceOnlyChildren(*visited);
    return tree::Descend::kYes;
  });
}

void AppendAllDefines(ObjectBranch* root, std::vector<std::string> defines) {
  refine::appendAllDefines(root, defines);
}

namespace refine {

void TreeTidier::operator()(ObjectBranch& node, std::size_t depth) {
  if (removesBraceOnlyNodes_) removeBraceOnlyChildren(node);
  if (depth == 0 || depth > classDepth_ || &node == definesNode_) return;
  classDepth_ = markClass(node) ? depth : kNoClass;
}

ObjectBranch* appendAllDefines(ObjectBranch* root, const std::vector<std::string>& defines) {
  if (root == nullptr) return nullptr;
  ObjectBranch* node = nullptr;
  try {
    node = tree::makeNode();
  } catch (const std::exception&) {
    return nullptr;  // the run goes on without a defines node
  }
  node->parent = root;
  node->branchType = kBranchAppendedDefine;
  node->branchTypeAsString = "preprocessor";
  node->filePath = root->filePath;
  std::string lines;
  for (const std::string& define : defines) lines.append(define).push_back('\n');
  node->contents = text::trimView(lines);
  root->children.push_back(node);
  return node;
}

}  // namespace refine
