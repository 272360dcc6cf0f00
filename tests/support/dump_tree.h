// A short text for a tree, so that a test of a parser or a pass is one line.
#pragma once

#include <string>

#include "tree/object_branch.h"

namespace support {

// LABEL"CONTENTS"@LINE and, in parentheses, the children the same way, with blanks between them:
// filepath"a.js"@0(namespace"namespace global"@0(class"A"@0)). Line feeds in contents read \n.
std::string dumpTree(const ObjectBranch* node);

// The same for the children of node alone.
std::string dumpChildren(const ObjectBranch* node);

}  // namespace support
