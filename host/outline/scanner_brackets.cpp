// What an opening bracket opens.
#include "outline/scanner_parts.h"

namespace host::outline {

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
  const bool mayBeOperand = operandMayBegin_;
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
      if (frame.phase == Phase::kResultType && mayBeOperand) {
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
  if (!mayBeOperand && frame.type == FrameType::kBlock) {
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

}  // namespace host::outline
