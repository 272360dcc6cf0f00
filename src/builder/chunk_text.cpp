#include "builder/chunk_text.h"

#include "text/byte_set.h"
#include "text/string_primitives.h"

namespace builder {

void ChunkText::clear() {
  text_.clear();
  shape_ = Shape::kBlank;
  lastBlank_ = std::string::npos;
  blanksSeen_ = 0;
}

bool ChunkText::continues() {
  const std::string_view unseen = std::string_view(text_).substr(blanksSeen_);
  const std::size_t hit = unseen.rfind(' ');
  if (hit != std::string_view::npos) lastBlank_ = blanksSeen_ + hit;
  blanksSeen_ = text_.size();
  const std::size_t end = lastBlank_ == std::string::npos ? text_.size() : lastBlank_;
  return end > 0 && text_[end - 1] == '\\';
}

void ChunkText::learn(std::string_view bytes) {
  for (const char byte : bytes) {
    if (shape_ == Shape::kText) return;
    shape_ = shapeBehind(shape_, byte);
  }
}

ChunkText::Shape ChunkText::shapeBehind(Shape shape, char byte) {
  const bool isSpace = text::kTrimmed(byte);
  switch (shape) {
    case Shape::kBlank:
      if (byte == ',') return Shape::kComma;
      if (byte == ')') return Shape::kClosing;
      break;
    case Shape::kComma:
      if (byte == ')') return Shape::kClosing;
      if (isSpace && !text::kCollapsed(byte)) return Shape::kCommaSpace;
      break;
    case Shape::kClosing:
      if (byte == ')') return shape;
      if (isSpace) return Shape::kClosingGap;
      break;
    case Shape::kCommaSpace:
    case Shape::kClosingGap:
    case Shape::kClosing2:
      if (byte == ')') return Shape::kClosing2;
      if (isSpace && shape == Shape::kClosing2) return Shape::kClosing2Gap;
      break;
    case Shape::kClosing2Gap:
    case Shape::kText:
      break;
  }
  return isSpace ? shape : Shape::kText;
}

std::string_view cleanedChunk(std::string_view text, std::string& scratch) {
  std::string_view cleaned = text::trimAndReduceView(text, scratch);
  if (cleaned.starts_with(", ")) {
    cleaned.remove_prefix(2);
  } else if (cleaned.starts_with(',')) {
    cleaned.remove_prefix(1);
  }
  while (cleaned.ends_with(')')) cleaned.remove_suffix(1);
  while (cleaned.starts_with(')')) cleaned.remove_prefix(1);
  return text::trimView(cleaned);  // already reduced
}

}  // namespace builder
