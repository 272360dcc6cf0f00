// The base protocol's framing: a header of lines, a blank line, and as many bytes as the header's
// Content-Length says.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host::lsp {

// Takes frames out of a stream that comes in pieces. A frame that cannot be read costs itself
// alone: what follows is searched for the next Content-Length.
class MessageReader {
 public:
  enum class Result { kNone, kMessage, kBroken };

  void append(std::string_view bytes) { bytes_.append(bytes); }

  // The next frame. kMessage sets body, which is valid until append; kNone if it is not all there;
  // kBroken for a header without a usable length, which is dropped.
  Result next(std::string_view& body);

  // Forgets the frames that were taken.
  void compact();

 private:
  Result dropHeader(std::size_t end);

  std::string bytes_;
  std::size_t taken_ = 0;
};

// What stands before a message of so many bytes in its frame.
std::string frameHeader(std::size_t bodyBytes);

// The message as a frame.
std::string framed(std::string_view body);

}  // namespace host::lsp
