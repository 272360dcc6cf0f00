// The plain reading of the scanner route's rules: one byte after the other, a flag for each thing
// that is known, and the chunk read anew whenever something is asked about it. Slow on purpose,
// and never part of the plug-in.
#pragma once

#include <string>

#include "tree/object_branch.h"

namespace reference {

// CleanupChunk by erasing one byte at a time.
std::string cleanedChunk(std::string text);

// Whether a line feed behind the chunk does not end the statement.
bool continues(const std::string& chunk);

// Scans text with start as the node for the first statements, as builder::scanCharacters does, and
// returns what a run prints.
std::string scanCharacters(const std::string& text, ObjectBranch* root, ObjectBranch* start,
                           bool isJavaScript, std::string& chunk);

}  // namespace reference
