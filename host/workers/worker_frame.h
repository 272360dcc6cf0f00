// What a worker sends to its parent: frames, each a header of fixed size, a message and a text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "records/file_report.h"

namespace host {

enum class FrameKind : std::uint8_t {
  kReady,     // the module is loaded
  kUnusable,  // it is not, or does not do what it is asked for: message says why
  kVersion,   // text is the module's
  kWriting,   // from now on bytes of a file's text go to the output
  kThrew,     // the module threw an exception, and the worker ends: message is its text, if any
  kFile,      // what became of one file: text is for the output, message for a person
};

struct Frame {
  FrameKind kind = FrameKind::kReady;
  FileStatus status = FileStatus::kAnswered;
  bool hasAnswer = false;        // the module gave one, though it may be empty
  bool isLast = false;           // the worker takes no further file
  bool diagnosticsLost = false;  // the module's lines could not be written
  bool hasChanged = false;       // the file, while it was read
  bool isWritten = false;        // the worker has written the text itself, or tried to
  bool isOtherText = false;      // what has omitted
  int outputError = 0;           // the number of the error that kept it from that
  std::uint64_t index = 0;       // of the file among the inputs
  std::string message;
  std::string warnings;  // a line on what the module wrote to standard error; see CapturedErrors
  std::string omitted;   // a line on what the answer leaves out, or empty
  std::string text;
  std::uint64_t sharedBytes = 0;  // of a text that is in SharedTexts instead
};

// Writes the frame with the text in place of its own, which spares those who have a view a copy.
// Gives 0, or the error number of the write that failed.
int writeFrame(int descriptor, const Frame& frame, std::string_view text);

// Puts together what comes out of a pipe in pieces.
class FrameReader {
 public:
  enum class State { kOpen, kWhole, kEnded, kMalformed };

  // Makes one read, which waits if there is nothing. Gives kOpen, or kEnded when the other end is
  // closed.
  State read(int descriptor);

  // Takes the next frame. Gives kWhole, kOpen if not all of it is there, or kMalformed for
  // bytes that are not a frame.
  State next(Frame& frame);

  std::size_t heldBytes() const { return end_ - taken_; }
  std::size_t missingBytes() const;  // of the frame that has begun, which next found sound

 private:
  std::string_view held() const { return std::string_view(bytes_).substr(taken_, heldBytes()); }
  std::string takeText(std::size_t begin, std::size_t bytes);

  std::string bytes_;      // a buffer
  std::size_t taken_ = 0;  // of it, as frames
  std::size_t end_ = 0;    // of what has come
};

}  // namespace host
