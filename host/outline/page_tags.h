// The tags of a page in the order in which the module makes records of them, each with the line
// that its record has and its line in the source.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "outline/cleaned_text.h"

namespace host::outline {

struct PageTag {
  std::int32_t recordLine = 0;
  std::int32_t line = 0;
  std::string_view text;  // between < and >
  bool isInlineScript = false;
  std::string_view script;            // the text of an inline script
  std::size_t scriptLine = 0;         // index in the cleaned text of the line the script begins on
  std::int32_t scriptRecordLine = 0;  // what records call that line
};

class PageTags {
 public:
  explicit PageTags(const CleanedText& page) : text_(page.text), lines_(page.lines) {}

  // The next opening tag; false behind the last.
  bool next(PageTag& tag);

 private:
  void countLines(std::size_t end, bool inTag);

  std::string_view text_;
  const LineMap& lines_;
  std::size_t position_ = 0;
  std::size_t line_ = 0;         // line feeds so far
  bool noScriptEnds_ = false;    // behind the position
  std::int32_t recordLine_ = 0;  // line feeds so far but for those inside tags
};

}  // namespace host::outline
