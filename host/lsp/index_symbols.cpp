#include "lsp/index_symbols.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>

#include "index/schema.h"
#include "lsp/symbols.h"
#include "system/failure.h"
#include "system/file_times.h"

namespace host::lsp {
namespace {

constexpr std::int64_t kNone = -1;

// The query as a part of a name, for LIKE.
std::string likePattern(std::string_view query) {
  std::string pattern = "%";
  for (const char byte : query) {
    if (byte == '%' || byte == '_' || byte == '\\') pattern += '\\';
    pattern += byte;
  }
  return pattern + "%";
}

char lower(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte; }

bool equalsFolded(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char one, char other) { return lower(one) == lower(other); });
}

}  // namespace

struct IndexSymbols::Symbol {
  std::size_t tier;  // 0 for the name itself, 1 for one that begins so, 2 for one that contains it
  const std::string* path;
  std::int64_t id;
};

IndexSymbols::IndexSymbols(std::string path) : path_(std::filesystem::absolute(path).string()) {
  open();
}

void IndexSymbols::open() {
  struct stat status {};
  ::stat(path_.c_str(), &status);
  auto reader = std::make_unique<index::IndexReader>(path_);
  const std::vector<std::string> folder = reader->meta("folder");
  folder_ = folder.empty() ? std::filesystem::path(path_).parent_path().string() : folder.front();
  reader_ = std::move(reader);
  opened_ = status;
}

void IndexSymbols::openIfReplaced() {
  struct stat status {};
  const bool isThere = ::stat(path_.c_str(), &status) == 0;
  const bool isSame = isThere && status.st_ino == opened_.st_ino &&
                      status.st_dev == opened_.st_dev && status.st_size == opened_.st_size &&
                      timesOf(status) == timesOf(opened_);
  if (!isThere || isSame) return;
  try {
    open();
  } catch (const Failure&) {
    opened_ = status;  // not again before it changes once more
  }
}

std::vector<IndexSymbols::File> IndexSymbols::find(std::string_view query, std::size_t most) {
  openIfReplaced();
  std::unordered_map<std::int64_t, std::string> paths;
  std::map<std::string_view, std::set<std::int64_t>> byPath;
  std::vector<Symbol> symbols = matches(query, most);
  for (Symbol& symbol : symbols) {
    const auto [entry, isNew] = paths.try_emplace(index::fileOf(symbol.id));
    if (isNew) entry->second = reader_->pathOf(index::fileOf(symbol.id));
    symbol.path = &entry->second;
  }
  std::sort(symbols.begin(), symbols.end(), [](const Symbol& a, const Symbol& b) {
    if (a.tier != b.tier) return a.tier < b.tier;
    if (a.path != b.path) return *a.path < *b.path;
    return a.id < b.id;
  });
  if (symbols.size() > most) symbols.resize(most);
  for (const Symbol& symbol : symbols) {
    std::set<std::int64_t>& ids = byPath[*symbol.path];
    ids.insert(symbol.id);
    if (const std::int64_t around = symbolAround(symbol.id); around != kNone) ids.insert(around);
  }
  std::vector<File> files;
  for (const auto& [path, ids] : byPath) {
    const std::filesystem::path whole = std::filesystem::path(folder_) / path;
    files.push_back({whole.lexically_normal().string(), outlineOf({ids.begin(), ids.end()})});
  }
  return files;
}

std::vector<IndexSymbols::Symbol> IndexSymbols::matches(std::string_view query, std::size_t most) {
  index::Statement statement(reader_->database(),
                             "SELECT id, kind, name FROM item INDEXED BY item_name "
                             "WHERE name IS NOT NULL AND name LIKE ? ESCAPE '\\'");
  const std::string pattern = likePattern(query);
  statement.bind(0, pattern);
  std::vector<Symbol> symbols;
  std::array<std::size_t, 3> counts{};
  while (statement.step()) {
    const std::int64_t kind = statement.number(1);
    if (kind < 1 || kind > static_cast<std::int64_t>(outline::kKindCount)) continue;
    if (!isSearched(static_cast<outline::Kind>(kind - 1))) continue;
    const std::string_view name = statement.text(2);
    const bool isStart = equalsFolded(name.substr(0, query.size()), query);
    const std::size_t tier = !isStart ? 2 : name.size() > query.size() ? 1 : 0;
    symbols.push_back({tier, nullptr, statement.number(0)});
    ++counts[tier];
  }
  // What is behind enough better ones is not sorted.
  std::size_t better = 0;
  for (std::size_t tier = 0; tier < counts.size(); ++tier) {
    if (better >= most) {
      std::erase_if(symbols, [tier](const Symbol& symbol) { return symbol.tier >= tier; });
      break;
    }
    better += counts[tier];
  }
  return symbols;
}

// The innermost symbol that contains the item.
std::int64_t IndexSymbols::symbolAround(std::int64_t id) {
  for (auto outer = reader_->parentOf(id); outer; outer = reader_->parentOf(*outer)) {
    const outline::Item item = reader_->item(*outer).item;
    if (!item.name.empty() && isSearched(item.kind)) return *outer;
  }
  return kNone;
}

// An index has no columns, so a symbol is where its line begins.
FileOutline IndexSymbols::outlineOf(const std::vector<std::int64_t>& ids) {
  FileOutline outline;
  std::unordered_map<std::int64_t, std::int32_t> entries;
  for (const std::int64_t id : ids) {
    const outline::Item item = reader_->item(id).item;
    OutlineEntry entry;
    entry.kind = item.kind;
    const auto around = entries.find(symbolAround(id));
    if (around != entries.end()) entry.parent = around->second;
    entry.nameOffset = static_cast<std::uint32_t>(outline.names.size());
    entry.nameBytes = static_cast<std::uint32_t>(item.name.size());
    const auto line = static_cast<std::uint32_t>(std::max(item.firstLine, 1) - 1);
    entry.range = entry.selection = {{line, 0}, {line, 0}};
    outline.names += item.name;
    entries.emplace(id, static_cast<std::int32_t>(outline.entries.size()));
    outline.entries.push_back(entry);
  }
  return outline;
}

}  // namespace host::lsp
