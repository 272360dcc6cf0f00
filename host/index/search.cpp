#include "index/search.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "index/schema.h"

namespace host::index {
namespace {

constexpr std::int64_t kLastNumber = numberOf(-1);

// The first text behind all that begin with the prefix; empty if there is none.
std::string endOfPrefix(std::string prefix) {
  while (!prefix.empty() && prefix.back() == '\xff') prefix.pop_back();
  if (!prefix.empty()) ++prefix.back();
  return prefix;
}

// Finds a text in many short ones: by the byte of it that source code has least of.
class TextFinder {
 public:
  // The text has to outlive it.
  explicit TextFinder(std::string_view text) : text_(text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
      if (frequency(text[at]) < frequency(text[rarest_])) rarest_ = at;
    }
  }

  bool isIn(std::string_view whole) const {
    if (text_.empty()) return true;
    if (whole.size() < text_.size()) return false;
    const char* next = whole.data() + rarest_;
    const char* const end = whole.data() + whole.size() - (text_.size() - rarest_ - 1);
    while (next < end) {
      const void* const found =
          std::memchr(next, text_[rarest_], static_cast<std::size_t>(end - next));
      if (found == nullptr) return false;
      const char* const at = static_cast<const char*>(found);
      if (std::memcmp(at - rarest_, text_.data(), text_.size()) == 0) return true;
      next = at + 1;
    }
    return false;
  }

 private:
  // Roughly, the more the later in the list; what is not there is rare.
  static std::size_t frequency(char byte) {
    constexpr std::string_view kByFrequency = "kbvgymfph()dlu.csnraoite ";
    const std::size_t place = kByFrequency.find(byte);
    return place == std::string_view::npos ? 0 : place + 1;
  }

  std::string_view text_;
  std::size_t rarest_ = 0;
};

}  // namespace

std::vector<Match> Search::run() {
  if (query_.inside) findInside();
  if (query_.atLine) {
    searchChain();
  } else if (query_.nameMatch == NameMatch::kExact) {
    searchNames("name = ?1");
  } else if (query_.nameMatch == NameMatch::kPrefix && !query_.name.empty()) {
    searchPrefix();
  } else if (query_.nameMatch == NameMatch::kContains && isPlainText(query_.name)) {
    // SQLite passes over most names sooner than they could be fetched.
    searchNames("instr(name, ?1) > 0");
  } else if (query_.nameMatch != NameMatch::kAny) {
    searchNames("name IS NOT NULL");
  } else {
    searchRanges();
  }
  return std::move(matches_);
}

// What an item contains stands right behind it.
void Search::findInside() {
  Statement names(index_.database(), "SELECT id FROM item WHERE name = ? ORDER BY id");
  names.bind(0, *query_.inside);
  Statement next(index_.database(),
                 "SELECT id, parent FROM item WHERE id > ? AND id <= ? ORDER BY id");
  while (names.step()) {
    const std::int64_t id = names.number(0);
    if (!inside_.empty() && id <= inside_.back().second) continue;  // in one of the same name
    next.bind(0, id);
    next.bind(1, itemId(fileOf(id), kLastNumber));
    std::int64_t last = id;
    while (next.step()) {
      if (next.isNull(1) || next.number(1) < numberOf(id)) break;
      last = next.number(0);
    }
    next.reset();
    if (last > id) inside_.emplace_back(id + 1, last);
  }
}

// Items are in the order of their first lines: of the last that begins no later than the line,
// itself or an item around it is the innermost that contains the line.
void Search::searchChain() {
  std::optional<KnownFile> file;
  for (const std::string& path : query_.atPaths) {
    if (!file) file = index_.fileAt(path);
  }
  if (!file || file->items == 0) return;
  std::int64_t begin = 0;
  std::int64_t end = file->items;
  while (begin < end) {
    const std::int64_t middle = begin + (end - begin) / 2;
    if (index_.lineOf(itemId(file->id, middle)) <= *query_.atLine) {
      begin = middle + 1;
    } else {
      end = middle;
    }
  }
  if (begin == 0) return;
  std::optional<std::int64_t> id = itemId(file->id, begin - 1);
  for (; id; id = index_.parentOf(*id)) {
    if (index_.lastLineOf(*id) < *query_.atLine) continue;
    const FoundItem found = index_.item(*id);
    consider(*id, labelOfKind(found.item.kind), found.item.name);
  }
}

void Search::searchNames(const char* condition) {
  Statement statement(index_.database(),
                      std::string("SELECT id, kind, name FROM item INDEXED BY item_name "
                                  "WHERE name IS NOT NULL AND ") +
                          condition);
  if (std::string_view(condition).find("?1") != std::string_view::npos) {
    statement.bind(0, query_.name);
  }
  while (statement.step()) {
    consider(statement.number(0), statement.number(1), statement.text(2));
  }
}

// Names that are stored as BLOB come behind all others, so there are two ranges.
void Search::searchPrefix() {
  Statement statement(index_.database(),
                      "SELECT id, kind, name FROM item INDEXED BY item_name "
                      "WHERE name >= ?1 AND name < ?2");
  const std::string end = endOfPrefix(query_.name);
  for (const bool isPlain : {true, false}) {
    statement.bind(0, query_.name, isPlain);
    if (end.empty() && isPlain) {
      statement.bind(1, "", false);  // the least of all BLOBs
    } else if (end.empty()) {
      continue;
    } else {
      statement.bind(1, end, isPlain);
    }
    while (statement.step()) {
      consider(statement.number(0), statement.number(1), statement.text(2));
    }
  }
}

void Search::searchRanges() {
  const char* const columns =
      query_.text ? "SELECT id, kind, text FROM item " : "SELECT id, kind FROM item ";
  if (!query_.inside && query_.paths == nullptr) {
    Statement all(index_.database(), columns);
    searchRows(all);
    return;
  }
  Statement statement(index_.database(),
                      std::string(columns) + "WHERE id BETWEEN ? AND ? ORDER BY id");
  if (query_.inside) {
    for (const Range& range : inside_) searchRange(statement, range);
  } else {
    for (const KnownFile& file : index_.files()) {
      if (!selectsPath(*query_.paths, file.path)) continue;
      paths_[file.id] = true;
      searchRange(statement, {itemId(file.id, 0), itemId(file.id, kLastNumber)});
    }
  }
}

void Search::searchRange(Statement& statement, const Range& range) {
  statement.bind(0, range.first);
  statement.bind(1, range.second);
  searchRows(statement);
}

void Search::searchRows(Statement& statement) {
  const TextFinder finder(query_.text ? std::string_view(*query_.text) : std::string_view());
  while (statement.step()) {
    if (query_.text && !finder.isIn(statement.text(2))) continue;
    consider(statement.number(0), statement.number(1), {});
  }
}

void Search::consider(std::int64_t id, std::int64_t kind, std::string_view name) {
  if (kind < 1 || kind > static_cast<std::int64_t>(outline::kKindCount)) index_.failAsDamaged();
  if (query_.kinds && !(*query_.kinds)[static_cast<std::size_t>(kind - 1)]) return;
  if (!matchesName(name)) return;
  if (query_.inside && !isInside(id)) return;
  if (query_.paths != nullptr && !isAtPath(fileOf(id))) return;
  const bool isTextRead = query_.nameMatch == NameMatch::kAny && !query_.atLine;
  if (query_.text && !isTextRead && !holdsText(id)) return;
  const bool hasText =
      query_.nameMatch == NameMatch::kPrefix || query_.nameMatch == NameMatch::kContains;
  matches_.push_back({id, hasText && name == query_.name});
}

bool Search::holdsText(std::int64_t id) {
  return index_.item(id).text.find(*query_.text) != std::string::npos;
}

bool Search::isInside(std::int64_t id) const {
  const auto after =
      std::upper_bound(inside_.begin(), inside_.end(), id,
                       [](std::int64_t item, const Range& range) { return item < range.first; });
  return after != inside_.begin() && id <= std::prev(after)->second;
}

bool Search::isAtPath(std::int64_t file) {
  const auto [entry, isNew] = paths_.try_emplace(file, false);
  if (isNew) entry->second = selectsPath(*query_.paths, index_.pathOf(file));
  return entry->second;
}

bool Search::matchesName(std::string_view name) const {
  switch (query_.nameMatch) {
    case NameMatch::kAny:
      return true;
    case NameMatch::kExact:
      return name == query_.name;
    case NameMatch::kPrefix:
      return name.starts_with(query_.name);
    case NameMatch::kContains:
      return name.find(query_.name) != std::string_view::npos;
    case NameMatch::kRegex:
      return query_.pattern->matches(name);
  }
  return false;
}

bool selectsPath(const Globs& globs, std::string_view path) {
  while (path.starts_with("./")) path.remove_prefix(2);
  path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
  for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
       slash = path.find('/', slash + 1)) {
    if (globs.match(path.substr(0, slash), true)) return true;
  }
  return globs.match(path, false);
}

}  // namespace host::index
