#include "formats/item_choice.h"

namespace host {
namespace {

using outline::Item;
using outline::Kind;

// What is inside of these is none of the file's own.
bool isScope(Kind kind) {
  switch (kind) {
    case Kind::kFunction:
    case Kind::kMethod:
    case Kind::kConstructor:
    case Kind::kGetter:
    case Kind::kSetter:
    case Kind::kClass:
    case Kind::kInterface:
    case Kind::kEnum:
    case Kind::kCallback:
      return true;
    default:
      return false;
  }
}

bool isChosenByDefault(Kind kind, bool isInScope, bool withFields) {
  switch (kind) {
    case Kind::kNamespace:
    case Kind::kType:
    case Kind::kBlock:
      return true;
    case Kind::kVariable:
      return !isInScope;
    case Kind::kField:
      return withFields;
    default:
      return isScope(kind) && kind != Kind::kCallback;
  }
}

}  // namespace

std::vector<ChosenItem> chooseItems(const std::vector<Item>& items, const FormatSettings& settings,
                                    bool withFields) {
  struct Around {
    std::int32_t chosen;  // the innermost chosen item, the item itself included
    bool isInScope;
  };
  std::vector<Around> around;
  around.reserve(items.size());
  std::vector<ChosenItem> chosen;
  for (const Item& item : items) {
    const Around outer =
        item.parent < 0 ? Around{-1, false} : around[static_cast<std::size_t>(item.parent)];
    const bool isChosen = settings.onlyKinds
                              ? outline::holds(*settings.onlyKinds, item.kind)
                              : isChosenByDefault(item.kind, outer.isInScope, withFields);
    around.push_back({outer.chosen, outer.isInScope || isScope(item.kind)});
    if (!isChosen) continue;
    around.back().chosen = static_cast<std::int32_t>(chosen.size());
    const std::size_t level =
        outer.chosen < 0 ? 0 : chosen[static_cast<std::size_t>(outer.chosen)].level + 1;
    chosen.push_back({&item, outer.chosen, level});
  }
  return chosen;
}

}  // namespace host
