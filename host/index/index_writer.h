// Writes the tables of an index into a file that nobody reads yet.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "index/database.h"
#include "index/rows.h"

namespace host::index {

class IndexWriter {
 public:
  // path holds an index already, or no byte; name stands for the file in messages.
  IndexWriter(const std::string& path, std::string name);

  // Replaces all values of the key.
  void setMeta(std::string_view key, const std::vector<std::string>& values);

  // To be called before so many files are written that the index over names is made anew sooner
  // than it is kept up to date.
  void dropNameIndex();

  // The id of a file that is not in the index yet.
  std::int64_t newFile() { return ++lastFile_; }

  // Replaces what the index has of the file.
  void putFile(std::int64_t file, std::string_view path, const FileRow& row, const NextItem& next);

  void removeFile(std::int64_t file);

  // The file was found to hold the same bytes.
  void setTimes(std::int64_t file, const FileTimes& times);

  // Completes and closes the file.
  void finish();

 private:
  void removeItems(std::int64_t file);
  void putItems(std::int64_t file, const NextItem& next, std::int64_t& count);
  void bindItem(Statement& insert, int row, std::int64_t id, const ItemRow& item);
  std::int64_t labelId(std::string_view label);
  std::int64_t pragma(const char* name) const;

  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };

  Database database_;
  Statement insertItem_;
  Statement insertItems_;  // many at once, which takes half the time
  Statement deleteItems_;
  Statement putFile_;
  Statement deleteFile_;
  Statement setTimes_;
  std::unordered_map<std::string, std::int64_t, TextHash, std::equal_to<>> labels_;
  std::int64_t lastFile_ = 0;
  std::int64_t largestOld_ = 0;  // file: those behind it have no items to remove
  bool hasNameIndex_ = false;
};

}  // namespace host::index
