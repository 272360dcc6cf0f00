// Splits the text of each leaf, which may hold a whole small program on one line. Its parts, joined
// with single blanks and cut at braces and semicolons, become a small tree below the leaf. The leaf
// keeps its whole text.
#pragma once

#include "base/export.h"
#include "detect/answer_table.h"
#include "tree/object_branch.h"

// Splits each leaf of the tree under node. New nodes are not split again. isRoot is ignored.
QUORL_API void GenerateInlineFunctions(ObjectBranch* node, bool isRoot);

namespace refine {

// The same; notes in answers what it learned about each text.
void generateInlineFunctions(ObjectBranch* node, detect::AnswerTable& answers);

}  // namespace refine
