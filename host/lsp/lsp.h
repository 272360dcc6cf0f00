// The command lsp.
#pragma once

namespace host {

// Serves editors over standard input and output. Takes the arguments from the command's name on,
// and returns the exit status. Throws Failure.
int runLsp(int argc, const char* const* argv);

}  // namespace host
