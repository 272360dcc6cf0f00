// The rows of an index, as they come from a worker or a shard and go to the tables.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "outline/item.h"
#include "system/file_times.h"

namespace host::index {

struct FileRow {
  std::string status;
  std::optional<std::string> message;
  std::int64_t size = 0;
  std::optional<FileTimes> times;   // none where the file may have changed since
  std::optional<std::string> hash;  // of the bytes that were read
  std::int64_t records = 0;
  std::optional<std::string> omitted;  // what is left out, as in the JSON formats
};

// Views, valid as long as their maker says.
struct ItemRow {
  outline::Kind kind = outline::Kind::kStatement;
  std::optional<std::string_view> label = {};  // none for a definition without a record
  std::int64_t line = 0;
  std::int64_t lastLine = 0;
  std::optional<std::int64_t> parent = {};  // number of the innermost item that contains it
  std::optional<std::int64_t> record = {};
  std::optional<std::string_view> name = {};
  std::optional<std::string_view> text = {};
  bool isNamePlain = true;  // to be stored as TEXT, see isPlainText
  bool isTextPlain = true;
};

// Gives the next item of a file, or false behind the last.
using NextItem = std::function<bool(ItemRow& item)>;

}  // namespace host::index
