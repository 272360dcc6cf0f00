// Turns the raw text of a file into the text that the tree builder reads: removes comments and
// inactive preprocessor branches, replaces bytes outside printable ASCII by spaces, and removes the
// indentation of most lines. Every file goes through the same passes, whatever its type.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/export.h"

// Groups functions; has no data. Only the functions are exported.
class Cleaner {
 public:
  // Runs all passes in order. knownDefines decides conditional directives; each name that a
  // directive mentions is appended to defines once. keepStrings has no effect.
  QUORL_API std::string CleanText(std::string text, std::vector<std::string> knownDefines,
                                  std::vector<std::string>& defines);
  QUORL_API std::string CleanText(std::string text, std::vector<std::string> knownDefines,
                                  std::vector<std::string>& defines, bool keepStrings);

  // Removes "<!--" through "-->", also inside strings; a comment's line feeds stay.
  QUORL_API std::string RemoveHTMLComments(std::string text);

  // Same as replaceAll.
  QUORL_API void ReplaceAll(std::string& text, const std::string& from, const std::string& to);

  // Removes script comments; strings stay in spite of the name, whatever keepStrings is.
  // required: it also replaces bytes outside 0x20..0x7E (except line feed and carriage return) by
  // spaces, drops a "[" at the start of a statement, and drops everything from "TTTTT" to ";".
  QUORL_API std::string UncommentAndUnquoteText(std::string text);
  QUORL_API std::string UncommentAndUnquoteText(std::string text, bool keepStrings);

  // Removes directive lines and the lines of inactive branches; every line feed stays. A directive
  // line longer than 50 bytes is reported on standard output.
  QUORL_API std::string PreProcessorSimulation(std::string text,
                                               std::vector<std::string> knownDefines,
                                               std::vector<std::string>& defines);

  // Returns whether a conditional directive opens an active branch. previousState is 1 if the
  // branch at this level is active, 0 if not; -1 makes every answer false.
  QUORL_API bool GetPreProcessorDirectiveActiveState(std::string line, std::int32_t previousState,
                                                     std::vector<std::string> knownDefines);

  // Splits a directive line into its keyword and, as one part, everything after it. parts must be
  // empty.
  QUORL_API void CleanerPartsList(std::string line, std::vector<std::string>& parts);
};

namespace cleaner {

// The passes behind the exported functions. Each works in place: no pass lengthens the text.
void clean(std::string& text, const std::vector<std::string>& knownDefines,
           std::vector<std::string>& defines);
void removePageComments(std::string& text);
void stripComments(std::string& text);
void simulatePreprocessor(std::string& text, const std::vector<std::string>& knownDefines,
                          std::vector<std::string>& defines);

// A directive line's keyword and argument; only the first count of the two are set.
struct DirectiveParts {
  int count = 0;
  std::string keyword;
  std::string argument;
};
DirectiveParts splitDirective(std::string_view line);
bool opensLiveBranch(const DirectiveParts& parts, int previousState,
                     const std::vector<std::string>& knownDefines);

}  // namespace cleaner
