#include "outline/placed_items.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace host::outline {
namespace {

// Of two items in order.
bool contains(const PlacedItem& outer, const PlacedItem& inner) {
  if (inner.item.firstLine < outer.item.firstLine || inner.item.lastLine > outer.item.lastLine) {
    return false;
  }
  const bool haveBytes = outer.end > 0 && inner.end > 0;
  return !haveBytes || (inner.begin >= outer.begin && inner.end <= outer.end);
}

}  // namespace

std::vector<Item> nest(std::vector<PlacedItem> placed) {
  std::stable_sort(placed.begin(), placed.end(), [](const PlacedItem& a, const PlacedItem& b) {
    return a.item.firstLine < b.item.firstLine;
  });
  std::vector<Item> items;
  items.reserve(placed.size());
  std::vector<std::size_t> open;  // indices of the items that contain the one before
  for (std::size_t i = 0; i < placed.size(); ++i) {
    while (!open.empty() && !contains(placed[open.back()], placed[i])) open.pop_back();
    Item& item = placed[i].item;
    item.parent = open.empty() ? -1 : static_cast<std::int32_t>(open.back());
    item.depth = static_cast<std::int32_t>(open.size());
    open.push_back(i);
    items.push_back(std::move(item));
  }
  return items;
}

}  // namespace host::outline
