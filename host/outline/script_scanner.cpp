#include "outline/script_scanner.h"

#include <algorithm>

#include "outline/scanner_parts.h"

namespace host::outline {

namespace {

// Brackets open deeper than this are only counted, so that a text of brackets needs little memory.
constexpr std::size_t kMaxDepth = 100'000;

}  // namespace

LineFacts* Scanner::factsOf(std::int32_t line) {
  const auto index = static_cast<std::size_t>(line - firstLine_);
  if (line - firstLine_ >= maxLines_) return nullptr;
  if (structure_.lines.size() <= index) structure_.lines.resize(index + 1);
  return &structure_.lines[index];
}

void Scanner::note(std::int32_t line, Kind kind) {
  LineFacts* const facts = factsOf(line);
  if (facts != nullptr && facts->kind == Kind::kStatement) facts->kind = kind;
}

void Scanner::endLine(std::int32_t line, std::int32_t lastLine) {
  if (lastLine <= line) return;
  LineFacts* const facts = factsOf(line);
  if (facts != nullptr) facts->lastLine = std::max(facts->lastLine, lastLine);
}

std::int32_t Scanner::define(Kind kind, const Name& name, bool isMain) {
  if (name.end == 0 || name.line - firstLine_ >= maxLines_) return kNone;
  structure_.definitions.push_back({kind, isMain, name.begin, name.end, name.line, 0});
  return static_cast<std::int32_t>(structure_.definitions.size() - 1);
}

// The definition ends with the expression or statement being read.
void Scanner::await(std::int32_t index) {
  if (index != kNone) awaited_.emplace_back(index, frames_.size());
}

// A function or class stands where a name gets its value.
std::int32_t Scanner::defineValue(Kind kind) {
  Frame& frame = top();
  if (frame.target.end == 0) return kNone;
  if (frame.variable != kNone) {
    Definition& known = definition(frame.variable);
    known.kind = kind == Kind::kFunction && known.kind == Kind::kField ? Kind::kMethod : kind;
    known.isMain = true;
    return frame.variable;
  }
  const bool isMember = frame.type == FrameType::kObject;
  const Kind shown = kind == Kind::kFunction && isMember ? Kind::kMethod : kind;
  const std::int32_t index = define(shown, frame.target, true);
  await(index);
  return index;
}

void Scanner::endAwaited() {
  while (!awaited_.empty() && awaited_.back().second >= frames_.size()) {
    if (awaited_.back().second == frames_.size()) {
      definition(awaited_.back().first).lastLine = previousLine_;
    }
    awaited_.pop_back();
  }
}

void Scanner::endStatement() {
  endAwaited();
  Frame& frame = top();
  if (frame.function != kNone && definition(frame.function).lastLine == 0) {
    definition(frame.function).lastLine = previousLine_;
  }
  frame.phase = Phase::kStart;
  clear(kDeclares | kHeadIsStatement | kHeadIsValue | kHeadIsMember | kGets | kSets | kIsEnum |
        kEndsAtColon);
  frame.ternaries = 0;
  frame.angles = 0;
  frame.statementLine = 0;
  frame.variable = kNone;
  frame.function = kNone;
  frame.target = {};
  operandMayBegin_ = true;
}

void Scanner::push(FrameType type, char closer, Phase phase) {
  if (frames_.size() >= kMaxDepth) {
    ++uncounted_;
    return;
  }
  Frame frame;
  frame.type = type;
  frame.closer = closer;
  frame.phase = phase;
  frame.openLine = previous_.line;
  frames_.push_back(frame);
  if (closer == '}') ++openBraces_;
  operandMayBegin_ = type != FrameType::kTypes;
}

// The body of the function whose head has been read.
void Scanner::openBody(bool isValue, bool endsStatement) {
  const std::int32_t index = top().function;
  top().function = kNone;
  push(FrameType::kBlock, '}');
  if (uncounted_ > 0) return;
  top().definition = index;
  if (isValue) set(kIsValue);
  if (endsStatement) set(kEndsStatement);
  if (index == kNone) note(top().openLine, Kind::kCallback);
}

void Scanner::pop(bool matches) {
  const Frame closed = top();
  frames_.pop_back();
  if (closed.closer == '}') --openBraces_;
  if (!matches) {
    while (!awaited_.empty() && awaited_.back().second > frames_.size()) awaited_.pop_back();
    ++faults_;
    return;
  }
  endLine(closed.openLine, previous_.line);
  if (closed.headLine > 0) endLine(closed.headLine, previous_.line);
  if (closed.definition != kNone) definition(closed.definition).lastLine = previous_.line;
}

// previous_ is the closer already, previousLine_ still the line of the token before it.
void Scanner::close(char closer) {
  // Braces are rarely wrong where other brackets are, so they win.
  if (top().closer != closer && closer == '}' && openBraces_ > 0) {
    while (top().closer != '}') pop(false);
  }
  if (frames_.size() == 1 || top().closer != closer) {
    ++faults_;
    operandMayBegin_ = closer == '}';
    return;
  }
  endStatement();
  const Frame closed = top();
  pop(true);
  afterClosed(closed);
}

void Scanner::afterClosed(const Frame& closed) {
  operandMayBegin_ = (closed.flags & kIsControl) != 0;
  continueTemplate_ = (closed.flags & kIsTemplate) != 0;
  if ((closed.flags & kIsValue) != 0) closedValue_ = closed.definition;
  if ((closed.flags & kEndsStatement) != 0) endStatement();
  // A string in brackets is a name: object["name"] = ...
  const bool isKey = closed.closer == ']' && before_.type == TokenType::kString;
  if (!isKey) lastName_ = {};
  // The name of a member is all of what stands in its brackets, with them.
  if (top().phase == Phase::kMember && closed.closer == ']') top().target.end = previous_.end;
}

// Whether a statement or member without a semicolon ends at the line break before the token.
bool Scanner::mayEndHere(const Token& token, Word word) {
  const Frame& frame = top();
  if (frame.type != FrameType::kBlock && frame.type != FrameType::kClass) return false;
  switch (frame.phase) {
    case Phase::kStart:
    case Phase::kDecorator:
    case Phase::kClassHead:
    case Phase::kTypesHead:
    case Phase::kNamespaceHead:
    case Phase::kControl:
    case Phase::kFunction:
    case Phase::kValue:
    case Phase::kMemberAngle:
    case Phase::kValueAngle:
    case Phase::kDeclare:
      return false;
    default:
      break;
  }
  if (operandMayBegin_) {
    return frame.type == FrameType::kBlock && frame.phase == Phase::kExpression &&
           kBeginStatement.has(word);
  }
  if (frame.angles > 0) return false;
  const bool hasHead = frame.phase == Phase::kFunctionTail || frame.phase == Phase::kMemberTail ||
                       frame.phase == Phase::kResultType;
  switch (token.type) {
    case TokenType::kWord:
      return !kOperatorWords.has(word) || frame.phase == Phase::kMember;
    case TokenType::kNumber:
    case TokenType::kRegex:
      return true;
    case TokenType::kString:
      return text_[token.begin] != '`';
    case TokenType::kPunct:
      if (token.punct == '{') return !hasHead;
      return token.punct == '@' || token.punct == kIncrement ||
             (token.punct == '[' && frame.type == FrameType::kClass &&
              frame.phase != Phase::kMember);
    case TokenType::kEnd:
      break;
  }
  return false;
}

void Scanner::run() {
  while (true) {
    const FrameType type = top().type;
    const bool inJsx =
        uncounted_ == 0 && (type == FrameType::kJsxTag || type == FrameType::kJsxText);
    Token token;
    if (continueTemplate_) {
      continueTemplate_ = false;
      token = tokens_.continueTemplate();
    } else if (inJsx) {
      token = type == FrameType::kJsxTag ? tokens_.nextInJsxTag() : tokens_.nextInJsxText();
    } else {
      token = tokens_.next(operandMayBegin_ && type != FrameType::kTypes);
    }
    if (token.type == TokenType::kEnd) break;
    if (uncounted_ > 0) {
      previous_ = token;
      if (token.type == TokenType::kPunct) {
        const char punct = token.punct;
        if (punct == '{' || punct == '(' || punct == '[') ++uncounted_;
        if (punct == '}' || punct == ')' || punct == ']') --uncounted_;
      }
    } else if (inJsx) {
      handleJsx(token);
    } else {
      handle(token);
    }
    previousLine_ = tokens_.line();
  }
  if (frames_.size() == 1) endStatement();
  faults_ += frames_.size() - 1;
}

void Scanner::handleJsx(const Token& token) {
  previous_ = token;
  if (token.type != TokenType::kPunct) return;
  const bool inTag = top().type == FrameType::kJsxTag;
  switch (token.punct) {
    case '{':
      push(FrameType::kParens, '}', Phase::kExpression);
      break;
    case '<':
      if (inTag) {
        ++top().angles;
      } else {
        push(FrameType::kJsxTag, 0);
      }
      break;
    case '>':
      if (top().angles > 0) {
        --top().angles;
      } else {
        top().type = FrameType::kJsxText;
      }
      break;
    case kJsxSelfClose:
    case kJsxClosingTag:
      pop(true);
      operandMayBegin_ = false;
      break;
    default:
      break;
  }
}

void Scanner::handle(const Token& token) {
  const Word word =
      token.type == TokenType::kWord ? wordOf(tokens_.textOf(token)) : Word::kOrdinary;
  if (token.lineBreakBefore && mayEndHere(token, word)) endStatement();
  // A function that is called or asked for a member at once is not the value itself.
  if (closedValue_ != kNone) {
    const bool goesOn = (token.type == TokenType::kPunct &&
                         (token.punct == '(' || token.punct == '.' || token.punct == '['));
    if (goesOn) {
      Definition& value = definition(closedValue_);
      value.isMain = false;
      value.kind = value.kind == Kind::kMethod ? Kind::kField : Kind::kVariable;
    }
    closedValue_ = kNone;
  }
  before_ = std::exchange(previous_, token);
  wordBefore_ = std::exchange(previousWord_, Word::kOrdinary);
  if (top().type == FrameType::kTypes) {
    if (token.type == TokenType::kPunct) {
      switch (token.punct) {
        case '(':
          push(FrameType::kTypes, ')');
          break;
        case '[':
          push(FrameType::kTypes, ']');
          break;
        case '{':
          push(FrameType::kTypes, '}');
          break;
        case kTemplateOpen:
          push(FrameType::kTypes, '}');
          if (uncounted_ == 0) set(kIsTemplate);
          break;
        case ')':
        case ']':
        case '}':
          close(token.punct);
          break;
        default:
          break;
      }
    }
  } else {
    if (top().phase == Phase::kDecorator) {
      const bool isName = token.type == TokenType::kWord && before_.type == TokenType::kPunct &&
                          (before_.punct == '@' || before_.punct == '.');
      const bool goesOn =
          token.type == TokenType::kPunct && (token.punct == '.' || token.punct == '(');
      if (isName) return;
      if (!goesOn) top().phase = Phase::kStart;
    }
    switch (token.type) {
      case TokenType::kWord: {
        const bool isMember = before_.type == TokenType::kPunct && before_.punct == '.';
        previousWord_ = isMember ? Word::kOrdinary : word;
        handleWord(token);
        break;
      }
      case TokenType::kNumber:
      case TokenType::kString:
      case TokenType::kRegex:
        handleOperand(token);
        break;
      case TokenType::kPunct:
        handlePunct(token);
        break;
      case TokenType::kEnd:
        break;
    }
  }
}

ScriptStructure scanScript(std::string_view text, std::int32_t firstLine, std::int32_t maxLines,
                           ScriptDialect dialect) {
  Scanner scanner(text, firstLine, maxLines, dialect.mayHoldJsx);
  scanner.run();
  if (scanner.faults() == 0 || !scanner.hasReadJsx()) return scanner.take();
  // What looked like JSX may have been none.
  Scanner plain(text, firstLine, maxLines, false);
  plain.run();
  return plain.faults() < scanner.faults() ? plain.take() : scanner.take();
}

}  // namespace host::outline
