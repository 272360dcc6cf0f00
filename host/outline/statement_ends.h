// Where the module's reading of other text comes to nothing before the text ends: at a quote or a
// parenthesis without its partner, at a brace that closes what was never opened, or in a last
// statement that nothing ends.
#pragma once

#include <cstddef>
#include <string_view>

namespace host::outline {

struct StatementEnds {
  // Line feeds before the end of the last statement that has one; npos without a statement.
  std::size_t lastLine = std::string_view::npos;
  // Line feeds before the first letter or digit behind it; npos if there are none to speak of: of a
  // comment the module keeps a letter.
  std::size_t unendedLine = std::string_view::npos;
};

// The text is cleaned.
StatementEnds findStatementEnds(std::string_view text);

}  // namespace host::outline
