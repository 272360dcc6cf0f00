// "quorl-js index", "query" and "status": the outline of a code base in a file.
#pragma once

namespace host {

// Each runs the command with its arguments, the first of which is its own name, and returns the
// exit status. Throws Failure.
int runIndex(int argc, const char* const* argv);
int runQuery(int argc, const char* const* argv);
int runStatus(int argc, const char* const* argv);

}  // namespace host
