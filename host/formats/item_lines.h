// An item as a line of the outline or tags formats, for outputs that hold items of many files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "formats/format.h"
#include "outline/item.h"

namespace host {

// Appends a line of the outline format. text begins with the first line of the item.
void showItem(const outline::Item& item, std::size_t level, std::string_view text,
              const FormatSettings& settings, std::string& out);

// Whether the item can be a tag, and the path one of a tags file.
bool isTag(const outline::Item& item);
bool fitsIntoTags(std::string_view path);

// A line of the ctags format. parent is the innermost tag around the item, or null.
std::string tagLine(const outline::Item& item, std::string_view path, const outline::Item* parent);

// The lines that come first.
void beginCtags(const FormatSettings& settings, std::string& out);

}  // namespace host
