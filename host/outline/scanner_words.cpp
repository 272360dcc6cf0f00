// Words and literals: heads of statements, members, functions and classes.
#include "outline/scanner_parts.h"

namespace host::outline {

namespace {

bool isWordStart(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' ||
         byte == '$' || static_cast<unsigned char>(byte) >= 0x80;
}

}  // namespace

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

// A word where a statement begins. Leaves the phase at kExpression unless it is a keyword there.
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
      if (kExpectOperand.has(word)) {
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
      frame.target.line = kNone;  // no name follows
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
      operandMayBegin_ = kContinueType.has(word);
      return;
    case Phase::kValueAngle:
      if (frame.angles == 0) {
        frame.phase = Phase::kExpression;
        break;
      }
      operandMayBegin_ = kContinueType.has(word);
      return;
    case Phase::kType:
    case Phase::kArrowType:
    case Phase::kResultType:
    case Phase::kMemberAngle:
      operandMayBegin_ = kContinueType.has(word);
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
  operandMayBegin_ = kExpectOperand.has(word) || word == Word::kAs || word == Word::kSatisfies;
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

}  // namespace host::outline
