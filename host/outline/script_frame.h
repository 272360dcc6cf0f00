// The brackets that are open while script text is scanned, and what comes next in each.
#pragma once

#include <cstdint>

namespace host::outline {

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

inline constexpr std::int32_t kNone = -1;

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

inline bool readsType(Phase phase) {
  return phase == Phase::kType || phase == Phase::kTypeAlias || phase == Phase::kArrowType ||
         phase == Phase::kResultType || phase == Phase::kValueAngle || phase == Phase::kMemberAngle;
}

}  // namespace host::outline
