// The cleaning passes in their plain reading: each works on a copy, looks at one byte after the
// other and keeps a flag for each thing that it knows.
#pragma once

#include <string>
#include <vector>

namespace reference {

std::string removeHtmlComments(const std::string& text);
std::string stripComments(const std::string& text);

// What the last pass gives beside its text: report is what it writes to standard output.
struct Simulated {
  std::string text;
  std::vector<std::string> defines;
  std::string report;
};
Simulated simulatePreprocessor(const std::string& text,
                               const std::vector<std::string>& knownDefines,
                               const std::vector<std::string>& defines);

bool opensLiveBranch(const std::string& line, int previousState,
                     const std::vector<std::string>& knownDefines);
std::vector<std::string> directiveParts(const std::string& line);

// All passes in their order.
Simulated cleanText(const std::string& text, const std::vector<std::string>& knownDefines,
                    const std::vector<std::string>& defines);

}  // namespace reference
