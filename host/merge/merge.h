// "quorl-js merge": one ndjson text out of many.
#pragma once

namespace host {

// Runs the command with its arguments, the first of which is its own name; gives the exit status.
// Throws Failure, and nothing was written by then unless writing failed or a shard has changed.
int runMerge(int argc, const char* const* argv);

}  // namespace host
