// The items of a page: elements, links and inline scripts with their lines.
#pragma once

#include <string_view>
#include <vector>

#include "outline/placed_items.h"
#include "records/record_reader.h"

namespace host::outline {

// The records are the module's for the source, with texts without escapes. Items are in the order
// of the records, and definitions without a record behind them. onRecord may be null.
std::vector<PlacedItem> outlinePage(std::string_view source, RecordReader& records,
                                    const RecordAction& onRecord);

}  // namespace host::outline
