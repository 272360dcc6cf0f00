// Reads the text of one tag (everything between "<" and ">") and page text. This is not an HTML
// parser: each function is a case-sensitive substring search that takes the first hit, so
// "data-href=" holds an href and "grid=" an id.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/export.h"

// Returns the value after "href=" or "href =", empty if there is none. An unquoted value ends at
// white space or ">"; a quoted value without a closing quote counts as none.
QUORL_API std::string ExtractHrefValue(const std::string& tagText);

// Returns the value after "src=". required: a space before the "=" loses it.
QUORL_API std::string ExtractSrcValue(const std::string& tagText);

// Returns the element's short name: "div#main", "div.first-class", "script[src]", "link[href]",
// "form[action]" or the bare name, which only a space ends.
QUORL_API std::string GetElementIdentifier(const std::string& tagText);

// Returns the text trimmed and reduced, cut to maxLength bytes plus "..." if it is longer, with a
// backslash before each double quote. The cut comes first, so the result may be longer than that.
QUORL_API std::string ExtractTextPreview(const std::string& text, std::size_t maxLength);

namespace html {

std::string_view hrefValue(std::string_view tagText);
std::string_view srcValue(std::string_view tagText);
std::string elementIdentifier(std::string_view tagText);
std::string textPreview(std::string_view text, std::size_t maxLength);

}  // namespace html
