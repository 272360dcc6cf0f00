// The data that the module exports, for hosts in C++. All of it is run state, not an interface to
// steer the plug-in by. chunk, currentIndex, objectCount and allAllocatedNodes come from the
// headers of the components that own them.
#pragma once

#include <string>
#include <vector>

#include "base/export.h"
#include "builder/tree_builder.h"
#include "tree/object_branch.h"

extern "C" {
// Cleared by each run and never filled.
extern QUORL_API std::vector<ObjectBranch*> AllBranches;
}

// A sample path; read by nothing.
extern QUORL_API std::string startPath;

// Frees a buffer slot that nothing ever fills.
QUORL_API void cleanup();
