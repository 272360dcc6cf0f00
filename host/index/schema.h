// The tables of an index; docs/index-format.md describes them for other programs.
#pragma once

#include <cstdint>

#include "index/database.h"
#include "outline/item.h"

namespace host::index {

inline constexpr std::int64_t kApplicationId = 0x514a5349;  // "QJSI"
inline constexpr std::int64_t kFormatVersion = 1;

// An item's id holds its file's id, and below these bits its number in the file's outline.
inline constexpr unsigned kNumberBits = 32;

constexpr std::int64_t itemId(std::int64_t file, std::int64_t number) {
  return file << kNumberBits | number;
}
constexpr std::int64_t fileOf(std::int64_t item) { return item >> kNumberBits; }
constexpr std::int64_t numberOf(std::int64_t item) {
  return item & ((std::int64_t{1} << kNumberBits) - 1);
}

// The id of a kind's word in the table label.
constexpr std::int64_t labelOfKind(outline::Kind kind) {
  return static_cast<std::int64_t>(kind) + 1;
}

// Makes the tables in an empty database, but for the index over names.
void createTables(const Database& database);
void createNameIndex(const Database& database);
void dropNameIndex(const Database& database);

enum class Format { kCurrent, kOlder };

// Throws Failure for a database that is no index, or one of a newer format.
Format checkFormat(const Database& database);

}  // namespace host::index
