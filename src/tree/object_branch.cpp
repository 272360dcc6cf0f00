#include "tree/object_branch.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "base/fresh_memory.h"
#include "base/stream_writer.h"
#include "tree/id_table.h"
#include "tree/walk.h"

std::set<ObjectBranch*> allAllocatedNodes;
std::int32_t currentIndex = 0;
std::int32_t objectCount = 1;

namespace {

// Nodes live as long as the process, and so does what reaches them: the registry's content moves
// here instead of being taken apart at exit, which would cost more than many a run. The attribute
// keeps the store, which nothing reads.
[[gnu::used]] std::set<ObjectBranch*>* nodesKept = nullptr;
const struct RegistryKeeper {
  ~RegistryKeeper() { nodesKept = new (std::nothrow) std::set(std::move(allAllocatedNodes)); }
} kRegistryKeeper;

// Codes 9, 13, 14 and 18 have no word of their own.
constexpr std::string_view kFallbackWord = "function";
constexpr std::array<std::string_view, kBranchError + 1> kBranchWords = {
    "filepath",    "include",     "container",   "line",   "define",     "logic",    "function",
    "class",       "namespace",   kFallbackWord, "loop",   "filepath",   "classvar", kFallbackWord,
    kFallbackWord, "htmlelement", "link",        "source", kFallbackWord};

}  // namespace

ObjectBranch* allocateObjectBranch() {
  static_assert(std::is_nothrow_default_constructible_v<ObjectBranch>);
  std::unique_ptr<ObjectBranch> node(new (std::nothrow) ObjectBranch);
  if (node == nullptr) throw std::runtime_error("Memory allocation failed for ObjectBranch");
  base::fetchHeapBehind(node.get());
  // Addresses mostly grow, so the end is the best hint.
  allAllocatedNodes.insert(allAllocatedNodes.end(), node.get());
  ++objectCount;
  return node.release();
}

std::string branchTypeAsString(ObjectBranch node) {
  return std::string(node.branchType < kBranchWords.size() ? kBranchWords[node.branchType]
                                                           : kFallbackWord);
}

char* safeStringAlloc(std::size_t size) {
  const std::size_t bytes = size == 0 ? 2 : size + 1;
  // size + 1 of the largest size is 0, a request that would otherwise succeed.
  void* memory = bytes == 0 ? nullptr : std::calloc(bytes, 1);
  if (memory == nullptr) throw std::runtime_error("String allocation failed");
  return static_cast<char*>(memory);
}

void AddObjectToVector(ObjectBranch* node, std::vector<ObjectBranch*>* list) {
  if (node == nullptr || list == nullptr) return;
  tree::IdTable listed;
  for (const ObjectBranch* entry : *list) {
    if (entry != nullptr) listed.insertNew(entry->nodeID, 0);
  }
  tree::walkPreOrder(node, [list, &listed](ObjectBranch* visited) {
    if (listed.insertNew(visited->nodeID, 0)) list->push_back(visited);
    return tree::Descend::kYes;
  });
}

void DeleteNodeTree(ObjectBranch* node, std::set<ObjectBranch*>& visited) {
  struct Frame {
    ObjectBranch* node;
    std::vector<ObjectBranch*> children;  // taken from the node, which is destroyed after them
    std::size_t next = 0;
  };
  std::vector<Frame> open;
  const auto enter = [&](ObjectBranch* entered) {
    if (entered == nullptr || !visited.insert(entered).second) return;
    if (entered->nodeID == 0) {
      // required: the root of a run and all below it stay allocated.
      entered->children.clear();
      return;
    }
    open.push_back({entered, std::exchange(entered->children, {})});
  };
  enter(node);
  while (!open.empty()) {
    Frame& frame = open.back();
    if (frame.next < frame.children.size()) {
      enter(frame.children[frame.next++]);
    } else {
      ObjectBranch* done = frame.node;
      open.pop_back();
      delete done;
    }
  }
}

void FreeChildren(ObjectBranch* node) {
  if (node != nullptr) node->children.clear();
}

void CleanupTree(ObjectBranch* root) {
  base::StreamWriter out(stdout);
  out << "Cleaning up parse tree...\n";
  out.flush();
  std::set<ObjectBranch*> visited;
  DeleteNodeTree(root, visited);
  out << "Cleanup complete\n";
  out.flush();
}

namespace tree {

ObjectBranch* makeNode() {
  ObjectBranch* node = allocateObjectBranch();
  node->nodeID = currentIndex++;
  node->functionID = -1;
  return node;
}

ObjectBranch* makeNode(ObjectBranch* parent, std::uint32_t branchType, std::string_view label,
                       std::int32_t lineNumber, std::string_view filePath) {
  ObjectBranch* node = makeNode();
  node->parent = parent;
  node->branchType = branchType;
  node->branchTypeAsString = label;
  node->lineNumber = lineNumber;
  node->filePath = filePath;
  return node;
}

}  // namespace tree
