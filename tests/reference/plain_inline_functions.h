// Reference implementation of the splitting of a leaf: part by part, asking each question of a copy
// of the text, with a recursive walk. Never part of the plug-in.
#pragma once

#include "tree/object_branch.h"

namespace reference {

void generateInlineFunctions(ObjectBranch* node);

}  // namespace reference
