// Reference implementation of the reading of tag text and page text: copies, and a search per
// question.
#pragma once

#include <cstddef>
#include <string>

namespace reference {

std::string hrefValue(const std::string& tagText);
std::string srcValue(const std::string& tagText);
std::string elementIdentifier(const std::string& tagText);
std::string textPreview(const std::string& text, std::size_t maxLength);

}  // namespace reference
