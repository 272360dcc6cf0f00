// The standard output of a run.
#pragma once

#include <string_view>

namespace host {

class Output {
 public:
  // Throws Failure when standard output is closed.
  Output();

  // Writes all of the text, or throws Failure: a full disk, a reader that has gone.
  void write(std::string_view text);

  // Throws Failure for the error number of a write in another process, unless it is 0.
  void check(int errorNumber) const;

  // Throws Failure when the reader has gone, which goes unnoticed while nothing is written.
  void checkReader() const;

  // Ends the output, see closeWritten. Throws Failure.
  void close();
};

}  // namespace host
