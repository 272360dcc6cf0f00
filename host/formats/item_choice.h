// Which items of an outline the outline and tags formats hold, and how these are nested.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "formats/format.h"
#include "outline/item.h"

namespace host {

struct ChosenItem {
  const outline::Item* item = nullptr;
  std::int32_t parent = -1;  // index of the innermost chosen item that contains it
  std::size_t level = 0;     // how many chosen items contain it
};

// The items of the kinds that the settings ask for or, if they ask for none, what defines
// something: of variables only those outside of functions and classes. The items have to outlive
// the answer.
std::vector<ChosenItem> chooseItems(const std::vector<outline::Item>& items,
                                    const FormatSettings& settings, bool withFields);

}  // namespace host
