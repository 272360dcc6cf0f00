// The exceptions that end a run.
#pragma once

#include <stdexcept>
#include <string>

namespace host {

// Ends the run with exit status 2; what() is the one-line message for the user.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The reader of the output has gone. Ends the run as SIGPIPE would, without a message.
struct BrokenPipe : Failure {
  BrokenPipe() : Failure("broken pipe") {}
};

// A Failure with the system's reason: "SUBJECT: No space left on device". An empty subject is a
// file name and is shown as ''.
Failure systemFailure(const std::string& subject, int errorNumber);

}  // namespace host
