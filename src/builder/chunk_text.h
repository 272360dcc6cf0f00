// The statement text under construction on the scanner route. Some of it is asked about again and
// again while it grows (a ";" that finds nothing to emit leaves it as it is), so what the questions
// need is kept beside the text instead of read from it anew.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace builder {

class ChunkText {
 public:
  // Works on the text given, which may hold something already and keeps what a run leaves in it.
  explicit ChunkText(std::string& text) : text_(text) { learn(text); }

  const std::string& text() const { return text_; }

  void append(std::string_view bytes) {
    text_.append(bytes);
    learn(bytes);
  }
  void clear();

  // Whether trimming leaves nothing.
  bool isBlank() const { return shape_ == Shape::kBlank; }

  // Whether cleanedChunk of the text is empty.
  bool cleansToNothing() const { return shape_ != Shape::kText; }

  // Whether the text before the last blank, or all of it without one, ends in a backslash.
  // required: so it is not the end of the line that decides whether a line continues.
  bool continues();

 private:
  // What the text looks like to the cleaning of a chunk, which drops white space, one leading
  // comma, and the ")" at both ends: all but the last of these leave nothing.
  enum class Shape : std::uint8_t {
    kBlank,        // white space
    kComma,        // a comma, and perhaps blanks behind it
    kCommaSpace,   // a comma and white space that does not reduce to a blank
    kClosing,      // a run of ")"
    kClosingGap,   // white space behind it
    kClosing2,     // a second run of ")": it goes from the back and the first from the front
    kClosing2Gap,  // white space behind that
    kText,         // anything else, and from there on whatever follows
  };
  static Shape shapeBehind(Shape shape, char byte);
  void learn(std::string_view bytes);

  std::string& text_;
  Shape shape_ = Shape::kBlank;
  std::size_t lastBlank_ = std::string::npos;  // the last blank before blanksSeen_
  std::size_t blanksSeen_ = 0;
};

// The text of a chunk as it goes into a node: trimmed and reduced, without one leading comma, and
// without the ")" at both ends. A slice of text or of scratch.
std::string_view cleanedChunk(std::string_view text, std::string& scratch);

}  // namespace builder
