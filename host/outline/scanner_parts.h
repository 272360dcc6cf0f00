// The scanner of script text as its parts see it: script_scanner.h is what others include.
//
// The frames are the open brackets; each remembers what is being read directly inside it. The parts
// handle words, brackets and other punctuation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "outline/script_frame.h"
#include "outline/script_scanner.h"
#include "outline/script_tokens.h"
#include "outline/script_words.h"

namespace host::outline {

class Scanner {
 public:
  Scanner(std::string_view text, std::int32_t firstLine, std::int32_t maxLines, bool readsJsx)
      : text_(text),
        firstLine_(firstLine),
        maxLines_(maxLines),
        tokens_(text, firstLine, readsJsx) {
    frames_.push_back({});
    frames_.back().openLine = firstLine;
  }

  void run();

  ScriptStructure take() {
    structure_.comments = tokens_.takeComments();
    return std::move(structure_);
  }
  std::size_t faults() const { return faults_; }
  bool hasReadJsx() const { return hasReadJsx_; }

 private:
  Frame& top() { return frames_.back(); }
  bool has(std::uint16_t flag) { return (top().flags & flag) != 0; }
  // Between < and > of type parameters or arguments.
  bool inAngles() { return top().angles > 0; }
  void set(std::uint16_t flag) { top().flags |= flag; }
  void clear(std::uint16_t flags) { top().flags &= static_cast<std::uint16_t>(~flags); }
  std::string_view textOf(const Name& name) const {
    return text_.substr(name.begin, name.end - name.begin);
  }
  Definition& definition(std::int32_t index) {
    return structure_.definitions[static_cast<std::size_t>(index)];
  }
  static Name nameOf(const Token& token) { return {token.begin, token.end, token.line}; }

  LineFacts* factsOf(std::int32_t line);
  void note(std::int32_t line, Kind kind);
  void endLine(std::int32_t line, std::int32_t lastLine);

  std::int32_t define(Kind kind, const Name& name, bool isMain);
  std::int32_t defineValue(Kind kind);
  void await(std::int32_t index);
  void endAwaited();
  void endStatement();

  void push(FrameType type, char closer, Phase phase = Phase::kStart);
  void openBody(bool isValue, bool endsStatement);
  void close(char closer);
  void pop(bool matches);
  void afterClosed(const Frame& closed);

  bool mayEndHere(const Token& token, Word word);
  void handle(const Token& token);
  void handleJsx(const Token& token);
  void handleWord(const Token& token);
  void startStatement(const Token& token, Word word);
  void memberName(const Name& name);
  void handleOperand(const Token& token);
  void handlePunct(const Token& token);
  void openParens();
  void openBrace();
  void openBracket();
  void handleComma();
  void handleColon();
  void handleAssign();
  void handleArrow();
  void handleAngle(const Token& token);
  void enterFunction(bool isStatement);
  void enterClass(bool isStatement);

  std::string_view text_;
  std::int32_t firstLine_;
  std::int32_t maxLines_;
  ScriptTokens tokens_;
  ScriptStructure structure_;
  std::vector<Frame> frames_;
  std::size_t uncounted_ = 0;                                  // brackets open beyond kMaxDepth
  std::vector<std::pair<std::int32_t, std::size_t>> awaited_;  // definition, frames at its start
  std::size_t openBraces_ = 0;                                 // frames that a } closes
  bool operandMayBegin_ = true;
  bool continueTemplate_ = false;
  bool hasReadJsx_ = false;
  std::size_t faults_ = 0;
  Token previous_;  // the one being handled, while it is
  Token before_;
  Word previousWord_ = Word::kOrdinary;
  Word wordBefore_ = Word::kOrdinary;
  bool arrowIsNamed_ = false;
  std::int32_t previousLine_ = 0;     // of the last byte of the token before
  Name lastName_;                     // the last identifier, or string in brackets
  std::int32_t closedValue_ = kNone;  // the function whose body the token before closed
};

}  // namespace host::outline
