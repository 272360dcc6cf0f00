// Reference implementation of the record pass and the record format: one phase after another over
// the whole list, linear searches, and text assembled piece by piece.
#pragma once

#include <string>

#include "tree/object_branch.h"

namespace reference {

std::string escapeString(const std::string& text);
bool shouldSkipNode(const ObjectBranch& node);
std::string previewName(const std::string& contents);

struct Records {
  std::string text;
  std::string printed;  // what the pass writes to standard output
};

// Changes the nodes as StartGeneratingObjects does.
Records generateRecords(ObjectBranch* root);

}  // namespace reference
