#include "tree/id_table.h"

namespace tree {
namespace {

// How far past the number of entries the array may extend before an id goes into the map.
constexpr std::size_t kSlack = 4096;

}  // namespace

void IdTable::insert(std::int32_t id, std::int32_t value) {
  ++count_;
  const auto index = static_cast<std::size_t>(id);
  if (id < 0 || index >= 4 * count_ + kSlack) {
    sparse_.emplace(id, value);
    return;
  }
  if (index >= dense_.size()) dense_.resize(2 * index + kSlack, kAbsent);
  dense_[index] = value;
}

}  // namespace tree
