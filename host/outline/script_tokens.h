// The tokens of script text: words, strings, numbers and punctuation, with their lines.
//
// One forward pass, for JavaScript, TypeScript and JSX. What a slash or an angle bracket begins
// depends on the syntax before it, so the caller says at each step whether an operand may begin
// there. Broken text gives tokens too: a string ends at the end of its line, a regular expression
// that has no end on its line is a slash, and an open comment or template runs to the end.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "outline/comment_lines.h"

namespace host::outline {

enum class TokenType : std::uint8_t {
  kEnd,
  kWord,  // an identifier or keyword, private names with their #
  kNumber,
  kString,  // also a template without a substitution, and the end of one with substitutions
  kRegex,
  kPunct,  // see Token::punct
};

// Punctuation of several bytes, or whose byte is ambiguous.
inline constexpr char kArrow = 'A';          // =>
inline constexpr char kOperator = 'o';       // any operator that is of no interest by itself
inline constexpr char kIncrement = '+';      // ++ or --
inline constexpr char kSpread = 'S';         // ...
inline constexpr char kTemplateOpen = '$';   // a template's text up to and including ${
inline constexpr char kJsxSelfClose = 'X';   // /> at the end of a tag
inline constexpr char kJsxClosingTag = 'C';  // a closing tag, whole
inline constexpr char kJsxOpen = 'J';        // < where an operand may begin

struct Token {
  TokenType type = TokenType::kEnd;
  char punct = 0;  // ( ) [ ] { } ; , : = . ? ! * @ < > / or one of the above
  bool lineBreakBefore = false;
  std::int32_t line = 0;    // of its first byte; the first line of the text is the one given
  std::uint32_t begin = 0;  // byte offsets in the text
  std::uint32_t end = 0;
};

class ScriptTokens {
 public:
  ScriptTokens(std::string_view text, std::int32_t firstLine, bool readsJsx);

  // The next token outside of JSX text and tags.
  Token next(bool operandMayBegin);

  // The rest of a template behind the brace that closes a substitution: kString or kTemplateOpen.
  Token continueTemplate();

  // Inside a tag of JSX, behind its <: > kJsxSelfClose { < or something without meaning.
  Token nextInJsxTag();

  // Between tags of JSX: { < kJsxClosingTag or the end.
  Token nextInJsxText();

  // The next byte on the same line that is not a blank; 0 at the end of the line.
  char peekOnLine() const;

  std::string_view textOf(const Token& token) const {
    return text_.substr(token.begin, token.end - token.begin);
  }
  std::int32_t line() const { return line_; }

  // The comments so far that begin their lines.
  std::vector<CommentLines> takeComments() { return comments_.take(); }

 private:
  char at(std::size_t position) const { return position < text_.size() ? text_[position] : '\0'; }
  bool skipBlanks();
  bool skipComment();
  void takeLineBreak();
  void skipLineComment();
  void skipBlockComment();
  void takeString(char quote);
  void takeJsxString(char quote);
  bool takeRegex();
  Token takeTemplate(Token token);
  void takePunct(Token& token, bool operandMayBegin);
  bool opensJsx() const;
  Token start();
  Token& finish(Token& token, TokenType type, char punct);

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t noRegexBefore_ = 0;
  std::int32_t line_;
  CommentRuns comments_;
  bool readsJsx_;
  bool lineBreak_ = true;  // since the last token
};

}  // namespace host::outline
