// Nodes are kept for the life of a process, which is the contract, and would fill the memory of one
// that makes a million runs.
#pragma once

namespace fuzz {

// While it lives, a node that is destroyed leaves the registry of nodes too, so that the registry
// holds just those that are alive: the tree alone would not do, since nodes are cut off from it
// without being destroyed. At its end it destroys them all and leaves the registry empty. The
// program's operator new and operator delete are replaced for it.
class RunNodes {
 public:
  RunNodes();
  RunNodes(const RunNodes&) = delete;
  RunNodes& operator=(const RunNodes&) = delete;
  ~RunNodes();
};

// The counts as they are before a run.
void resetCounts();

}  // namespace fuzz
