// Reading of tag text and of page text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/export.h"

// The text trimmed and reduced, cut to maxLength bytes plus "..." if it is longer, with a backslash
// before each double quote. The cut comes first, so the result may be longer than that.
QUORL_API std::string ExtractTextPreview(const std::string& text, std::size_t maxLength);

namespace html {

std::string textPreview(std::string_view text, std::size_t maxLength);

}  // namespace html
