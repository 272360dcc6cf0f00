#include "index/index_reader.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstddef>

#include "index/schema.h"
#include "system/failure.h"

namespace host::index {
namespace {

constexpr std::int64_t kMaxLabels = 10'000;

// Opening anything else may wait, or do anything.
const std::string& regularFile(const std::string& path, const std::string& name) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) throw systemFailure(name, errno);
  if (S_ISDIR(status.st_mode)) throw systemFailure(name, EISDIR);
  if (!S_ISREG(status.st_mode)) throw Failure(name + ": not a regular file");
  return path;
}

const Database& checked(const Database& database) {
  if (checkFormat(database) == Format::kOlder) {
    throw Failure(database.name() + ": of an older index format; run quorl-js index " +
                  database.name());
  }
  return database;
}

constexpr std::string_view kFileColumns =
    "SELECT id, path, status, size, modified, changed, hash, items FROM file";

KnownFile fileIn(const Statement& row) {
  KnownFile file;
  file.id = row.number(0);
  file.path = row.text(1);
  file.status = row.text(2);
  file.size = row.number(3);
  if (!row.isNull(4) && !row.isNull(5)) file.times = {row.number(4), row.number(5)};
  file.hash = row.text(6);
  file.items = row.number(7);
  return file;
}

}  // namespace

IndexReader::IndexReader(const std::string& path, const std::string& name)
    : database_(regularFile(path, name), Opened::kToRead, name),
      path_(checked(database_), "SELECT path FROM file WHERE id = ?"),
      item_(database_, "SELECT kind, label, line, more, record, name, text FROM item WHERE id = ?"),
      place_(database_, "SELECT parent, line, more FROM item WHERE id = ?") {
  Statement labels(database_, "SELECT id, name FROM label");
  while (labels.step()) {
    const std::int64_t id = labels.number(0);
    if (id < 1 || id > kMaxLabels) failAsDamaged();
    if (labels_.size() <= static_cast<std::size_t>(id)) {
      labels_.resize(static_cast<std::size_t>(id) + 1);
    }
    labels_[static_cast<std::size_t>(id)] = labels.text(1);
  }
}

void IndexReader::failAsDamaged() const {
  throw Failure(database_.name() + ": damaged index; move it away and build it again");
}

std::vector<std::string> IndexReader::meta(std::string_view key) const {
  Statement statement(database_, "SELECT value FROM meta WHERE key = ? ORDER BY position");
  statement.bind(0, key);
  std::vector<std::string> values;
  while (statement.step()) values.emplace_back(statement.text(0));
  return values;
}

std::vector<KnownFile> IndexReader::files() const {
  Statement statement(database_, kFileColumns);
  std::vector<KnownFile> files;
  while (statement.step()) files.push_back(fileIn(statement));
  return files;
}

std::optional<KnownFile> IndexReader::fileAt(std::string_view path) const {
  Statement statement(database_, std::string(kFileColumns) + " WHERE path = ?");
  statement.bind(0, path);
  if (!statement.step()) return std::nullopt;
  return fileIn(statement);
}

void IndexReader::select(Statement& statement, std::int64_t id) {
  statement.reset();
  statement.bind(0, id);
  if (!statement.step()) failAsDamaged();
}

std::string IndexReader::pathOf(std::int64_t file) {
  select(path_, file);
  return std::string(path_.text(0));
}

FoundItem IndexReader::item(std::int64_t id) {
  select(item_, id);
  const std::int64_t kind = item_.number(0);
  const std::int64_t label = item_.number(1);
  if (kind < 1 || kind > static_cast<std::int64_t>(outline::kKindCount)) failAsDamaged();
  if (label < 0 || label >= static_cast<std::int64_t>(labels_.size())) failAsDamaged();
  FoundItem found;
  found.id = id;
  found.item.kind = static_cast<outline::Kind>(kind - 1);
  found.label = labels_[static_cast<std::size_t>(label)];
  found.item.firstLine = static_cast<std::int32_t>(item_.number(2));
  found.item.lastLine = static_cast<std::int32_t>(item_.number(2) + item_.number(3));
  found.hasRecord = !item_.isNull(4);
  if (found.hasRecord) found.item.record = static_cast<std::int32_t>(item_.number(4));
  found.item.name = item_.text(5);
  found.text = item_.text(6);
  return found;
}

std::optional<std::int64_t> IndexReader::parentOf(std::int64_t id) {
  select(place_, id);
  if (place_.isNull(0)) return std::nullopt;
  const std::int64_t parent = place_.number(0);
  // Parents come first, so that no chain of them is endless.
  if (parent < 0 || parent >= numberOf(id)) failAsDamaged();
  return itemId(fileOf(id), parent);
}

std::int64_t IndexReader::lineOf(std::int64_t id) {
  select(place_, id);
  return place_.number(1);
}

std::int64_t IndexReader::lastLineOf(std::int64_t id) {
  select(place_, id);
  return place_.number(1) + place_.number(2);
}

bool isOlderIndex(const std::string& path, const std::string& name) {
  const Database database(path, Opened::kToRead, name);
  return checkFormat(database) == Format::kOlder;
}

}  // namespace host::index
