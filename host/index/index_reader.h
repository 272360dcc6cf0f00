// An index as its readers see it: a file that never changes while it is open.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "index/database.h"
#include "index/rows.h"

namespace host::index {

struct KnownFile {
  std::int64_t id = 0;
  std::string path;
  std::string status;
  std::int64_t size = 0;
  std::optional<FileTimes> times;
  std::string hash;  // or empty
  std::int64_t items = 0;
};

// An item with texts of its own.
struct FoundItem {
  std::int64_t id = 0;
  outline::Item item;  // without parent and depth
  std::string label;   // of its record, or empty
  std::string text;
  bool hasRecord = false;
};

class IndexReader {
 public:
  // Throws Failure for what is no index, or not one of this format.
  // name stands for the file in messages.
  explicit IndexReader(const std::string& path) : IndexReader(path, path) {}
  IndexReader(const std::string& path, const std::string& name);

  const Database& database() const { return database_; }

  std::vector<std::string> meta(std::string_view key) const;
  std::vector<KnownFile> files() const;

  std::string pathOf(std::int64_t file);
  std::optional<KnownFile> fileAt(std::string_view path) const;

  FoundItem item(std::int64_t id);

  // The item around it, if there is one.
  std::optional<std::int64_t> parentOf(std::int64_t id);

  // The first line of the item.
  std::int64_t lineOf(std::int64_t id);
  std::int64_t lastLineOf(std::int64_t id);

  [[noreturn]] void failAsDamaged() const;

 private:
  void select(Statement& statement, std::int64_t id);

  Database database_;
  Statement path_;
  Statement item_;
  Statement place_;
  std::vector<std::string> labels_;  // by id
};

// Whether the path leads to an index of an older format, which has to be built again. Throws
// Failure for what is no index.
bool isOlderIndex(const std::string& path, const std::string& name);

}  // namespace host::index
