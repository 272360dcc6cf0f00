// The items of a page: elements, links and inline scripts with their lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "outline/placed_items.h"

namespace host::outline {

// The answer is the module's for the source. Items are in the order of the records, and definitions
// without a record behind them. fault becomes what is wrong with the answer, if anything is.
std::vector<PlacedItem> outlinePage(std::string_view source, std::string_view answer,
                                    std::string& fault);

}  // namespace host::outline
