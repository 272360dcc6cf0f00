#include "tree/id_table.h"

#include <cstdint>
#include <limits>
#include <random>
#include <unordered_map>

#include <gtest/gtest.h>

namespace {

using tree::IdTable;

constexpr std::int32_t kLeastId = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMostId = std::numeric_limits<std::int32_t>::max();

TEST(IdTable, EmptyTable) {
  const IdTable table;
  for (const std::int32_t id : {0, 1, -1, 1000, kLeastId, kMostId})
    EXPECT_EQ(table.find(id), IdTable::kAbsent) << id;
}

TEST(IdTable, DenseIds) {
  constexpr std::int32_t kCount = 100'000;
  IdTable table;
  for (std::int32_t id = 0; id < kCount; ++id) table.insert(id, kCount - id);
  for (std::int32_t id = 0; id < kCount; ++id) ASSERT_EQ(table.find(id), kCount - id) << id;
  for (const std::int32_t id : {kCount, kCount + 1, 2 * kCount, 10 * kCount, -1})
    EXPECT_EQ(table.find(id), IdTable::kAbsent) << id;
}

TEST(IdTable, TheValueMayBeZero) {
  IdTable table;
  table.insert(3, 0);
  table.insert(-3, 0);
  table.insert(kMostId, 0);
  EXPECT_EQ(table.find(3), 0);
  EXPECT_EQ(table.find(-3), 0);
  EXPECT_EQ(table.find(kMostId), 0);
  for (const std::int32_t id : {0, 2, 4, -2, -4, kMostId - 1})
    EXPECT_EQ(table.find(id), IdTable::kAbsent) << id;
}

TEST(IdTable, NegativeAndFarIds) {
  IdTable table;
  std::int32_t value = 10;
  for (const std::int32_t id :
       {kMostId, kLeastId, -1, 1'000'000'000, 0, kMostId - 1, kLeastId + 1, 70'000})
    table.insert(id, value++);
  value = 10;
  for (const std::int32_t id :
       {kMostId, kLeastId, -1, 1'000'000'000, 0, kMostId - 1, kLeastId + 1, 70'000})
    EXPECT_EQ(table.find(id), value++) << id;
  for (const std::int32_t id : {1, -2, 69'999, 70'001, 999'999'999, kMostId - 2, kLeastId + 2})
    EXPECT_EQ(table.find(id), IdTable::kAbsent) << id;
}

// Ids inserted while they were far away must still be found once the dense ids reach them.
TEST(IdTable, FarIdsThatTheDenseOnesReach) {
  constexpr std::int32_t kCount = 50'000;
  IdTable table;
  for (std::int32_t id = kCount - 1; id >= 0; id -= 7) table.insert(id, id + 1);
  for (std::int32_t id = 0; id < kCount; ++id)
    if ((kCount - 1 - id) % 7 != 0) table.insert(id, id + 1);
  for (std::int32_t id = 0; id < kCount; ++id) ASSERT_EQ(table.find(id), id + 1) << id;
  EXPECT_EQ(table.find(kCount), IdTable::kAbsent);
}

TEST(IdTable, AgainstAMap) {
  std::mt19937 random(7);
  IdTable table;
  std::unordered_map<std::int32_t, std::int32_t> map;
  for (std::int32_t value = 0; value < 50'000; ++value) {
    const bool isFar = random() % 3 == 0;
    const auto id = static_cast<std::int32_t>(isFar ? random() : random() % 200'000);
    if (map.emplace(id, value).second) table.insert(id, value);
    const auto asked = static_cast<std::int32_t>(random() % 200'000);
    const auto entry = map.find(asked);
    ASSERT_EQ(table.find(asked), entry == map.end() ? IdTable::kAbsent : entry->second) << asked;
  }
  for (const auto& [id, value] : map) ASSERT_EQ(table.find(id), value) << id;
}

}  // namespace
