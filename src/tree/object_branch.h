// The parse tree: its record type, and how nodes are allocated, numbered, flattened into a list and
// destroyed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/export.h"

enum BranchType : std::uint32_t {
  kBranchFile = 0,
  kBranchInclude = 1,
  kBranchContainer = 2,
  kBranchLine = 3,
  kBranchDefine = 4,
  kBranchLogic = 5,
  kBranchFunction = 6,
  kBranchClass = 7,
  kBranchNamespace = 8,
  kBranchLoop = 10,  // there is no code 9
  kBranchFilePath = 11,
  kBranchClassVar = 12,
  kBranchNone = 13,
  kBranchAppendedDefine = 14,
  kBranchHtmlElement = 15,
  kBranchLink = 16,
  kBranchSource = 17,
  kBranchError = 18,
};

// A node. It owns nothing: children are raw pointers, and a run's tree stays allocated for the life
// of the process.
struct ObjectBranch {
  ObjectBranch* parent = nullptr;          // null for the root only
  std::uint32_t branchType = kBranchNone;  // a BranchType code
  std::int32_t lineNumber = 0;             // 0 if the node has no source line
  std::string filePath;                    // the path as the host gave it
  std::string contents;                    // source text or a generated title
  std::string branchTypeAsString;  // the label that a record carries; may differ from the code
  std::string simpleFunctionName;  // short display name
  std::int32_t functionID = -1;
  std::vector<ObjectBranch*> children;  // in order of discovery
  std::string tags;                     // ready-made tag lines, with their quotes and line ends
  std::int32_t nodeID = -1;             // unique within a run
};

// Every node that allocateObjectBranch returned, in every run. Nothing reads, prunes or clears it.
extern QUORL_API std::set<ObjectBranch*> allAllocatedNodes;
// The next nodeID.
extern QUORL_API std::int32_t currentIndex;
// Counts allocations; nothing reads it.
extern QUORL_API std::int32_t objectCount;

// Returns a new node with the defaults above, registered and counted but not numbered; never null.
// Throws std::runtime_error "Memory allocation failed for ObjectBranch".
QUORL_API ObjectBranch* allocateObjectBranch();

// Returns the word for the node's code; "function" for codes without a word. Records carry the
// field of the same name, not this word.
QUORL_API std::string branchTypeAsString(ObjectBranch node);

// Returns size + 1 zero bytes from calloc, two for size 0; the caller frees them. Throws
// std::runtime_error "String allocation failed".
QUORL_API char* safeStringAlloc(std::size_t size);

// Appends the tree under node to list in pre-order. A node whose nodeID the list already holds is
// not added, but its children are visited. Null arguments do nothing.
QUORL_API void AddObjectToVector(ObjectBranch* node, std::vector<ObjectBranch*>* list);

// Destroys the tree under node, each node once. required: a node whose nodeID is 0 only loses its
// child list, and nothing at or below it is destroyed. Nodes in visited are skipped.
QUORL_API void DeleteNodeTree(ObjectBranch* node, std::set<ObjectBranch*>& visited);

// Empties the node's child list; the children stay alive.
QUORL_API void FreeChildren(ObjectBranch* node);

// Calls DeleteNodeTree on the root and prints a line on standard output before and after. A run's
// root has the nodeID 0, so its descendants stay allocated: that is the contract.
QUORL_API void CleanupTree(ObjectBranch* root);

namespace tree {

// Returns a node from allocateObjectBranch, numbered from currentIndex.
ObjectBranch* makeNode();

// Returns a node from makeNode with the common fields set. parent must not be null; the node is not
// yet among its children.
ObjectBranch* makeNode(ObjectBranch* parent, std::uint32_t branchType, std::string_view label,
                       std::int32_t lineNumber, std::string_view filePath);

}  // namespace tree
