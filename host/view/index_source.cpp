#include "view/index_source.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "index/database.h"
#include "index/index_reader.h"
#include "index/rows.h"
#include "index/schema.h"
#include "outline/item.h"
#include "view/source_bytes.h"

namespace host::view {
namespace {

using index::IndexReader;
using index::Statement;

std::optional<std::string> optionalText(const Statement& statement, int column) {
  if (statement.isNull(column)) return std::nullopt;
  return std::string(statement.text(column));
}

std::map<std::int64_t, std::string> labelsOf(const IndexReader& known) {
  std::map<std::int64_t, std::string> labels;
  Statement statement(known.database(), "SELECT id, name FROM label");
  while (statement.step()) labels.emplace(statement.number(0), statement.text(1));
  return labels;
}

// The items of one file after another.
class ItemRows {
 public:
  explicit ItemRows(const IndexReader& known)
      : known_(known),
        labels_(labelsOf(known)),
        select_(known.database(),
                "SELECT id, kind, label, line, more, parent, name, text FROM item"
                " WHERE id BETWEEN ? AND ? ORDER BY id") {}

  void begin(std::int64_t file) {
    number_ = 0;
    select_.reset();
    select_.bind(0, index::itemId(file, 0));
    select_.bind(1, index::itemId(file + 1, 0) - 1);
  }

  bool take(index::ItemRow& row) {
    if (!select_.step()) return false;
    const std::int64_t kind = select_.number(1) - 1;
    const bool hasParent = !select_.isNull(5);
    const std::int64_t parent = select_.number(5);
    const bool isSound = index::numberOf(select_.number(0)) == number_ && kind >= 0 &&
                         kind < static_cast<std::int64_t>(outline::kKindCount) &&
                         (!hasParent || (parent >= 0 && parent < number_));
    if (!isSound) known_.failAsDamaged();
    ++number_;
    row = {};
    row.kind = static_cast<outline::Kind>(kind);
    if (const auto label = labels_.find(select_.number(2)); label != labels_.end()) {
      row.label = label->second;
    }
    row.line = select_.number(3);
    row.lastLine = row.line + select_.number(4);
    if (hasParent) row.parent = parent;
    row.name = select_.text(6);
    row.text = select_.text(7);
    return true;
  }

 private:
  const IndexReader& known_;
  std::map<std::int64_t, std::string> labels_;
  Statement select_;
  std::int64_t number_ = 0;  // of the next item in its file
};

}  // namespace

void addIndex(const std::string& path, PageData& page) {
  const IndexReader known(path);
  const std::vector<std::string> folder = known.meta("folder");
  ItemRows items(known);
  Statement files(known.database(),
                  "SELECT id, path, status, message, size, hash, records, omitted FROM file"
                  " ORDER BY CAST(path AS BLOB)");
  while (files.step()) {
    index::FileRow row;
    row.status = files.text(2);
    row.message = optionalText(files, 3);
    row.size = files.number(4);
    row.hash = optionalText(files, 5);
    row.records = files.number(6);
    row.omitted = optionalText(files, 7);
    const std::string name(files.text(1));
    std::optional<std::string> source;
    if (!folder.empty()) {
      source =
          sourceBytes((std::filesystem::path(folder.front()) / name).string(), row.size, row.hash);
    }
    items.begin(files.number(0));
    page.addFile(
        name, row, [&items](index::ItemRow& item) { return items.take(item); }, source);
  }
}

}  // namespace host::view
