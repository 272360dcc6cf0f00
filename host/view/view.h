// "quorl-js view": a page that shows the structure of files in a browser.
#pragma once

namespace host {

// Runs the command with its arguments, the first of which is its own name, and returns the exit
// status. Throws Failure.
int runView(int argc, const char* const* argv);

}  // namespace host
