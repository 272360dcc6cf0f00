// Nodes stay allocated for the life of a process (that is the contract) and would exhaust the
// memory of a process that makes a million runs.
#pragma once

namespace fuzz {

// While alive, removes each destroyed node from the registry, so that the registry holds exactly
// the live nodes; the tree alone would not do, since nodes are cut off from it without being
// destroyed. Its destructor destroys them all and empties the registry. Linking it replaces the
// program's operator new and operator delete.
class RunNodes {
 public:
  RunNodes();
  RunNodes(const RunNodes&) = delete;
  RunNodes& operator=(const RunNodes&) = delete;
  ~RunNodes();
};

// Resets the counts to their values before a run.
void resetCounts();

}  // namespace fuzz
