#include "outline/placed_items.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
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
  // Most often only the definitions at the end are out of order. Numbers are moved, not items.
  std::vector<std::uint32_t> order(placed.size());
  std::iota(order.begin(), order.end(), 0U);
  const auto isBefore = [&placed](std::uint32_t a, std::uint32_t b) {
    return placed[a].item.firstLine < placed[b].item.firstLine;
  };
  if (!std::is_sorted(order.begin(), order.end(), isBefore)) {
    std::stable_sort(order.begin(), order.end(), isBefore);
  }
  std::vector<Item> items;
  items.reserve(placed.size());
  struct Open {
    std::int32_t index;        // of the item
    const PlacedItem* placed;  // without its name
  };
  std::vector<Open> open;  // the items that contain the one before
  for (const std::uint32_t number : order) {
    PlacedItem& next = placed[number];
    while (!open.empty() && !contains(*open.back().placed, next)) open.pop_back();
    next.item.parent = open.empty() ? -1 : open.back().index;
    next.item.depth = static_cast<std::int32_t>(open.size());
    open.push_back({static_cast<std::int32_t>(items.size()), &next});
    items.push_back(std::move(next.item));
  }
  return items;
}

}  // namespace host::outline
