#include "outline/statement_ends.h"

#include <algorithm>
#include <array>

namespace host::outline {
namespace {

constexpr std::array<bool, 256> kStops = [] {
  std::array<bool, 256> table{};
  for (const char byte : {'\'', '"', '`', '\n', ';', '{', '}', '(', ')'}) {
    table[static_cast<unsigned char>(byte)] = true;
  }
  return table;
}();

bool isLetterOrDigit(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9');
}

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  StatementEnds run() {
    while (position_ < text_.size() && !isEnded_) {
      std::size_t stop = position_;
      while (stop < text_.size() && !kStops[static_cast<unsigned char>(text_[stop])]) ++stop;
      take(text_.substr(position_, stop - position_));
      position_ = stop;
      if (stop < text_.size()) takeStop(text_[stop]);
    }
    if (isEnded_) take(text_.substr(position_));
    if (letters_ < kFewLetters) ends_.unendedLine = kNone;
    return ends_;
  }

 private:
  void take(std::string_view bytes) {
    for (const char byte : bytes) {
      if (letters_ == kFewLetters) return;
      if (!isLetterOrDigit(byte)) continue;
      if (letters_++ == 0) ends_.unendedLine = line_;
    }
  }

  void takeStop(char byte) {
    switch (byte) {
      case '\'':
      case '"':
      case '`':
        takeString(byte);
        return;
      case '\n':
        if (parentheses_ == 0) end();
        ++line_;
        break;
      case ';':
        if (parentheses_ > 0) break;
        if (letters_ > 0) renewScope();
        end();
        break;
      case '{':
        end();
        openBlock();
        break;
      case '}':
        parentheses_ = 0;
        drop();
        isEnded_ = depth_ == 0;
        --depth_;
        break;
      case '(':
        ++parentheses_;
        break;
      default:  // a closing parenthesis
        parentheses_ = std::max(parentheses_ - 1, 0);
    }
    ++position_;
  }

  // A string that has no end takes all that is left.
  void takeString(char quote) {
    const std::size_t begin = position_++;
    while (position_ < text_.size() && text_[position_] != quote) {
      position_ += text_[position_] == '\\' ? 2 : 1;
    }
    position_ = std::min(position_ + 1, text_.size());
    const std::string_view text = text_.substr(begin, position_ - begin);
    take(text);
    line_ += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  }

  void openBlock() {
    ++depth_;
    if (depth_ == 1) isInScope_ = false;
    if (depth_ == 2) isInClass_ = false;
  }

  // Closing braces may have left the scope and its class. A statement gets new ones.
  void renewScope() {
    if (depth_ == 0) {
      depth_ = 2;
      isInScope_ = isInClass_ = true;
    } else if (depth_ == 2 && isInScope_ && !isInClass_) {
      ++depth_;
    }
  }

  void end() {
    if (letters_ > 0) ends_.lastLine = line_;
    drop();
  }

  void drop() {
    letters_ = 0;
    ends_.unendedLine = kNone;
  }

  static constexpr std::size_t kNone = std::string_view::npos;
  static constexpr int kFewLetters = 4;

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t line_ = 0;
  int parentheses_ = 0;
  std::size_t depth_ = 2;  // in a scope and its class; a brace that closes more ends all reading
  bool isInScope_ = true;  // at the first level is a scope, not a block
  bool isInClass_ = true;  // at the second a class
  bool isEnded_ = false;
  int letters_ = 0;  // and digits behind the last end of a statement, as far as they are counted
  StatementEnds ends_;
};

}  // namespace

StatementEnds findStatementEnds(std::string_view text) { return Scanner(text).run(); }

}  // namespace host::outline
