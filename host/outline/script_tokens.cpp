#include "outline/script_tokens.h"

#include <array>
#include <cstddef>

namespace host::outline {
namespace {

enum ByteClass : std::uint8_t {
  kOther = 0,
  kBlank = 1,      // white space but for line breaks
  kLineBreak = 2,  // LF and CR
  kWordStart = 4,  // also every byte of a character that is not ASCII
  kDigit = 8,
  kCommentStart = 16,  // what a comment may begin with
};

constexpr std::array<std::uint8_t, 256> kClasses = [] {
  std::array<std::uint8_t, 256> classes{};
  for (const char blank : {' ', '\t', '\v', '\f'})
    classes[static_cast<unsigned char>(blank)] = kBlank;
  classes['\n'] = classes['\r'] = kLineBreak;
  for (int c = 'a'; c <= 'z'; ++c) classes[static_cast<std::size_t>(c)] = kWordStart;
  for (int c = 'A'; c <= 'Z'; ++c) classes[static_cast<std::size_t>(c)] = kWordStart;
  for (int c = '0'; c <= '9'; ++c) classes[static_cast<std::size_t>(c)] = kDigit;
  for (const char c : {'_', '$', '\\'}) classes[static_cast<unsigned char>(c)] = kWordStart;
  for (std::size_t c = 0x80; c < 256; ++c) classes[c] = kWordStart;
  for (const char c : {'/', '<', '-'}) classes[static_cast<unsigned char>(c)] = kCommentStart;
  return classes;
}();

bool is(char byte, int classes) {
  return (kClasses[static_cast<unsigned char>(byte)] & classes) != 0;
}

// Where the run of bytes of these classes ends that begins at the offset.
std::size_t runEnd(std::string_view text, std::size_t from, int classes) {
  const char* byte = text.data() + from;
  const char* const end = text.data() + text.size();
  while (byte < end && is(*byte, classes)) ++byte;
  return static_cast<std::size_t>(byte - text.data());
}

}  // namespace

ScriptTokens::ScriptTokens(std::string_view text, std::int32_t firstLine, bool readsJsx)
    : text_(text), line_(firstLine), readsJsx_(readsJsx) {
  constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
  if (text_.starts_with(kByteOrderMark)) position_ = kByteOrderMark.size();
  if (text_.substr(position_).starts_with("#!")) skipLineComment();
}

// Takes LF, CR LF or CR.
void ScriptTokens::takeLineBreak() {
  if (text_[position_] == '\r' && at(position_ + 1) == '\n') ++position_;
  ++position_;
  ++line_;
}

void ScriptTokens::skipLineComment() {
  while (position_ < text_.size() && !is(text_[position_], kLineBreak)) ++position_;
}

void ScriptTokens::skipBlockComment() {
  position_ += 2;
  while (position_ < text_.size()) {
    const char byte = text_[position_];
    if (byte == '*' && at(position_ + 1) == '/') {
      position_ += 2;
      return;
    }
    if (is(byte, kLineBreak)) {
      takeLineBreak();
      lineBreak_ = true;
    } else {
      ++position_;
    }
  }
}

// Skips white space and comments; false at the end of the text. Most bytes skipped are indentation.
bool ScriptTokens::skipBlanks() {
  while (position_ < text_.size()) {
    const int found = kClasses[static_cast<unsigned char>(text_[position_])];
    if (found == kBlank) {
      position_ = runEnd(text_, position_ + 1, kBlank);
    } else if (found == kLineBreak) {
      takeLineBreak();
      lineBreak_ = true;
    } else if (found == kCommentStart) {
      const std::int32_t line = line_;
      const bool beginsLine = lineBreak_;
      if (!skipComment()) return true;
      if (beginsLine) comments_.add(line, line_);
    } else {
      return true;
    }
  }
  return false;
}

// Skips the comment that begins here; false if none does.
bool ScriptTokens::skipComment() {
  const std::string_view rest = text_.substr(position_);
  if (rest.starts_with("/*")) {
    skipBlockComment();
    return true;
  }
  const bool isLine =
      rest.starts_with("//") || rest.starts_with("<!--") || (lineBreak_ && rest.starts_with("-->"));
  if (isLine) skipLineComment();
  return isLine;
}

Token ScriptTokens::start() {
  Token token;
  token.line = line_;
  token.begin = static_cast<std::uint32_t>(position_);
  token.lineBreakBefore = lineBreak_;
  lineBreak_ = false;
  return token;
}

Token& ScriptTokens::finish(Token& token, TokenType type, char punct) {
  token.type = type;
  token.punct = punct;
  token.end = static_cast<std::uint32_t>(position_);
  return token;
}

char ScriptTokens::peekOnLine() const {
  std::size_t ahead = position_;
  while (is(at(ahead), kBlank)) ++ahead;
  return is(at(ahead), kLineBreak) ? '\0' : at(ahead);
}

void ScriptTokens::takeString(char quote) {
  ++position_;
  while (position_ < text_.size()) {
    const char byte = text_[position_];
    if (is(byte, kLineBreak)) return;
    ++position_;
    if (byte == quote) return;
    if (byte != '\\' || position_ == text_.size()) continue;
    if (is(text_[position_], kLineBreak)) {
      takeLineBreak();
    } else {
      ++position_;
    }
  }
}

// An attribute's value knows no escapes and may hold line breaks.
void ScriptTokens::takeJsxString(char quote) {
  ++position_;
  while (position_ < text_.size()) {
    const char byte = text_[position_];
    if (is(byte, kLineBreak)) {
      takeLineBreak();
      continue;
    }
    ++position_;
    if (byte == quote) return;
  }
}

// Takes a regular expression and its flags; false, with nothing taken, if its line ends first. Then
// the rest of the line is not searched again, or a long line of such slashes would take its square.
bool ScriptTokens::takeRegex() {
  if (position_ < noRegexBefore_) return false;
  bool inClass = false;
  std::size_t ahead = position_ + 1;
  for (; ahead < text_.size() && !is(text_[ahead], kLineBreak); ++ahead) {
    const char byte = text_[ahead];
    if (byte == '\\' && !is(at(ahead + 1), kLineBreak)) {
      ++ahead;
    } else if (byte == '[') {
      inClass = true;
    } else if (byte == ']') {
      inClass = false;
    } else if (byte == '/' && !inClass) {
      position_ = ahead + 1;
      while (is(at(position_), kWordStart | kDigit)) ++position_;
      return true;
    }
  }
  noRegexBefore_ = ahead;
  return false;
}

Token ScriptTokens::takeTemplate(Token token) {
  while (position_ < text_.size()) {
    const char byte = text_[position_];
    if (is(byte, kLineBreak)) {
      takeLineBreak();
      continue;
    }
    ++position_;
    if (byte == '`') break;
    if (byte == '$' && at(position_) == '{') {
      ++position_;
      return finish(token, TokenType::kPunct, kTemplateOpen);
    }
    if (byte == '\\' && position_ < text_.size() && !is(text_[position_], kLineBreak)) ++position_;
  }
  return finish(token, TokenType::kString, 0);
}

Token ScriptTokens::continueTemplate() {
  lineBreak_ = false;
  return takeTemplate(start());
}

// A tag, and not the type parameters of an arrow function as <T,> or <T extends U>.
bool ScriptTokens::opensJsx() const {
  const char first = at(position_ + 1);
  if (first == '>') return true;
  if (!is(first, kWordStart)) return false;
  std::size_t ahead = position_ + 1;
  while (is(at(ahead), kWordStart | kDigit)) ++ahead;
  while (is(at(ahead), kBlank)) ++ahead;
  return at(ahead) != ',' && !text_.substr(ahead).starts_with("extends ");
}

void ScriptTokens::takePunct(Token& token, bool operandMayBegin) {
  const char byte = text_[position_];
  const char second = at(position_ + 1);
  std::size_t size = 1;
  char punct = kOperator;
  switch (byte) {
    case '(':
    case ')':
    case '[':
    case ']':
    case '{':
    case '}':
    case ';':
    case ',':
    case ':':
    case '@':
      punct = byte;
      break;
    case '=':
      if (second == '>') {
        punct = kArrow;
        size = 2;
      } else if (second == '=') {
        size = at(position_ + 2) == '=' ? 3 : 2;
      } else {
        punct = byte;
      }
      break;
    case '.':
      punct = byte;
      if (second == '.' && at(position_ + 2) == '.') {
        punct = kSpread;
        size = 3;
      }
      break;
    case '?':
      if (second == '.' && !is(at(position_ + 2), kDigit)) {
        punct = '.';
        size = 2;
      } else if (second == '?') {
        size = at(position_ + 2) == '=' ? 3 : 2;
      } else {
        punct = byte;
      }
      break;
    case '<':
      punct = byte;
      if (operandMayBegin && readsJsx_ && opensJsx()) {
        punct = kJsxOpen;
      } else if (second == '=' || second == '<') {
        punct = kOperator;
        size = 2;
      }
      break;
    case '>':
      punct = second == '=' ? kOperator : byte;
      size = second == '=' ? 2 : 1;
      break;
    case '*':
      punct = second == '=' || second == '*' ? kOperator : byte;
      size = second == '=' || second == '*' ? 2 : 1;
      break;
    case '!':
      punct = second == '=' ? kOperator : byte;
      size = second == '=' ? (at(position_ + 2) == '=' ? 3 : 2) : 1;
      break;
    case '+':
    case '-':
      punct = second == byte ? kIncrement : kOperator;
      size = second == byte || second == '=' ? 2 : 1;
      break;
    case '&':
    case '|':
      size = second == byte ? (at(position_ + 2) == '=' ? 3 : 2) : second == '=' ? 2 : 1;
      break;
    case '/':
    case '%':
    case '^':
      size = second == '=' ? 2 : 1;
      break;
    default:
      break;
  }
  position_ += size;
  finish(token, TokenType::kPunct, punct);
}

Token ScriptTokens::next(bool operandMayBegin) {
  if (!skipBlanks()) {
    Token token = start();
    return finish(token, TokenType::kEnd, 0);
  }
  Token token = start();
  const char byte = text_[position_];
  if (is(byte, kWordStart) || (byte == '#' && is(at(position_ + 1), kWordStart))) {
    position_ = runEnd(text_, position_ + 1, kWordStart | kDigit);
    return finish(token, TokenType::kWord, 0);
  }
  if (is(byte, kDigit) || (byte == '.' && is(at(position_ + 1), kDigit))) {
    while (is(at(position_), kWordStart | kDigit) || at(position_) == '.') ++position_;
    return finish(token, TokenType::kNumber, 0);
  }
  if (byte == '"' || byte == '\'') {
    takeString(byte);
    return finish(token, TokenType::kString, 0);
  }
  if (byte == '`') {
    ++position_;
    return takeTemplate(token);
  }
  if (byte == '/' && operandMayBegin && takeRegex()) return finish(token, TokenType::kRegex, 0);
  takePunct(token, operandMayBegin);
  return token;
}

Token ScriptTokens::nextInJsxTag() {
  if (!skipBlanks()) {
    Token token = start();
    return finish(token, TokenType::kEnd, 0);
  }
  Token token = start();
  const char byte = text_[position_];
  if (byte == '"' || byte == '\'') {
    takeJsxString(byte);
    return finish(token, TokenType::kString, 0);
  }
  if (is(byte, kWordStart)) {
    while (is(at(position_), kWordStart | kDigit) || at(position_) == '-') ++position_;
    return finish(token, TokenType::kWord, 0);
  }
  ++position_;
  if (byte == '/' && at(position_) == '>') {
    ++position_;
    return finish(token, TokenType::kPunct, kJsxSelfClose);
  }
  const bool hasMeaning = byte == '>' || byte == '{' || byte == '<';
  return finish(token, TokenType::kPunct, hasMeaning ? byte : kOperator);
}

Token ScriptTokens::nextInJsxText() {
  while (position_ < text_.size() && text_[position_] != '{' && text_[position_] != '<') {
    if (is(text_[position_], kLineBreak)) {
      takeLineBreak();
    } else {
      ++position_;
    }
  }
  Token token = start();
  if (position_ == text_.size()) return finish(token, TokenType::kEnd, 0);
  const char byte = text_[position_++];
  if (byte == '{' || at(position_) != '/') return finish(token, TokenType::kPunct, byte);
  while (position_ < text_.size() && text_[position_] != '>') {
    if (is(text_[position_], kLineBreak)) {
      takeLineBreak();
    } else {
      ++position_;
    }
  }
  if (position_ < text_.size()) ++position_;
  return finish(token, TokenType::kPunct, kJsxClosingTag);
}

}  // namespace host::outline
