// What a query asks of an index, and the items that answer it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "index/index_reader.h"
#include "index/name_pattern.h"
#include "outline/item.h"
#include "sources/globs.h"

namespace host::index {

enum class NameMatch { kAny, kExact, kPrefix, kContains, kRegex };

// Each condition has to hold.
struct Query {
  NameMatch nameMatch = NameMatch::kAny;
  std::string name;              // with kExact, kPrefix and kContains
  const NamePattern* pattern{};  // with kRegex
  std::optional<outline::KindSet> kinds;
  const Globs* paths{};  // none for all
  // The line of a file that items contain. The first of these paths that the index has counts.
  std::vector<std::string> atPaths;
  std::optional<std::int64_t> atLine;
  std::optional<std::string> inside;  // the name of an item around those that are asked for
  std::optional<std::string> text;    // a part of the record's contents
};

struct Match {
  std::int64_t item;
  bool isExact;  // the name is the one that is asked for
};

// Finds what the query asks for, in no particular order.
class Search {
 public:
  Search(IndexReader& index, const Query& query) : index_(index), query_(query) {}

  std::vector<Match> run();

 private:
  using Range = std::pair<std::int64_t, std::int64_t>;  // of items, both ends included

  void findInside();
  void searchChain();
  void searchNames(const char* condition);
  void searchPrefix();
  void searchRanges();
  void searchRange(Statement& statement, const Range& range);
  void searchRows(Statement& statement);
  void consider(std::int64_t id, std::int64_t kind, std::string_view name);
  bool holdsText(std::int64_t id);
  bool isInside(std::int64_t id) const;
  bool isAtPath(std::int64_t file);
  bool matchesName(std::string_view name) const;

  IndexReader& index_;
  const Query& query_;
  std::vector<Range> inside_;                     // sorted, and none within another
  std::unordered_map<std::int64_t, bool> paths_;  // by file: whether it is asked for
  std::vector<Match> matches_;
};

// Whether the globs select the path or a directory above it.
bool selectsPath(const Globs& globs, std::string_view path);

}  // namespace host::index
