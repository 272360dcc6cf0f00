// The plain reading of the rules by which a leaf is split: part by part, each question asked of a
// copy of the text, and a recursive walk. Never part of the plug-in.
#pragma once

#include "tree/object_branch.h"

namespace reference {

void generateInlineFunctions(ObjectBranch* node);

}  // namespace reference
