// A quick look at ignore rules, for names that none of them can match. libgit2 takes some 15
// microseconds to answer for one path, since it looks for all ignore files above it each time; in a
// walk over 200,000 files this look leaves the few paths to it that matter.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace host {

class NamePatterns {
 public:
  // Adds the rules of an ignore file.
  void add(std::string_view rules);

  // Whether a rule may match an entry of that name. It may say so where none does; it never denies
  // it where one does, except for rules that mayMatchAllIn is about.
  bool mayMatch(std::string_view name) const;

  // Whether a rule may match every entry of the directory, such as "dist/*" in "lib/dist".
  bool mayMatchAllIn(std::string_view directory) const;

 private:
  void addRule(std::string_view rule);

  bool matchesAll_ = false;
  std::unordered_set<std::string> names_;  // in small letters, as all patterns: case may not count
  std::vector<std::string> endings_;       // of patterns such as "*.log"
  std::vector<std::string> globs_;
  std::vector<std::string> parents_;  // globs for directories in which everything may match
};

}  // namespace host
