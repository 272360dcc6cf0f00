// The last pass of every run: drops nodes without meaning, numbers the rest densely, reads each
// text once more to set the label that a host sees, and writes the records.
#pragma once

#include <cstddef>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>

#include "base/export.h"
#include "detect/answer_table.h"
#include "records/record_text.h"
#include "tree/object_branch.h"

// Returns the record array of the tree under root, "[]" if root is null. Changes nodeID, parent,
// children, label, simpleFunctionName and tags of the nodes that get a record, and prints a line
// for each. className is passed to functionName, which ignores it.
QUORL_API std::ostringstream StartGeneratingObjects(ObjectBranch* root, std::string className);

// Returns whether the node's text is one of eleven that get no record, such as "}" and ");".
QUORL_API bool ShouldSkipNode(const ObjectBranch& node);

// Returns the display name of a function on a page: the first word and the first quoted text, or
// functionName if nothing is quoted.
QUORL_API std::string ExtractSimpleFunctionNameForPreview(const std::string& contents);

namespace records {

// Finishes a node before it gets its record. The nodes come in pre-order; the root has depth 0.
using Prepare = std::function<void(ObjectBranch& node, std::size_t depth)>;

// Returns the record array of a tree without known answers.
RecordText generate(ObjectBranch* root);

// Appends the record array to out. answers may hold what is known of the nodes' texts.
RecordText generate(ObjectBranch* root, const detect::AnswerTable& answers, const Prepare& prepare,
                    RecordText out = {});

}  // namespace records
