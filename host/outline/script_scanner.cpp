#include "outline/script_scanner.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "outline/script_tokens.h"
#include "outline/script_words.h"

namespace host::outline {
namespace {

// Brackets open deeper than this are only counted, so that a text of brackets needs little memory.
constexpr std::size_t kMaxDepth = 100'000;

enum class FrameType : std::uint8_t {
  kBlock,  // statements
  kClass,
  kObject,
  kParens,  // also brackets, and braces in templates and JSX: an expression
  kTypes,   // brackets in a type, the body of an interface or enum: nothing is defined there
  kJsxTag,
  kJsxText,
};

// What comes next in a frame.
enum class Phase : std::uint8_t {
  kStart,        // a statement or a member
  kMember,       // in a class or object: modifiers and the name
  kMemberAngle,  // type parameters behind the name
  kMemberTail,   // behind the parameters of a method
  kExpression,
  kDeclare,      // the name behind const, let or var
  kDeclared,     // behind that name
  kValue,        // right behind the = or : that gives a name its value
  kValueAngle,   // type parameters of an arrow function
  kArrowParams,  // behind what may be the parameters of an arrow function
  kArrowType,    // its return type
  kFunction,     // behind the word function, up to the parameters
  kFunctionTail,
  kResultType,  // of a function or method
  kClassHead,
  kTypesHead,  // behind interface or enum
  kNamespaceHead,
  kType,  // of a variable, parameter or field
  kTypeAlias,
  kDecorator,
  kControl,  // behind if, while and the like, up to the parentheses
};

enum Flags : std::uint16_t {
  kEndsStatement = 1,    // the block is a statement by itself
  kIsControl = 2,        // parentheses of if, while and the like
  kDeclares = 4,         // inside const, let or var
  kHeadIsStatement = 8,  // the function or class being read is a statement
  kIsTemplate = 16,      // closing it goes on with a template's text
  kIsValue = 32,         // the body of a function that gives a name its value
  kHeadIsValue = 64,     // the function or class being read gives a name its value
  kGets = 128,
  kSets = 256,
  kIsEnum = 512,         // the head being read is of an enum
  kHeadIsMember = 1024,  // the function being read is a method
  kEndsAtColon = 2048,   // a label or a case
};

struct Name {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
  std::int32_t line = 0;
};

constexpr std::int32_t kNone = -1;

struct Frame {
  FrameType type = FrameType::kBlock;
  Phase phase = Phase::kStart;
  std::uint16_t flags = 0;
  char closer = 0;
  std::uint16_t ternaries = 0;  // ? whose : has not come
  std::uint16_t angles = 0;
  std::int32_t openLine = 0;
  std::int32_t headLine = 0;        // where the statement begins that the frame belongs to
  std::int32_t definition = kNone;  // ends with the frame
  // Of the statement or member being read in this frame:
  std::int32_t statementLine = 0;
  std::int32_t variable = kNone;  // the definition of a declared variable or field
  std::int32_t function = kNone;  // the definition whose head is being read
  Name target;                    // what = or : gives a value
};

bool expectsOperand(Word word) {
  switch (word) {
    case Word::kAwait:
    case Word::kCase:
    case Word::kDefault:
    case Word::kDelete:
    case Word::kDo:
    case Word::kElse:
    case Word::kExport:
    case Word::kExtends:
    case Word::kImport:
    case Word::kIn:
    case Word::kInstanceof:
    case Word::kNew:
    case Word::kOf:
    case Word::kReturn:
    case Word::kThrow:
    case Word::kTypeof:
    case Word::kVoid:
    case Word::kYield:
      return true;
    default:
      return false;
  }
}

bool continuesType(Word word) {
  switch (word) {
    case Word::kTypeof:
    case Word::kKeyof:
    case Word::kInfer:
    case Word::kExtends:
    case Word::kIs:
    case Word::kReadonly:
    case Word::kNew:
    case Word::kIn:
      return true;
    default:
      return false;
  }
}

bool isOperatorWord(Word word) {
  return word == Word::kIn || word == Word::kInstanceof || word == Word::kAs ||
         word == Word::kSatisfies || word == Word::kOf || word == Word::kExtends ||
         word == Word::kIs || word == Word::kImplements;
}

// Words that begin a statement and stand nowhere in an expression.
bool beginsStatement(Word word) {
  switch (word) {
    case Word::kConst:
    case Word::kVar:
    case Word::kIf:
    case Word::kFor:
    case Word::kWhile:
    case Word::kReturn:
    case Word::kSwitch:
    case Word::kTry:
    case Word::kThrow:
    case Word::kExport:
      return true;
    default:
      return false;
  }
}

bool isWordStart(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' ||
         byte == '$' || static_cast<unsigned char>(byte) >= 0x80;
}

bool readsType(Phase phase) {
  return phase == Phase::kType || phase == Phase::kTypeAlias || phase == Phase::kArrowType ||
         phase == Phase::kResultType || phase == Phase::kValueAngle || phase == Phase::kMemberAngle;
}

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

  ScriptStructure take() { return std::move(structure_); }
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
  Word previousWord_ = Word::kNone;
  Word wordBefore_ = Word::kNone;
  bool arrowIsNamed_ = false;
  std::int32_t previousLine_ = 0;     // of the last byte of the token before
  Name lastName_;                     // the last identifier, or string in brackets
  std::int32_t closedValue_ = kNone;  // the function whose body the token before closed
};

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
           beginsStatement(word);
  }
  if (frame.angles > 0) return false;
  const bool hasHead = frame.phase == Phase::kFunctionTail || frame.phase == Phase::kMemberTail ||
                       frame.phase == Phase::kResultType;
  switch (token.type) {
    case TokenType::kWord:
      return !isOperatorWord(word) || frame.phase == Phase::kMember;
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
  const Word word = token.type == TokenType::kWord ? wordOf(tokens_.textOf(token)) : Word::kNone;
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
  wordBefore_ = std::exchange(previousWord_, Word::kNone);
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
        previousWord_ = isMember ? Word::kNone : word;
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

void Scanner::enterFunction(bool isStatement) {
  Frame& frame = top();
  frame.function = frame.phase == Phase::kValue ? defineValue(Kind::kFunction) : kNone;
  clear(kHeadIsStatement | kHeadIsValue | kHeadIsMember);
  if (frame.function != kNone) set(kHeadIsValue);
  if (isStatement) set(kHeadIsStatement);
  frame.phase = Phase::kFunction;
  frame.angles = 0;
  operandMayBegin_ = false;
}

void Scanner::enterClass(bool isStatement) {
  Frame& frame = top();
  frame.function = frame.phase == Phase::kValue ? defineValue(Kind::kClass) : kNone;
  frame.target = {};
  clear(kHeadIsStatement | kHeadIsValue | kHeadIsMember);
  if (isStatement) set(kHeadIsStatement);
  frame.phase = Phase::kClassHead;
  frame.angles = 0;
}

// A word where a statement begins. Leaves the phase at kExpression for what is no keyword there.
void Scanner::startStatement(const Token& token, Word word) {
  Frame& frame = top();
  if (frame.statementLine == 0) frame.statementLine = token.line;
  const char ahead = tokens_.peekOnLine();
  const bool namesFollow = isWordStart(ahead);
  operandMayBegin_ = true;
  switch (word) {
    case Word::kFunction:
      enterFunction(true);
      return;
    case Word::kClass:
      enterClass(true);
      return;
    case Word::kConst:
    case Word::kVar:
    case Word::kLet:
      if (word == Word::kLet && !namesFollow && ahead != '{' && ahead != '[' && ahead != '\0')
        break;
      frame.flags |= kDeclares;
      frame.phase = Phase::kDeclare;
      return;
    case Word::kIf:
    case Word::kSwitch:
    case Word::kCatch:
    case Word::kWith:
      note(token.line, Kind::kLogic);
      frame.phase = Phase::kControl;
      return;
    case Word::kFor:
    case Word::kWhile:
      note(token.line, Kind::kLoop);
      frame.phase = Phase::kControl;
      return;
    case Word::kElse:
    case Word::kTry:
    case Word::kFinally:
      note(token.line, Kind::kLogic);
      return;
    case Word::kDo:
      note(token.line, Kind::kLoop);
      return;
    case Word::kCase:
      note(token.line, Kind::kLogic);
      frame.flags |= kEndsAtColon;
      frame.phase = Phase::kExpression;
      return;
    case Word::kDefault:
      if (ahead != ':') return;
      note(token.line, Kind::kLogic);
      frame.flags |= kEndsAtColon;
      return;
    case Word::kExport:
      return;
    case Word::kAsync:
    case Word::kDeclare:
    case Word::kAbstract:
      if (namesFollow) return;
      break;
    case Word::kEnum:
      if (!namesFollow) break;
      frame.phase = Phase::kTypesHead;
      frame.flags |= kIsEnum;
      return;
    case Word::kInterface:
      if (!namesFollow) break;
      frame.phase = Phase::kTypesHead;
      return;
    case Word::kNamespace:
    case Word::kModule:
      if (!namesFollow && (word == Word::kNamespace || (ahead != '"' && ahead != '\''))) break;
      frame.phase = Phase::kNamespaceHead;
      return;
    case Word::kType:
      if (!namesFollow) break;
      frame.phase = Phase::kTypeAlias;
      return;
    case Word::kReturn:
    case Word::kThrow:
    case Word::kImport:
      frame.phase = Phase::kExpression;
      return;
    default:
      break;
  }
  if (ahead == ':') frame.flags |= kEndsAtColon;
  frame.phase = Phase::kExpression;
  handleWord(token);
}

// One more word, string or number in the head of a member: what was the name is a modifier then.
void Scanner::memberName(const Name& name) {
  Frame& frame = top();
  const Word modifier = wordOf(textOf(frame.target));
  clear(kGets | kSets);
  if (modifier == Word::kGet) frame.flags |= kGets;
  if (modifier == Word::kSet) frame.flags |= kSets;
  frame.target = name;
  frame.phase = Phase::kMember;
  operandMayBegin_ = false;
}

void Scanner::handleWord(const Token& token) {
  Frame& frame = top();
  const Word word = previousWord_;
  switch (frame.phase) {
    case Phase::kStart:
      if (frame.type == FrameType::kBlock) {
        startStatement(token, word);
        return;
      }
      memberName(nameOf(token));
      return;
    case Phase::kMember:
      // A field without a semicolon ends where the next line begins with a word.
      memberName(nameOf(token));
      return;
    case Phase::kDeclare:
      if (word == Word::kEnum) {  // const enum
        frame.phase = Phase::kTypesHead;
        frame.flags |= kIsEnum;
        return;
      }
      frame.target = nameOf(token);
      frame.variable = define(Kind::kVariable, frame.target, false);
      await(frame.variable);
      frame.phase = Phase::kDeclared;
      operandMayBegin_ = false;
      return;
    case Phase::kDeclared:
      frame.phase = Phase::kExpression;  // of, in
      operandMayBegin_ = true;
      return;
    case Phase::kValue:
      if (word == Word::kFunction) {
        enterFunction(false);
        return;
      }
      if (word == Word::kClass) {
        enterClass(false);
        return;
      }
      if (word == Word::kAsync) {
        const char ahead = tokens_.peekOnLine();
        if (isWordStart(ahead) || ahead == '(' || ahead == '<') return;
      }
      if (expectsOperand(word)) {
        frame.phase = Phase::kExpression;
        operandMayBegin_ = true;
        return;
      }
      frame.phase = Phase::kArrowParams;
      lastName_ = nameOf(token);
      operandMayBegin_ = false;
      return;
    case Phase::kFunction:
      if (frame.angles > 0) return;
      if (frame.function == kNone) {
        frame.function = define(Kind::kFunction, nameOf(token), has(kHeadIsStatement));
      } else if (Definition& known = definition(frame.function);
                 text_.substr(known.nameBegin, known.nameEnd - known.nameBegin) == "exports") {
        // module.exports = function name
        known.nameBegin = token.begin;
        known.nameEnd = token.end;
      }
      return;
    case Phase::kClassHead:
      if (frame.angles > 0) return;
      operandMayBegin_ = word == Word::kExtends || word == Word::kImplements;
      if (!operandMayBegin_ && frame.target.line != kNone) {
        if (frame.function == kNone) {
          frame.function = define(Kind::kClass, nameOf(token), true);
        } else if (Definition& known = definition(frame.function);
                   text_.substr(known.nameBegin, known.nameEnd - known.nameBegin) == "exports") {
          known.nameBegin = token.begin;
          known.nameEnd = token.end;
        }
      }
      frame.target.line = kNone;  // what follows is no name
      return;
    case Phase::kTypesHead:
      if (frame.function == kNone) {
        frame.function =
            define(has(kIsEnum) ? Kind::kEnum : Kind::kInterface, nameOf(token), false);
      }
      return;
    case Phase::kNamespaceHead:
      if (frame.function == kNone) {
        frame.function = define(Kind::kNamespace, nameOf(token), false);
      } else {
        definition(frame.function).nameEnd = token.end;  // a.b.c
      }
      return;
    case Phase::kTypeAlias:
      if (frame.variable == kNone) {
        frame.variable = define(Kind::kType, nameOf(token), false);
        await(frame.variable);
      }
      operandMayBegin_ = continuesType(word);
      return;
    case Phase::kValueAngle:
      if (frame.angles == 0) {
        frame.phase = Phase::kExpression;
        break;
      }
      operandMayBegin_ = continuesType(word);
      return;
    case Phase::kType:
    case Phase::kArrowType:
    case Phase::kResultType:
    case Phase::kMemberAngle:
      operandMayBegin_ = continuesType(word);
      return;
    case Phase::kMemberTail:
    case Phase::kFunctionTail:
    case Phase::kArrowParams:
      frame.phase = Phase::kExpression;
      break;
    case Phase::kExpression:
    case Phase::kControl:
    case Phase::kDecorator:
      break;
  }
  if (word == Word::kFunction) {
    enterFunction(false);
    return;
  }
  if (word == Word::kClass && operandMayBegin_) {
    enterClass(false);
    return;
  }
  if ((word == Word::kConst || word == Word::kVar) && frame.type == FrameType::kParens) {
    operandMayBegin_ = true;
    return;
  }
  operandMayBegin_ = expectsOperand(word) || word == Word::kAs || word == Word::kSatisfies;
  lastName_ = nameOf(token);
}

void Scanner::handleOperand(const Token& token) {
  Frame& frame = top();
  switch (frame.phase) {
    case Phase::kStart:
    case Phase::kMember:
      if (frame.type != FrameType::kBlock) {
        Name name = nameOf(token);
        if (token.type == TokenType::kString && name.end - name.begin >= 2) {
          ++name.begin;
          --name.end;
        }
        memberName(name);
        return;
      }
      frame.phase = Phase::kExpression;
      break;
    case Phase::kNamespaceHead:
      if (frame.function == kNone && token.type == TokenType::kString) {
        frame.function =
            define(Kind::kNamespace, {token.begin + 1, token.end - 1, token.line}, false);
      }
      break;
    case Phase::kValue:
    case Phase::kArrowParams:
    case Phase::kDeclared:
      frame.phase = Phase::kExpression;
      break;
    default:
      break;
  }
  lastName_ = {};
  operandMayBegin_ = false;
  if (token.type == TokenType::kString && token.end - token.begin > 2 &&
      before_.type == TokenType::kPunct && before_.punct == '[') {
    lastName_ = {token.begin + 1, token.end - 1, token.line};
  }
}

void Scanner::openParens() {
  Frame& frame = top();
  if (inAngles() || (readsType(frame.phase) && operandMayBegin_)) {
    push(FrameType::kTypes, ')');
    return;
  }
  bool isControl = false;
  switch (frame.phase) {
    case Phase::kValue:
    case Phase::kValueAngle:
      frame.phase = Phase::kArrowParams;
      break;
    case Phase::kFunction:
      frame.phase = Phase::kFunctionTail;
      break;
    case Phase::kMember:
      if (frame.type == FrameType::kClass) {
        const std::string_view name = textOf(frame.target);
        Kind kind = has(kGets) ? Kind::kGetter : has(kSets) ? Kind::kSetter : Kind::kMethod;
        if (kind == Kind::kMethod && name == "constructor") kind = Kind::kConstructor;
        frame.function = define(kind, frame.target, true);
      }
      clear(kHeadIsStatement | kHeadIsValue);
      set(kHeadIsMember);
      frame.phase = Phase::kMemberTail;
      break;
    case Phase::kDecorator:
      frame.phase = Phase::kStart;
      break;
    case Phase::kControl:
      isControl = true;
      frame.phase = Phase::kStart;
      break;
    case Phase::kClassHead:
      break;
    default:
      frame.phase = Phase::kExpression;
      break;
  }
  push(FrameType::kParens, ')', Phase::kExpression);
  if (isControl && uncounted_ == 0) set(kIsControl);
}

void Scanner::openBracket() {
  Frame& frame = top();
  if (inAngles() || readsType(frame.phase)) {
    push(FrameType::kTypes, ']');
    return;
  }
  const bool isMember = (frame.type == FrameType::kClass || frame.type == FrameType::kObject) &&
                        (frame.phase == Phase::kStart || frame.phase == Phase::kMember);
  if (isMember) {
    memberName({previous_.begin, previous_.end, previous_.line});
  } else if (frame.phase == Phase::kDeclare) {
    frame.target = {};
    frame.phase = Phase::kDeclared;
  } else if (frame.phase != Phase::kClassHead) {
    frame.phase = Phase::kExpression;
  }
  push(FrameType::kParens, ']', Phase::kExpression);
}

void Scanner::openBrace() {
  Frame& frame = top();
  const bool expectsOperandHere = operandMayBegin_;
  const bool endsStatement =
      has(kHeadIsStatement) || (frame.type == FrameType::kClass && has(kHeadIsMember));
  if (frame.angles > 0) {
    push(FrameType::kTypes, '}');
    return;
  }
  switch (frame.phase) {
    case Phase::kControl:  // catch without parameters
    case Phase::kStart: {
      if (frame.type == FrameType::kObject) {
        push(FrameType::kObject, '}');
        return;
      }
      if (frame.type == FrameType::kClass) {  // static {
        push(FrameType::kBlock, '}');
        if (uncounted_ == 0) set(kEndsStatement);
        return;
      }
      if (wordBefore_ == Word::kExport || wordBefore_ == Word::kDefault) {
        frame.phase = Phase::kExpression;
        push(FrameType::kObject, '}');
        return;
      }
      const std::int32_t head = frame.statementLine;
      push(FrameType::kBlock, '}');
      if (uncounted_ > 0) return;
      top().headLine = head;
      set(kEndsStatement);
      return;
    }
    case Phase::kMember:  // static {
      if (frame.type == FrameType::kClass) {
        push(FrameType::kBlock, '}');
        if (uncounted_ == 0) set(kEndsStatement);
      } else {
        push(FrameType::kObject, '}');
      }
      return;
    case Phase::kFunctionTail:
      frame.phase = Phase::kExpression;
      openBody(has(kHeadIsValue), endsStatement);
      return;
    case Phase::kMemberTail:
    case Phase::kResultType:
      if (frame.phase == Phase::kResultType && expectsOperandHere) {
        push(FrameType::kTypes, '}');
        return;
      }
      if (frame.type == FrameType::kObject && has(kHeadIsMember)) {
        const Kind kind = has(kGets) ? Kind::kGetter : has(kSets) ? Kind::kSetter : Kind::kMethod;
        frame.function = define(kind, frame.target, true);
      }
      frame.phase = Phase::kExpression;
      openBody(has(kHeadIsValue), endsStatement);
      return;
    case Phase::kClassHead:
    case Phase::kNamespaceHead:
    case Phase::kTypesHead: {
      const std::int32_t index = frame.function;
      const Phase phase = frame.phase;
      const bool ends = phase != Phase::kClassHead || has(kHeadIsStatement);
      frame.function = kNone;
      frame.phase = Phase::kExpression;
      push(phase == Phase::kClassHead       ? FrameType::kClass
           : phase == Phase::kNamespaceHead ? FrameType::kBlock
                                            : FrameType::kTypes,
           '}');
      if (uncounted_ > 0) return;
      top().definition = index;
      if (ends) set(kEndsStatement);
      return;
    }
    case Phase::kType:
    case Phase::kTypeAlias:
    case Phase::kArrowType:
    case Phase::kValueAngle:
    case Phase::kMemberAngle:
      push(FrameType::kTypes, '}');
      return;
    case Phase::kDeclare:
      frame.target = {};
      frame.variable = kNone;
      frame.phase = Phase::kDeclared;
      push(FrameType::kObject, '}');
      return;
    case Phase::kValue:
      frame.phase = Phase::kExpression;
      push(FrameType::kObject, '}');
      return;
    default:
      break;
  }
  frame.phase = Phase::kExpression;
  if (!expectsOperandHere && frame.type == FrameType::kBlock) {
    push(FrameType::kBlock, '}');
    if (uncounted_ == 0) set(kEndsStatement);
    return;
  }
  if (before_.type == TokenType::kPunct && before_.punct == kArrow) {
    if (!arrowIsNamed_) note(previous_.line, Kind::kCallback);
    push(FrameType::kBlock, '}');
    return;
  }
  push(FrameType::kObject, '}');
}

void Scanner::handleComma() {
  Frame& frame = top();
  operandMayBegin_ = true;
  if (frame.angles > 0 || frame.phase == Phase::kClassHead) return;
  endAwaited();
  frame.ternaries = 0;
  frame.variable = kNone;
  frame.function = kNone;
  frame.target = {};
  switch (frame.type) {
    case FrameType::kBlock:
      frame.phase = has(kDeclares) ? Phase::kDeclare : Phase::kExpression;
      break;
    case FrameType::kObject:
    case FrameType::kClass:
      clear(kGets | kSets);
      frame.phase = Phase::kStart;
      break;
    default:
      frame.phase = Phase::kExpression;
      break;
  }
}

void Scanner::handleColon() {
  Frame& frame = top();
  operandMayBegin_ = true;
  if (inAngles()) return;
  switch (frame.phase) {
    case Phase::kMember:
      if (frame.type == FrameType::kObject) {
        frame.phase = Phase::kValue;
        return;
      }
      frame.variable = define(Kind::kField, frame.target, false);
      await(frame.variable);
      frame.phase = Phase::kType;
      return;
    case Phase::kMemberTail:
    case Phase::kFunctionTail:
      frame.phase = Phase::kResultType;
      return;
    case Phase::kDeclared:
      frame.phase = Phase::kType;
      return;
    case Phase::kArrowParams:
      if (frame.ternaries == 0 && frame.type != FrameType::kParens) {
        frame.phase = Phase::kArrowType;
        return;
      }
      break;
    case Phase::kType:
    case Phase::kTypeAlias:
    case Phase::kArrowType:
    case Phase::kResultType:
      return;
    default:
      break;
  }
  frame.phase = Phase::kExpression;
  if (frame.ternaries > 0) {
    --frame.ternaries;
  } else if (frame.type == FrameType::kBlock) {
    if (has(kEndsAtColon)) {
      endStatement();
      return;
    }
    frame.target = {};
    frame.phase = Phase::kArrowType;
  } else if (frame.type == FrameType::kParens && frame.closer == ')') {
    frame.target = {};
    frame.phase = Phase::kType;
  }
}

void Scanner::handleAssign() {
  Frame& frame = top();
  operandMayBegin_ = true;
  if (inAngles()) return;  // what a type parameter is if not given
  switch (frame.phase) {
    case Phase::kTypeAlias:
      return;
    case Phase::kMember:
      if (frame.type == FrameType::kClass) {
        frame.variable = define(Kind::kField, frame.target, false);
        await(frame.variable);
      }
      break;
    case Phase::kDeclared:
      break;
    case Phase::kType:
      break;
    default:
      frame.target = lastName_;
      frame.variable = kNone;
      break;
  }
  frame.phase = Phase::kValue;
}

// The name of a value gets its function once the arrow shows that it is one.
void Scanner::handleArrow() {
  Frame& frame = top();
  operandMayBegin_ = true;
  if (frame.phase == Phase::kType || frame.phase == Phase::kTypeAlias ||
      frame.phase == Phase::kResultType || frame.angles > 0) {
    return;
  }
  arrowIsNamed_ = (frame.phase == Phase::kArrowParams || frame.phase == Phase::kArrowType) &&
                  defineValue(Kind::kFunction) != kNone;
  top().phase = Phase::kExpression;
}

void Scanner::handleAngle(const Token& token) {
  Frame& frame = top();
  const bool opens = token.punct == '<';
  switch (frame.phase) {
    case Phase::kValue:
      if (opens) {
        frame.phase = Phase::kValueAngle;
        frame.angles = 1;
        operandMayBegin_ = true;
        return;
      }
      break;
    case Phase::kMember:
      if (opens) {
        frame.phase = Phase::kMemberAngle;
        frame.angles = 1;
        operandMayBegin_ = true;
        return;
      }
      break;
    case Phase::kType:
    case Phase::kTypeAlias:
    case Phase::kArrowType:
    case Phase::kResultType:
    case Phase::kValueAngle:
    case Phase::kMemberAngle:
    case Phase::kFunction:
    case Phase::kClassHead:
    case Phase::kTypesHead:
      if (opens) {
        ++frame.angles;
      } else if (frame.angles > 0) {
        --frame.angles;
      }
      operandMayBegin_ = opens;
      if (!opens && frame.angles == 0 && frame.phase == Phase::kMemberAngle) {
        frame.phase = Phase::kMember;
      }
      return;
    default:
      break;
  }
  frame.phase = Phase::kExpression;
  operandMayBegin_ = true;
}

void Scanner::handlePunct(const Token& token) {
  Frame& frame = top();
  const Name name = std::exchange(lastName_, {});
  switch (token.punct) {
    case '(':
      openParens();
      return;
    case '[':
      openBracket();
      return;
    case '{':
      openBrace();
      return;
    case ')':
    case ']':
    case '}':
      lastName_ = name;
      close(token.punct);
      return;
    case kTemplateOpen:
      if (readsType(frame.phase)) {
        push(FrameType::kTypes, '}');
      } else {
        if (frame.phase != Phase::kClassHead) frame.phase = Phase::kExpression;
        push(FrameType::kParens, '}', Phase::kExpression);
      }
      if (uncounted_ == 0) set(kIsTemplate);
      return;
    case kJsxOpen:
      hasReadJsx_ = true;
      frame.phase = Phase::kExpression;
      push(FrameType::kJsxTag, 0);
      return;
    case ';':
      if (frame.type == FrameType::kBlock || frame.type == FrameType::kClass) {
        endStatement();
      } else {
        handleComma();
      }
      return;
    case ',':
      handleComma();
      return;
    case ':':
      handleColon();
      return;
    case '=':
      lastName_ = name;
      handleAssign();
      lastName_ = {};
      return;
    case kArrow:
      handleArrow();
      return;
    case '<':
    case '>':
      handleAngle(token);
      return;
    case '@':
      if (frame.phase == Phase::kStart || frame.type == FrameType::kParens) {
        if (frame.type != FrameType::kParens) frame.phase = Phase::kDecorator;
        return;
      }
      break;
    case '.':
      operandMayBegin_ = false;
      if (frame.phase == Phase::kArrowParams || frame.phase == Phase::kStart) {
        frame.phase = Phase::kExpression;
      }
      return;
    case '?':
      operandMayBegin_ = true;
      if (inAngles() || frame.phase == Phase::kMember || readsType(frame.phase)) return;
      // An optional parameter has no : of its own before its type.
      if (const char ahead = tokens_.peekOnLine(); ahead != ':' && ahead != ')' && ahead != ',' &&
                                                   ahead != '=' && frame.ternaries < 0xFFFE) {
        ++frame.ternaries;
      } else {
        lastName_ = name;
      }
      if (frame.phase != Phase::kClassHead) frame.phase = Phase::kExpression;
      return;
    case '!':
      // Behind an operand it only asserts, and what it asserts may still get a value.
      if (!operandMayBegin_) {
        lastName_ = name;
        return;
      }
      break;
    case '*':
      if (frame.phase == Phase::kFunction || frame.phase == Phase::kMember ||
          (frame.phase == Phase::kStart && frame.type != FrameType::kBlock)) {
        return;
      }
      break;
    case kIncrement:
      if (frame.phase == Phase::kStart || frame.phase == Phase::kValue ||
          frame.phase == Phase::kArrowParams) {
        frame.phase = Phase::kExpression;
      }
      return;
    default:
      break;
  }
  operandMayBegin_ = true;
  if (!inAngles() && !readsType(frame.phase) && frame.phase != Phase::kClassHead) {
    frame.phase = Phase::kExpression;
  }
}

}  // namespace

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
