// The lines of a source file. LF, CR LF and CR each end one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace host::outline {

class SourceLines {
 public:
  explicit SourceLines(std::string_view source);

  std::int32_t count() const { return static_cast<std::int32_t>(starts_.size()); }

  // The line without its end; lines count from 1.
  std::string_view text(std::int32_t line) const;

  // Where the line begins, in bytes.
  std::size_t begin(std::int32_t line) const { return starts_[static_cast<std::size_t>(line) - 1]; }

  // Where the block ends that the line is the head of, by indentation alone: at the first later
  // line that begins with a closing bracket at the head's indentation, the head itself if there is
  // none or a line indented less comes first. A closer that opens again goes on. For sources whose
  // brackets cannot be trusted; the first question takes a pass over the text.
  std::int32_t blockEnd(std::int32_t line);

 private:
  void findBlockEnds();

  std::string_view source_;
  std::vector<std::size_t> starts_;
  std::vector<std::int32_t> blockEnds_;
};

}  // namespace host::outline
