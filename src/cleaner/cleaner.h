// Turns the raw text of a file into the text that the tree builder reads: comments and inactive
// preprocessor branches go, bytes outside printable ASCII become spaces, most lines lose their
// indentation. Every file takes the same passes, whatever its kind.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/export.h"

// A holder of functions, without data. Only its functions are exported.
class Cleaner {
 public:
  // All passes in their order. knownDefines decides conditional directives; defines receives each
  // name that one mentions, behind what it holds, once. keepStrings has no effect.
  QUORL_API std::string CleanText(std::string text, std::vector<std::string> knownDefines,
                                  std::vector<std::string>& defines);
  QUORL_API std::string CleanText(std::string text, std::vector<std::string> knownDefines,
                                  std::vector<std::string>& defines, bool keepStrings);

  // The text without "<!--" up to "-->"; a comment's line feeds stay. Strings are not known.
  QUORL_API std::string RemoveHTMLComments(std::string text);

  // As replaceAll.
  QUORL_API void ReplaceAll(std::string& text, const std::string& from, const std::string& to);

  // The text without script comments; strings stay in spite of the name, whatever keepStrings is.
  // required: it also turns bytes outside 0x20..0x7E (but line feeds and carriage returns) into
  // spaces, drops a "[" at the start of a statement, and drops what stands from "TTTTT" to ";".
  QUORL_API std::string UncommentAndUnquoteText(std::string text);
  QUORL_API std::string UncommentAndUnquoteText(std::string text, bool keepStrings);

  // The text without directive lines and the lines of branches that are not live; each line feed
  // stays. A directive line of more than 50 bytes is reported on standard output.
  QUORL_API std::string PreProcessorSimulation(std::string text,
                                               std::vector<std::string> knownDefines,
                                               std::vector<std::string>& defines);

  // Whether a conditional directive opens a live branch. previousState is 1 or 0 for a level whose
  // branch is live or not, and -1 makes every answer false.
  QUORL_API bool GetPreProcessorDirectiveActiveState(std::string line, std::int32_t previousState,
                                                     std::vector<std::string> knownDefines);

  // Splits a directive line into its keyword and, as one part, all behind it. parts must be empty.
  QUORL_API void CleanerPartsList(std::string line, std::vector<std::string>& parts);
};

namespace cleaner {

// The passes behind the doors. Each works in place: no pass makes a text longer.
void clean(std::string& text, const std::vector<std::string>& knownDefines,
           std::vector<std::string>& defines);
void removePageComments(std::string& text);
void stripComments(std::string& text);
void simulatePreprocessor(std::string& text, const std::vector<std::string>& knownDefines,
                          std::vector<std::string>& defines);

// A directive line's keyword and argument; only the first count of them are there.
struct DirectiveParts {
  int count = 0;
  std::string keyword;
  std::string argument;
};
DirectiveParts splitDirective(std::string_view line);
bool opensLiveBranch(const DirectiveParts& parts, int previousState,
                     const std::vector<std::string>& knownDefines);

}  // namespace cleaner
