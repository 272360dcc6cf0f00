// Where the program's bytes go. Answers share the process with a module that writes to standard
// output itself, so the two are kept apart here.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace host {

// Ends the run with exit status 2; what() is the one line that the user sees.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A Failure that gives the system's reason: "SUBJECT: No space left on device".
Failure systemFailure(const std::string& subject, int errorNumber);

// Writes all of the text; gives 0, or the error number of the write that failed.
int writeAll(int descriptor, std::string_view text);

// Writes one line to standard error: "quorl-js: ", the message and a line feed. Control bytes of
// the message become \xNN, so that it is one line whatever a file is called.
void complain(std::string_view message);

// The standard output of the run. While it lives, file descriptor 1 leads to the diagnostics and
// the answers go through a descriptor that nobody else knows: no byte of the module, whenever and
// however it writes, gets between them.
class Output {
 public:
  // diagnostics: "none", "stderr", or the file to overwrite. Throws Failure when standard output
  // is closed or the diagnostics cannot be opened.
  explicit Output(std::string_view diagnostics);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  // Writes all of the text, or throws Failure: a full disk, a reader that has gone.
  void write(std::string_view text);

  // Hands over what C's stdout still holds. Throws Failure when diagnostics were lost.
  void checkDiagnostics();

  // Ends the answers. Throws Failure for what a file system only tells now.
  void close();

 private:
  std::string diagnostics_;
  int answers_;
};

}  // namespace host
