// The lines of a file, read in blocks, with the places where they stand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace host {

class LineReader {
 public:
  // Opens a regular file; throws Failure, as do all reads that fail.
  explicit LineReader(std::string path);
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  ~LineReader();

  // Goes on from this byte of the file and takes no more than so many: the rest is as if not there.
  void seek(std::uint64_t offset, std::uint64_t bytes);

  // Takes the next line, without its line feed, which it must have. False at the end, or where the
  // rest has no line feed. The view is valid until the next call.
  bool next(std::string_view& line);

  // The byte behind the line that was taken last.
  std::uint64_t offset() const { return offset_; }

  // Whether all bytes were taken.
  bool isAtEnd() const { return begin_ == buffer_.size(); }

  const std::string& path() const { return path_; }

 private:
  bool readMore();

  std::string path_;
  int descriptor_;
  std::string buffer_;  // of which the bytes from begin_ on are still to be taken
  std::size_t begin_ = 0;
  std::uint64_t offset_ = 0;                                       // of begin_, in the file
  std::uint64_t end_ = std::numeric_limits<std::uint64_t>::max();  // no byte from here on is read
};

}  // namespace host
