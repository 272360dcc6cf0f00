// The scanner route: walks the bytes of the text, tracks strings, escapes, parentheses and line
// continuation, collects statement text in a chunk, and passes each finished chunk to the node
// emitter.
#pragma once

#include <string>
#include <string_view>

#include "tree/object_branch.h"

namespace builder {

// Scans the first 10,485,760 bytes of text. start is the node that takes the first statements; root
// takes error nodes and repaired scopes. chunk keeps the text of an unfinished statement.
void scanCharacters(std::string_view text, ObjectBranch* root, ObjectBranch* start,
                    bool isJavaScript, std::string& chunk);

}  // namespace builder
