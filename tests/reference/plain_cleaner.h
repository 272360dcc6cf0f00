// Reference implementation of the cleaning passes: each works on a copy, byte by byte, with one
// flag per piece of state.
#pragma once

#include <string>
#include <vector>

namespace reference {

std::string removeHtmlComments(const std::string& text);
std::string stripComments(const std::string& text);

// The result of the last pass besides its text: report is what it writes to standard output.
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

// Runs all passes in order.
Simulated cleanText(const std::string& text, const std::vector<std::string>& knownDefines,
                    const std::vector<std::string>& defines);

}  // namespace reference
