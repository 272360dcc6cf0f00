// The last pass of every run. It drops the nodes that say nothing, numbers the rest densely, reads
// each text once more to decide the label that a host sees, and writes the records.
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

// The record array of the tree under root; "[]" for a null root. Changes nodeID, parent, children,
// label, simpleFunctionName and tags of the nodes that get a record, and prints a line for each.
// The string is handed to functionName, which does not read it. Throws std::bad_alloc rather than
// return a part.
QUORL_API std::ostringstream StartGeneratingObjects(ObjectBranch* root, std::string className);

// Whether the node's text is one of eleven that get no record, such as "}" and ");".
QUORL_API bool ShouldSkipNode(const ObjectBranch& node);

// The display name of a function on a page: the first word and the first quoted text, or
// functionName if nothing is quoted.
QUORL_API std::string ExtractSimpleFunctionNameForPreview(const std::string& contents);

namespace records {

// Does the last work on a node before it is looked at. The nodes come in pre-order; depth is 0 for
// the root.
using Prepare = std::function<void(ObjectBranch& node, std::size_t depth)>;

// The record array of a tree of which nothing is known.
RecordText generate(ObjectBranch* root);

// The record array, behind what out holds. answers may know the texts of the run's nodes.
RecordText generate(ObjectBranch* root, const detect::AnswerTable& answers, const Prepare& prepare,
                    RecordText out = {});

}  // namespace records
