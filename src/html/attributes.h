// Reading of one tag's text, which is what stands between "<" and ">", and of page text. There is
// no page parser behind it: each function searches for a substring, case-sensitive, and takes the
// first hit, so "data-href=" holds a href and "grid=" an id.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/export.h"

// The value behind "href=" or "href =", empty if there is none. An unquoted value runs to white
// space or ">"; a quoted one that is not closed is none.
QUORL_API std::string ExtractHrefValue(const std::string& tagText);

// The value behind "src=". required: a space before the "=" loses it.
QUORL_API std::string ExtractSrcValue(const std::string& tagText);

// The element's short name: "div#main", "div.first-class", "script[src]", "link[href]",
// "form[action]" or the bare name, which only a space ends.
QUORL_API std::string GetElementIdentifier(const std::string& tagText);

// The text trimmed and reduced, cut to maxLength bytes plus "..." if it is longer, with a backslash
// before each double quote. The cut comes first, so the result may be longer than that.
QUORL_API std::string ExtractTextPreview(const std::string& text, std::size_t maxLength);

namespace html {

std::string_view hrefValue(std::string_view tagText);
std::string_view srcValue(std::string_view tagText);
std::string elementIdentifier(std::string_view tagText);
std::string textPreview(std::string_view text, std::size_t maxLength);

}  // namespace html
