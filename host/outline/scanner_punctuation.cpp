// Punctuation other than brackets: ends of members, values, types and arrows.
#include "outline/scanner_parts.h"

namespace host::outline {

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
  if (opens && (frame.phase == Phase::kValue || frame.phase == Phase::kMember)) {
    frame.phase = frame.phase == Phase::kValue ? Phase::kValueAngle : Phase::kMemberAngle;
    frame.angles = 1;
    operandMayBegin_ = true;
    return;
  }
  switch (frame.phase) {
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

}  // namespace host::outline
