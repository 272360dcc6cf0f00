// Prints a tree as one short line, so that a test of a parser or a pass fits on one line.
#pragma once

#include <string>

#include "tree/object_branch.h"

namespace support {

// Returns LABEL"CONTENTS"@LINE followed by the children in parentheses, in the same form, separated
// by blanks: filepath"a.js"@0(namespace"namespace global"@0(class"A"@0)). Line feeds in contents
// are printed as \n.
std::string dumpTree(const ObjectBranch* node);

// The same for the children of node only.
std::string dumpChildren(const ObjectBranch* node);

}  // namespace support
