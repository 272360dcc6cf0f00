// Takes the text of each leaf apart. A leaf may hold a whole small program on one line; its parts,
// joined with single blanks, grow a small tree below it, cut at braces and semicolons. The leaf
// keeps its text whole.
#pragma once

#include "base/export.h"
#include "detect/answer_table.h"
#include "tree/object_branch.h"

// Splits each leaf of the tree under node. New nodes are not split again. The bool is not read.
QUORL_API void GenerateInlineFunctions(ObjectBranch* node, bool isRoot);

namespace refine {

// The same; notes in answers what was found out of each text.
void generateInlineFunctions(ObjectBranch* node, detect::AnswerTable& answers);

}  // namespace refine
