#include "index/index_writer.h"

#include <array>
#include <cstddef>
#include <utility>

#include "index/schema.h"

namespace host::index {
namespace {

// Nothing guards the file while it is written: it is thrown away if that fails.
constexpr const char* kSettings =
    "PRAGMA page_size = 8192;"
    "PRAGMA journal_mode = OFF;"
    "PRAGMA synchronous = OFF;"
    "PRAGMA locking_mode = EXCLUSIVE;"
    "PRAGMA cache_size = -32768";

// Free pages beyond this share are given back.
constexpr std::int64_t kMostFreePages = 4;  // one in so many

// Makes the tables in a file without any, before statements about them are prepared.
const Database& prepared(const Database& database) {
  database.execute(kSettings);
  database.execute("BEGIN");
  Statement statement(database, "SELECT count(*) FROM sqlite_schema");
  statement.step();
  const bool isNew = statement.number(0) == 0;
  statement.reset();
  if (isNew) createTables(database);
  return database;
}

constexpr std::size_t kRowsAtOnce = 16;
constexpr int kItemColumns = 9;

std::string insertText(std::size_t rows) {
  std::string text =
      "INSERT INTO item (id, kind, label, line, more, parent, record, name, text) VALUES ";
  for (std::size_t row = 0; row < rows; ++row) {
    text += row == 0 ? "(?, ?, ?, ?, ?, ?, ?, ?, ?)" : ", (?, ?, ?, ?, ?, ?, ?, ?, ?)";
  }
  return text;
}

}  // namespace

IndexWriter::IndexWriter(const std::string& path, std::string name)
    : database_(path, Opened::kToBuild, std::move(name)),
      insertItem_(prepared(database_), insertText(1)),
      insertItems_(database_, insertText(kRowsAtOnce)),
      deleteItems_(database_, "DELETE FROM item WHERE id BETWEEN ? AND ?"),
      putFile_(database_, "INSERT OR REPLACE INTO file VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      deleteFile_(database_, "DELETE FROM file WHERE id = ?"),
      setTimes_(database_, "UPDATE file SET modified = ?, changed = ? WHERE id = ?") {
  Statement labels(database_, "SELECT id, name FROM label");
  while (labels.step()) labels_.emplace(labels.text(1), labels.number(0));
  Statement last(database_, "SELECT max(id) FROM file");
  if (last.step()) lastFile_ = last.number(0);
  largestOld_ = lastFile_;
  Statement nameIndex(database_, "SELECT count(*) FROM sqlite_schema WHERE name = 'item_name'");
  hasNameIndex_ = nameIndex.step() && nameIndex.number(0) != 0;
}

void IndexWriter::setMeta(std::string_view key, const std::vector<std::string>& values) {
  Statement remove(database_, "DELETE FROM meta WHERE key = ?");
  remove.bind(0, key);
  remove.run();
  Statement insert(database_, "INSERT INTO meta VALUES (?, ?, ?)");
  std::int64_t position = 0;
  for (const std::string& value : values) {
    insert.bind(0, key);
    insert.bind(1, position++);
    insert.bind(2, value);
    insert.run();
  }
}

void IndexWriter::dropNameIndex() {
  if (hasNameIndex_) index::dropNameIndex(database_);
  hasNameIndex_ = false;
}

void IndexWriter::putFile(std::int64_t file, std::string_view path, const FileRow& row,
                          const NextItem& next) {
  if (file <= largestOld_) removeItems(file);
  std::int64_t count = 0;
  putItems(file, next, count);

  const auto bindOptional = [this](int parameter, const std::optional<std::string>& text) {
    if (text) {
      putFile_.bind(parameter, *text);
    } else {
      putFile_.bindNull(parameter);
    }
  };
  int parameter = 0;
  putFile_.bind(parameter++, file);
  putFile_.bind(parameter++, path);
  putFile_.bind(parameter++, std::string_view(row.status));
  bindOptional(parameter++, row.message);
  putFile_.bind(parameter++, row.size);
  putFile_.bind(parameter++, row.times ? std::optional(row.times->modified) : std::nullopt);
  putFile_.bind(parameter++, row.times ? std::optional(row.times->changed) : std::nullopt);
  bindOptional(parameter++, row.hash);
  putFile_.bind(parameter++, row.records);
  putFile_.bind(parameter++, count);
  bindOptional(parameter++, row.omitted);
  putFile_.run();
}

void IndexWriter::putItems(std::int64_t file, const NextItem& next, std::int64_t& count) {
  std::array<ItemRow, kRowsAtOnce> rows;
  while (true) {
    std::size_t taken = 0;
    while (taken < rows.size() && next(rows[taken])) ++taken;
    if (taken < rows.size()) {
      for (std::size_t row = 0; row < taken; ++row) {
        bindItem(insertItem_, 0, itemId(file, count++), rows[row]);
        insertItem_.run();
      }
      return;
    }
    for (std::size_t row = 0; row < taken; ++row) {
      bindItem(insertItems_, static_cast<int>(row), itemId(file, count++), rows[row]);
    }
    insertItems_.run();
  }
}

void IndexWriter::bindItem(Statement& insert, int row, std::int64_t id, const ItemRow& item) {
  int parameter = row * kItemColumns;
  insert.bind(parameter++, id);
  insert.bind(parameter++, labelOfKind(item.kind));
  if (item.label) {
    insert.bind(parameter++, labelId(*item.label));
  } else {
    insert.bindNull(parameter++);
  }
  insert.bind(parameter++, item.line);
  insert.bind(parameter++, item.lastLine - item.line);
  insert.bind(parameter++, item.parent);
  insert.bind(parameter++, item.record);
  if (item.name) {
    insert.bind(parameter++, *item.name, item.isNamePlain);
  } else {
    insert.bindNull(parameter++);
  }
  if (item.text) {
    insert.bind(parameter, *item.text, item.isTextPlain);
  } else {
    insert.bindNull(parameter);
  }
}

std::int64_t IndexWriter::labelId(std::string_view label) {
  const auto known = labels_.find(label);
  if (known != labels_.end()) return known->second;
  const auto id = static_cast<std::int64_t>(labels_.size()) + 1;
  Statement insert(database_, "INSERT INTO label VALUES (?, ?)");
  insert.bind(0, id);
  insert.bind(1, label);
  insert.run();
  labels_.emplace(label, id);
  return id;
}

void IndexWriter::removeFile(std::int64_t file) {
  removeItems(file);
  deleteFile_.bind(0, file);
  deleteFile_.run();
}

void IndexWriter::removeItems(std::int64_t file) {
  deleteItems_.bind(0, itemId(file, 0));
  deleteItems_.bind(1, itemId(file + 1, 0) - 1);
  deleteItems_.run();
}

void IndexWriter::setTimes(std::int64_t file, const FileTimes& times) {
  setTimes_.bind(0, times.modified);
  setTimes_.bind(1, times.changed);
  setTimes_.bind(2, file);
  setTimes_.run();
}

std::int64_t IndexWriter::pragma(const char* name) const {
  Statement statement(database_, name);
  return statement.step() ? statement.number(0) : 0;
}

void IndexWriter::finish() {
  if (!hasNameIndex_) createNameIndex(database_);
  database_.execute("COMMIT");
  if (pragma("PRAGMA freelist_count") > pragma("PRAGMA page_count") / kMostFreePages) {
    database_.execute("VACUUM");
  }
}

}  // namespace host::index
