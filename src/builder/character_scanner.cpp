// Outside strings these bytes are special; all others are appended to the chunk:
//
//   ' " `   open a string, which is appended up to and including its closing quote
//   \n      ends a statement, unless the line continues
//   ;       ends a statement outside parentheses
//   { }     open and close a block
//   ( )     are counted
//   [ ]     at the start of a statement, enclose text that is dropped (except in a script)
//
// Braces, semicolons and line feeds in a string have no effect, and its line feeds are not counted.
#include "builder/character_scanner.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "builder/chunk_text.h"
#include "builder/node_emission.h"
#include "text/byte_set.h"

namespace builder {
namespace {

constexpr std::size_t kMaxScannedBytes = 10'485'760;  // the rest is ignored

constexpr text::ByteSet kStops{"'\"`\n;{}()[]"};

class CharacterScanner {
 public:
  CharacterScanner(std::string_view text, ObjectBranch* root, ObjectBranch* start,
                   bool isJavaScript, std::string& chunk)
      : text_(text.substr(0, kMaxScannedBytes)),
        isJavaScript_(isJavaScript),
        chunk_(chunk),
        emitter_(root, start, isJavaScript, chunk_) {}

  void run();

 private:
  Scan takeStop(char byte);
  void endLine();

  // Inside a skipped bracket group only strings are appended to the chunk.
  void appendCode(std::string_view bytes) {
    if (!bracketSkip_) chunk_.append(bytes);
  }

  // Offset just past the string that opens at from, or the end of the text if it is not closed. A
  // backslash escapes the next byte.
  std::size_t skipString(std::size_t from) const;

  const std::string_view text_;
  const bool isJavaScript_;
  ChunkText chunk_;
  NodeEmitter emitter_;
  std::size_t position_ = 0;
  std::int32_t lineCounter_ = 1;
  std::int32_t parenDepth_ = 0;  // never below 0
  bool bracketSkip_ = false;
};

void CharacterScanner::run() {
  while (position_ < text_.size()) {
    const std::size_t stop = text::findMember(text_, kStops, position_);
    appendCode(text_.substr(position_, stop - position_));
    position_ = stop;
    if (stop < text_.size() && takeStop(text_[stop]) == Scan::kEnds) return;
  }
}

Scan CharacterScanner::takeStop(char byte) {
  const std::size_t here = position_++;
  switch (byte) {
    case '\'':
    case '"':
    case '`':
      position_ = skipString(here);
      chunk_.append(text_.substr(here, position_ - here));
      return Scan::kGoesOn;
    case '\n':
      endLine();
      return Scan::kGoesOn;
    case '}':
      parenDepth_ = 0;
      return emitter_.closeBraceAction(lineCounter_);
    case '{':
      return emitter_.openBraceAction(lineCounter_);
    case ';':
      if (parenDepth_ > 0) break;
      emitter_.statementAction(lineCounter_);
      return Scan::kGoesOn;
    case '(':
      ++parenDepth_;
      break;
    case ')':
      parenDepth_ = std::max(parenDepth_ - 1, 0);
      break;
    case '[':
      if (isJavaScript_ || bracketSkip_ || parenDepth_ > 0 || !chunk_.isBlank()) break;
      bracketSkip_ = true;
      return Scan::kGoesOn;
    default:  // a "]"
      if (!bracketSkip_) break;
      bracketSkip_ = false;
      return Scan::kGoesOn;
  }
  appendCode(text_.substr(here, 1));
  return Scan::kGoesOn;
}

void CharacterScanner::endLine() {
  ++lineCounter_;
  if (!chunk_.continues()) emitter_.newlineAction(lineCounter_, parenDepth_ > 0);
}

std::size_t CharacterScanner::skipString(std::size_t from) const {
  const char quote = text_[from];
  std::size_t i = from + 1;
  while (i < text_.size() && text_[i] != quote) i += text_[i] == '\\' ? 2 : 1;
  return std::min(i + 1, text_.size());
}

}  // namespace

void scanCharacters(std::string_view text, ObjectBranch* root, ObjectBranch* start,
                    bool isJavaScript, std::string& chunk) {
  CharacterScanner(text, root, start, isJavaScript, chunk).run();
}

}  // namespace builder
