// Removes script comments in place, in one pass. The text is in one mode at a time:
//
//   code           until a comment, a string or a marker run opens
//   string         '...' or "..."; a line feed does not end it
//   line comment   from // to the line feed
//   block comment  from /* to */
//   marker run     from TTTTT to the next ";"
//
// Each mode copies or drops bytes up to the next one that is special in that mode. Backticks and
// regular expressions are ordinary text: "//" inside them starts a comment.
#include <cstddef>
#include <cstring>
#include <utility>

#include "cleaner/cleaner.h"
#include "text/byte_blocks.h"
#include "text/byte_set.h"

namespace cleaner {
namespace {

using text::ByteSet;

// Bytes that become a space in every mode: control bytes except line feed and carriage return, and
// everything above 0x7E.
constexpr ByteSet kUnprintable = ByteSet::where(
    [](int byte) { return (byte < 0x20 && byte != '\n' && byte != '\r') || byte > 0x7E; });

constexpr ByteSet kCodeStops = kUnprintable | ByteSet{";[T/'\"\n"};
// A test for blocks, true for a carriage return too, which is rare.
text::Bytes::Mask areUnprintable(const text::Bytes& bytes) {
  return bytes.areBelow(' ') | bytes.are('\x7F');
}

constexpr ByteSet kStringStops = kUnprintable | ByteSet{"'\"\\;["};
constexpr ByteSet kLineCommentStops = kUnprintable | ByteSet{";\n"};
constexpr ByteSet kBlockCommentStops = kUnprintable | ByteSet{";*/\n"};
constexpr ByteSet kMarkerStops = kUnprintable | ByteSet{";"};

// Bytes before the start of a statement: they do not start it.
constexpr ByteSet kBetweenStatements{" }"};

constexpr std::string_view kMarker = "TTTTT";

class CommentStripper {
 public:
  explicit CommentStripper(std::string& text) : text_(text), size_(text.size()) {}

  void run() {
    while (in_ < size_) (this->*mode_)();
    text_.resize(out_);
  }

 private:
  using Mode = void (CommentStripper::*)();

  // Each call handles a run of ordinary bytes and the byte that ends it.
  void code();
  void string();
  void lineComment();
  void blockComment();
  void markerRun();

  std::size_t findStop(const ByteSet& stops) const { return text::findMember(text_, stops, in_); }

  // Every move of in_ goes through here, before anything is written. Output never overtakes input,
  // so the byte before in_ is still intact; the one before that may be overwritten.
  void leaveBehind(std::size_t end) {
    if (end > in_) beforeLast_ = end >= 2 ? text_[end - 2] : '\0';
  }

  void dropUpTo(std::size_t end) {
    leaveBehind(end);
    in_ = end;
  }

  void copyUpTo(std::size_t end) {
    leaveBehind(end);
    char* const to = text_.data() + out_;
    const char* const from = text_.data() + in_;
    const std::size_t size = end - in_;
    // Most runs are short. Copying a whole block is safe if it ends before the byte in front of the
    // run, which may still be read; later output overwrites the excess.
    if (size <= text::kBlockBytes && from - to > std::ptrdiff_t{text::kBlockBytes} &&
        in_ + text::kBlockBytes <= size_) {
      std::memcpy(to, from, text::kBlockBytes);
    } else if (from != to) {
      std::memmove(to, from, size);
    }
    out_ += size;
    in_ = end;
  }

  // Each consumes the byte at in_ and writes another byte, the same one, or nothing.
  void put(char byte) {
    leaveBehind(in_ + 1);
    text_[out_++] = byte;
    ++in_;
  }
  void copyByte() { put(text_[in_]); }
  void dropByte() { dropUpTo(in_ + 1); }

  bool takeUnprintable() {
    if (!kUnprintable(text_[in_])) return false;
    put(' ');
    return true;
  }

  // Copies the next printable byte whatever it means.
  void copyBlindly() {
    while (in_ < size_ && takeUnprintable()) {
    }
    if (in_ < size_) copyByte();
  }

  // At least one byte must follow the marker's five, and the byte two before them must not be "d".
  bool isMarkerHere() const {
    return in_ + kMarker.size() < size_ && text_.compare(in_, kMarker.size(), kMarker) == 0 &&
           beforeLast_ != 'd';
  }

  std::string& text_;
  const std::size_t size_;
  std::size_t in_ = 0;
  std::size_t out_ = 0;
  char beforeLast_ = '\0';  // the byte of the source two before in_
  Mode mode_ = &CommentStripper::code;
  char quote_ = 0;              // the byte that closes the string
  bool statementStart_ = true;  // no byte of the new statement seen yet; a "[" is dropped here
};

void CommentStripper::code() {
  const std::size_t stop = text::findMemberByBlocks(
      text_, kCodeStops,
      [](text::Bytes bytes) {
        return areUnprintable(bytes) | bytes.are(';') | bytes.are('[') | bytes.are('T') |
               bytes.are('/') | bytes.are('\'') | bytes.are('"');
      },
      in_);
  for (std::size_t i = in_; statementStart_ && i < stop; ++i) {
    statementStart_ = kBetweenStatements(text_[i]);
  }
  copyUpTo(stop);
  if (in_ == size_ || takeUnprintable()) return;
  const char byte = text_[in_];
  switch (byte) {
    case '\n':
    case ';':
      statementStart_ = true;
      copyByte();
      return;
    case '[':
      if (statementStart_) {
        dropByte();  // required: the bracket is dropped, its contents are not
        return;
      }
      break;
    case '\'':
    case '"':
      mode_ = &CommentStripper::string;
      quote_ = byte;
      copyByte();
      return;
    case '/': {
      // required: a "/" as the last byte of the text counts as if another "/" followed.
      const char next = in_ + 1 < size_ ? text_[in_ + 1] : byte;
      if (next != '/' && next != '*') break;
      mode_ = next == '/' ? &CommentStripper::lineComment : &CommentStripper::blockComment;
      dropByte();
      return;
    }
    default:  // a "T"
      if (!isMarkerHere()) break;
      mode_ = &CommentStripper::markerRun;
      dropByte();
      return;
  }
  statementStart_ = false;
  copyByte();
}

void CommentStripper::string() {
  copyUpTo(text::findMemberByBlocks(
      text_, kStringStops,
      [](text::Bytes bytes) {
        return areUnprintable(bytes) | bytes.are('\'') | bytes.are('"') | bytes.are('\\') |
               bytes.are(';') | bytes.are('[');
      },
      in_));
  if (in_ == size_ || takeUnprintable()) return;
  const char byte = text_[in_];
  if (byte == ';') statementStart_ = true;
  if (byte == '[' && statementStart_) {
    dropByte();  // required: also in a string at the start of a statement
    return;
  }
  if (byte == quote_) mode_ = &CommentStripper::code;
  copyByte();
  if (byte == '\\') copyBlindly();
}

void CommentStripper::lineComment() {
  dropUpTo(findStop(kLineCommentStops));
  if (in_ == size_ || takeUnprintable()) return;
  if (text_[in_] == ';') {
    statementStart_ = true;
    dropByte();
    return;
  }
  mode_ = &CommentStripper::code;
  copyByte();  // required: this line feed does not start a statement
}

void CommentStripper::blockComment() {
  dropUpTo(findStop(kBlockCommentStops));
  if (in_ == size_ || takeUnprintable()) return;
  const char before = text_[in_ - 1];
  switch (text_[in_]) {
    case '\n':
      copyByte();
      return;
    case ';':
      statementStart_ = true;
      dropByte();
      return;
    case '*':
      dropByte();
      // required: the first byte of the comment survives.
      if (before == '/') copyBlindly();
      return;
    default:  // a "/"
      dropByte();
      if (before != '*') return;
      mode_ = &CommentStripper::code;
      // required: the byte after the comment is copied without opening or closing anything.
      copyBlindly();
      return;
  }
}

void CommentStripper::markerRun() {
  dropUpTo(findStop(kMarkerStops));
  if (in_ == size_ || takeUnprintable()) return;
  mode_ = &CommentStripper::code;  // required: this ";" starts no statement
  dropByte();
}

}  // namespace

void stripComments(std::string& text) { CommentStripper(text).run(); }

}  // namespace cleaner

std::string Cleaner::UncommentAndUnquoteText(std::string text) {
  return UncommentAndUnquoteText(std::move(text), false);
}

std::string Cleaner::UncommentAndUnquoteText(std::string text, bool keepStrings) {
  static_cast<void>(keepStrings);
  cleaner::stripComments(text);
  return text;
}
