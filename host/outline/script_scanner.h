// What script text defines, and where each thing and each bracket ends.
//
// One pass over the tokens with a stack of open brackets, for JavaScript, TypeScript and JSX. It
// knows just enough syntax to distinguish a definition from a call and a type from a value.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "outline/comment_lines.h"
#include "outline/item.h"

namespace host::outline {

struct Definition {
  Kind kind = Kind::kStatement;
  // Declared, or the value of a name. Otherwise a variable, or a function with a name of its own
  // that is handed on at once.
  bool isMain = false;
  std::uint32_t nameBegin = 0;  // byte offsets in the text
  std::uint32_t nameEnd = 0;
  std::int32_t firstLine = 0;  // of the name
  std::int32_t lastLine = 0;   // 0 if its end was not found
};

struct LineFacts {
  std::int32_t lastLine = 0;     // where the outermost bracket that the line leaves open closes; 0
  Kind kind = Kind::kStatement;  // kLogic, kLoop, kCallback or kStatement
};

struct ScriptStructure {
  std::vector<Definition> definitions;  // in the order of the source
  std::vector<LineFacts> lines;         // from the first line on; may be shorter than the text
  std::vector<CommentLines> comments;   // that begin their lines and have several
};

struct ScriptDialect {
  bool mayHoldJsx = true;  // not in .ts, where <T> before an operand is a type
};

// firstLine is the number of the text's first line. Of lines beyond maxLines only brackets are
// followed.
ScriptStructure scanScript(std::string_view text, std::int32_t firstLine, std::int32_t maxLines,
                           ScriptDialect dialect);

}  // namespace host::outline
