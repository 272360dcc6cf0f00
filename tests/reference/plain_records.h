// The record pass and the format of a record in their plain reading: a phase after the other over
// the whole list, lists that are searched from the front, and text put together piece by piece.
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
