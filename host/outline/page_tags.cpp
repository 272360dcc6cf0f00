#include "outline/page_tags.h"

#include <algorithm>

namespace host::outline {
namespace {

constexpr std::string_view kScriptEnd = "</script>";
constexpr std::size_t kMaxTagBytes = 10'000;  // the rest of a longer tag is ignored

}  // namespace

void PageTags::countLines(std::size_t end, bool inTag) {
  const auto count = std::count(text_.begin() + static_cast<std::ptrdiff_t>(position_),
                                text_.begin() + static_cast<std::ptrdiff_t>(end), '\n');
  line_ += static_cast<std::size_t>(count);
  if (!inTag) recordLine_ += static_cast<std::int32_t>(count);
  position_ = end;
}

bool PageTags::next(PageTag& tag) {
  while (true) {
    const std::size_t open = text_.find('<', position_);
    if (open == std::string_view::npos) return false;
    countLines(open, false);
    const std::size_t close = text_.find('>', open);
    if (close == std::string_view::npos) return false;
    tag.text = text_.substr(open + 1, std::min(close - open - 1, kMaxTagBytes));
    tag.recordLine = recordLine_;
    tag.line = lines_.sourceLine(line_);
    countLines(close + 1, true);
    if (tag.text.starts_with("!--") || tag.text.starts_with("!DOCTYPE") ||
        tag.text.starts_with('?') || tag.text.starts_with('/')) {
      continue;
    }
    const bool mayBeScript = !noScriptEnds_ && tag.text.starts_with("script") &&
                             tag.text.find("src=") == std::string_view::npos;
    const std::size_t end =
        mayBeScript ? text_.find(kScriptEnd, position_) : std::string_view::npos;
    tag.isInlineScript = end != std::string_view::npos;
    if (mayBeScript && !tag.isInlineScript) noScriptEnds_ = true;
    if (tag.isInlineScript) {
      tag.script = text_.substr(position_, end - position_);
      tag.scriptLine = line_;
      tag.scriptRecordLine = recordLine_ + 1;
      countLines(end + kScriptEnd.size(), false);
    }
    return true;
  }
}

}  // namespace host::outline
