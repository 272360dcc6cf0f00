// Items with their place in the source, nested by containment.
#pragma once

#include <cstddef>
#include <vector>

#include "outline/item.h"

namespace host::outline {

struct PlacedItem {
  Item item;
  // Order the items of one line by containment; 0 if it has only one.
  std::size_t begin = 0;
  std::size_t end = 0;
};

// Sorts the items by line, keeping the order of those of one line, and finds parents and depths.
std::vector<Item> nest(std::vector<PlacedItem> placed);

}  // namespace host::outline
