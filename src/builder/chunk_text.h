// The statement text under construction on the scanner route. The same questions come up again and
// again while it grows (a ";" with nothing to emit leaves it unchanged), so their answers are
// tracked as text is appended instead of recomputed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace builder {

class ChunkText {
 public:
  // Works on the caller's string, which may already hold text and keeps what a run leaves in it.
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

  // Whether the text before the last blank, or all of it if there is none, ends in a backslash.
  // required: the byte before the line feed does not decide whether a line continues.
  bool continues();

 private:
  // The text as the cleaning of a chunk sees it, which drops white space, one leading comma, and
  // the ")" at both ends. Every shape but the last cleans to nothing.
  enum class Shape : std::uint8_t {
    kBlank,        // white space
    kComma,        // a comma, optionally followed by blanks
    kCommaSpace,   // a comma and white space that does not reduce to a blank
    kClosing,      // a run of ")"
    kClosingGap,   // followed by white space
    kClosing2,     // a second run of ")": dropped from the back, the first one from the front
    kClosing2Gap,  // followed by white space
    kText,         // anything else; never changes again
  };
  static Shape shapeBehind(Shape shape, char byte);
  void learn(std::string_view bytes);

  std::string& text_;
  Shape shape_ = Shape::kBlank;
  std::size_t lastBlank_ = std::string::npos;  // position of the last blank before blanksSeen_
  std::size_t blanksSeen_ = 0;
};

// Returns the text of a chunk as it goes into a node: trimmed and reduced, without one leading
// comma and without the ")" at both ends. The result is a slice of text or of scratch.
std::string_view cleanedChunk(std::string_view text, std::string& scratch);

}  // namespace builder
