// What the outline of a script takes from its source alone. It needs no records, so it can be read
// while the module makes them.
#pragma once

#include <string_view>

#include "outline/cleaned_text.h"
#include "outline/script_items.h"
#include "outline/source_lines.h"

namespace host::outline {

struct ScriptSource {
  // The source has to outlive it. The path's extension gives the dialect.
  ScriptSource(std::string_view source, std::string_view path);

  LineMap map;
  SourceLines lines;
  ScriptItems items;

 private:
  ScriptSource(std::string_view source, ScriptDialect dialect);
};

}  // namespace host::outline
