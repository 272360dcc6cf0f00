// The reading of one tag's text and of page text, plainly: copies, and a search for each question.
#pragma once

#include <cstddef>
#include <string>

namespace reference {

std::string hrefValue(const std::string& tagText);
std::string srcValue(const std::string& tagText);
std::string elementIdentifier(const std::string& tagText);
std::string textPreview(const std::string& text, std::size_t maxLength);

}  // namespace reference
