// The heads of definitions, for people.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "outline/item.h"

namespace host {

// Where the name stands on the line as a word of its own; npos if it does not.
std::size_t findName(std::string_view line, std::string_view name);

// What follows the name of an item: the parameters of a function, what a class extends; blanks are
// single. text begins with the first line of the item.
std::string signatureOf(const outline::Item& item, std::string_view text);

}  // namespace host
