// Reference implementation of the scanner route: byte by byte, with one flag per piece of state,
// and the chunk read again for each question. Slow on purpose, and never part of the plug-in.
#pragma once

#include <string>

#include "tree/object_branch.h"

namespace reference {

// CleanupChunk, erasing one byte at a time.
std::string cleanedChunk(std::string text);

// Whether a line feed after the chunk does not end the statement.
bool continues(const std::string& chunk);

// Scans text with start as the node for the first statements, as builder::scanCharacters does, and
// returns what a run prints.
std::string scanCharacters(const std::string& text, ObjectBranch* root, ObjectBranch* start,
                           bool isJavaScript, std::string& chunk);

}  // namespace reference
