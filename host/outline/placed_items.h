// Items with their place in the source, nested by containment.
#pragma once

#include <cstddef>
#include <vector>

#include "outline/item.h"

namespace host::outline {

struct PlacedItem {
  Item item;
  // Where several items stand on a line their bytes tell which contains which; 0 where they do not.
  std::size_t begin = 0;
  std::size_t end = 0;
};

// Sorts the items by line, keeping the order of those of one line, and finds parents and depths.
std::vector<Item> nest(std::vector<PlacedItem> placed);

}  // namespace host::outline
