// The scanner route: a walk over the bytes of the text that tracks strings, escapes, parentheses
// and line continuation, gathers statement text in a chunk, and hands each finished chunk to the
// actions of the node emitter.
#pragma once

#include <string>
#include <string_view>

#include "tree/object_branch.h"

namespace builder {

// Scans text, or its first 10,485,760 bytes, with start as the node for the first statements; root
// takes error nodes and repaired scopes. chunk keeps the text of a statement that nothing ended.
void scanCharacters(std::string_view text, ObjectBranch* root, ObjectBranch* start,
                    bool isJavaScript, std::string& chunk);

}  // namespace builder
