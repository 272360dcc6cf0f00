// Where a run writes: standard output, or a file that takes its place.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "run/temporary_file.h"

namespace host {

// From begin to close, descriptor 1 is the file, as after a shell's ">": workers write there,
// too. A regular file, or one that is not there yet, is replaced by close and not touched before;
// any other file, such as a FIFO, is written directly.
class Output {
 public:
  // Standard output without a file. Throws Failure when it is closed, or when the file's directory
  // is none.
  explicit Output(std::optional<std::string> file = std::nullopt);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();  // without close, nothing is left of a file that was to be replaced

  // Opens the file. Comes before all that follows, once it is clear that there will be an output.
  void begin();

  // Writes all of the text. Throws Failure, for a full disk, or BrokenPipe.
  void write(std::string_view text);

  // Throws for the error number of a write in another process, unless it is 0.
  void check(int errorNumber) const;

  // Throws BrokenPipe when the reader has gone, which goes unnoticed while nothing is written.
  void checkReader() const;

  // Ends the output, see closeWritten, and replaces the file. Throws Failure.
  void close();

 private:
  void openTemporaryFile();
  void leadTo(int descriptor);

  std::string subject_ = "standard output";
  std::optional<std::string> file_;
  std::string name_;    // of the file in its directory, which is to be replaced; or empty
  int directory_ = -1;  // of that file
  mode_t mode_ = 0;     // of what is to be replaced, or 0
  std::optional<TemporaryFile> temporary_;  // until it has the file's name
};

}  // namespace host
