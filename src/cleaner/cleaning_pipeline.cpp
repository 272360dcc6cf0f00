#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "cleaner/cleaner.h"
#include "text/string_primitives.h"

namespace cleaner {
namespace {

constexpr std::string_view kCommentOpen = "<!--";
constexpr std::string_view kCommentClose = "-->";

// required: a carriage return and line feed become two line feeds, so line numbers double.
void replaceTabsAndCarriageReturns(std::string& text) {
  for (char& byte : text) byte = byte == '\t' ? ' ' : byte == '\r' ? '\n' : byte;
}

}  // namespace

void removePageComments(std::string& text) {
  std::size_t open = text.find(kCommentOpen);
  std::size_t kept = std::min(open, text.size());  // the result so far is text[0, kept)
  while (open != std::string::npos) {
    const std::size_t inside = open + kCommentOpen.size();
    const std::size_t close = std::min(text.find(kCommentClose, inside), text.size());
    // Only the line feeds of a comment stay, so that later lines keep their numbers.
    for (std::size_t i = inside; i < close; ++i) {
      if (text[i] == '\n') text[kept++] = '\n';
    }
    const std::size_t behind = std::min(close + kCommentClose.size(), text.size());
    open = text.find(kCommentOpen, behind);
    const std::size_t length = std::min(open, text.size()) - behind;
    std::memmove(text.data() + kept, text.data() + behind, length);
    kept += length;
  }
  text.resize(kept);
}

void clean(std::string& text, const std::vector<std::string>& knownDefines,
           std::vector<std::string>& defines) {
  removePageComments(text);
  replaceTabsAndCarriageReturns(text);
  stripComments(text);
  simulatePreprocessor(text, knownDefines, defines);
}

}  // namespace cleaner

std::string Cleaner::CleanText(std::string text, std::vector<std::string> knownDefines,
                               std::vector<std::string>& defines) {
  return CleanText(std::move(text), std::move(knownDefines), defines, false);
}

std::string Cleaner::CleanText(std::string text, std::vector<std::string> knownDefines,
                               std::vector<std::string>& defines, bool keepStrings) {
  static_cast<void>(keepStrings);
  cleaner::clean(text, knownDefines, defines);
  return text;
}

std::string Cleaner::RemoveHTMLComments(std::string text) {
  cleaner::removePageComments(text);
  return text;
}

void Cleaner::ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  text::replaceEach(text, from, to);
}
