// Maps nodeID to a number. A run's ids are dense from 0, so this is an array; ids that a caller
// made up (negative, or far apart) go into a map beside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tree {

class IdTable {
 public:
  static constexpr std::int32_t kAbsent = -1;

  // Returns the value for id, kAbsent if there is none.
  std::int32_t find(std::int32_t id) const {
    const auto index = static_cast<std::size_t>(id);
    if (id >= 0 && index < dense_.size() && dense_[index] != kAbsent) return dense_[index];
    // The array may have grown past an id that is in the map.
    if (sparse_.empty()) return kAbsent;
    const auto entry = sparse_.find(id);
    return entry == sparse_.end() ? kAbsent : entry->second;
  }

  // Enters value, which must not be kAbsent, for the id. Returns false if the id is already there.
  bool insertNew(std::int32_t id, std::int32_t value) {
    if (find(id) != kAbsent) return false;
    insert(id, value);
    return true;
  }

  // The same for an id that is known to be new.
  void insert(std::int32_t id, std::int32_t value);

 private:
  std::vector<std::int32_t> dense_;
  std::unordered_map<std::int32_t, std::int32_t> sparse_;
  std::size_t count_ = 0;
};

}  // namespace tree
