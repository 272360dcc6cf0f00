// What a worker sends for the index: a file with the items of its outline, in binary.
//
// The frame is a format of output like the others, so workers make it and the pool carries it. The
// worker runs foreign code, so its reader takes nothing for granted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/format.h"
#include "index/rows.h"

namespace host::index {

// Not among those that a user can choose.
extern const host::Format kFrameFormat;

class ItemFrameReader {
 public:
  enum class State { kItem, kEnd, kMalformed };

  // Reads out of the bytes, which have to outlive the reader and its rows.
  explicit ItemFrameReader(std::string_view bytes) : rest_(bytes) {}

  // Comes first. False for what is no frame.
  bool takeFile(FileRow& file);

  // The next item, with views of the frame.
  State takeItem(ItemRow& item);

 private:
  bool takeNumber(std::uint64_t limit, std::uint64_t& number);
  bool takeText(std::string_view& text);
  bool takeOptional(std::optional<std::string_view>& text, bool& isPlain);
  bool takeOptional(std::optional<std::string>& text);
  bool takeLabel(ItemRow& item);
  bool takeWholeItem(ItemRow& item);

  std::string_view rest_;
  std::uint64_t count_ = 0;  // of the items
  std::uint64_t taken_ = 0;
  std::vector<std::string_view> labels_;
};

// Whether the frame is whole, to its last item.
bool isSoundFrame(std::string_view frame);

// What stands for a file whose frame is not.
FileRow rowOfBadFrame(const std::string& path);

}  // namespace host::index
