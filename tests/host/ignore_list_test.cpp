#include "sources/ignore_list.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sources/wild_pattern.h"

namespace {

using host::IgnoreList;
using host::WildPattern;

constexpr std::optional<bool> kNoRule;

struct RuleCase {
  std::string_view rules;
  const char* path;
  std::optional<bool> isIgnored;
  bool isDirectory = false;
};

TEST(IgnoreList, FollowsItsLastRuleThatMatches) {
  using namespace std::string_view_literals;
  const std::vector<RuleCase> rows = {
      {"", "a", kNoRule},
      {"# a\n\n  \na\n", "a", true},
      {"a", "a", true},
      {"a\r\n", "a", true},
      {"a\r", "a", true},
      {"\xef\xbb\xbf*.js\n", "a.js", true},
      {"\xef\xbb\xbf# a\n", "a", kNoRule},
      {"a\n\xef\xbb\xbf*.js\n", "b.js", kNoRule},
      {"\\#a\n", "#a", true},
      {"\\!a\n", "!a", true},
      {"a  \n", "a", true},
      {"a\\ \n", "a ", true},
      {"a\\  \n", "a ", true},
      {"a\t\n", "a", kNoRule},
      {" a\n", " a", true},
      {"a\0b\n"sv, "a", true},
      {"*.log\n!keep.log\n", "keep.log", false},
      {"!keep.log\n*.log\n", "keep.log", true},
      {"!keep.log\n", "keep.log", false},
      {"!\n/\n!/\n//\n", "a", kNoRule},
      {"a/\n", "a", kNoRule},
      {"a/\n", "a", true, true},
      {"a/\n", "sub/a", true, true},
      {"/a\n", "a", true},
      {"/a\n", "sub/a", kNoRule},
      {"sub/a\n", "sub/a", true},
      {"sub/a\n", "deep/sub/a", kNoRule},
      {"sub/*\n", "sub/deep/a", kNoRule},
  };
  for (const RuleCase& row : rows) {
    EXPECT_EQ(IgnoreList(row.rules, false).verdictOn(row.path, row.isDirectory), row.isIgnored)
        << row.rules << " and " << row.path;
  }
}

TEST(IgnoreList, IgnoresCaseIfAsked) {
  for (const char* rules : {"*.LOG\n", "A.Log\n", "a.l?g\n", "[A-B].log\n", "[[:upper:]].log\n"}) {
    EXPECT_EQ(IgnoreList(rules, true).verdictOn("a.LOG", false), true) << rules;
    EXPECT_EQ(IgnoreList(rules, false).verdictOn("a.LOG", false),
              std::string(rules) == "*.LOG\n" ? std::optional(true) : kNoRule)
        << rules;
  }
  // As in git: the name is in lower case by then, and the pattern is not.
  EXPECT_EQ(IgnoreList("\\A\n", true).verdictOn("A", false), kNoRule);
  EXPECT_EQ(IgnoreList("[A]\n", true).verdictOn("A", false), kNoRule);
}

TEST(WildPattern, MatchesPathsAsGitDoes) {
  struct PatternRow {
    const char* pattern;
    const char* path;
    bool isMatch;
  };
  const std::vector<PatternRow> rows = {
      {"", "a", false},
      {"a", "a", true},
      {"a", "ab", false},
      {"*", "a", true},
      {"*", "a/b", false},
      {"**", "a/b", true},
      {"**/a", "a", true},
      {"**/a", "b/c/a", true},
      {"**/a", "ba", false},
      {"a/**", "a/b/c", true},
      {"a/**", "a", false},
      {"a/**/b", "a/b", true},
      {"a/**/b", "a/x/y/b", true},
      {"a/**/b", "a/xb", false},
      {"a/**\\/b", "a/b", false},
      {"a/**\\/b", "a/x/b", true},
      {"a**/b", "a/x/b", true},
      {"?a**/b", "xa/y/b", false},
      {"?a**/b", "xay/b", true},
      {"**a", "b/a", false},
      {"***/a", "b/c/a", true},
      {"*/a", "b/a", true},
      {"*/a", "b/c/a", false},
      {"a?b", "a/b", false},
      {"a[^x]b", "a/b", false},
      {"[]-]", "]", true},
      {"[]-]", "-", true},
      {"[!]a]", "b", true},
      {"[!]a]", "]", false},
      {"[a-c-e]", "d", false},
      {"[a-c-e]", "-", true},
      {"[c-a]", "b", false},
      {"[\\]x]", "]", true},
      {"[\\a-\\c]", "b", true},
      {"[[:digit:]x]", "7", true},
      {"[[:space:]]", "\v", false},
      {"[[:punct:]]", "~", true},
      {"[[:cntrl:]]", "\x7f", true},
      {"[[:alpha:]]", "\xe9", false},
      {"[[:nothing:]a]", "a", false},
      {"[[:]", ":", true},
      {"[[:a]", "[", true},
      {"[", "[", false},
      {"a[b", "a[b", false},
      {"[a\\", "a", false},
      {"a\\", "a\\", false},
      {"\\*", "*", true},
      {"\\*", "a", false},
      {"*a*b*c", "xaybzc", true},
      {"*a*b*c", "xaybz", false},
  };
  for (const PatternRow& row : rows) {
    const WildPattern pattern(row.pattern, WildPattern::Subject::kPath, false);
    EXPECT_EQ(pattern.matches(row.path), row.isMatch) << row.pattern << " and " << row.path;
  }
}

// Trying every way to split the path would take longer than anybody waits.
TEST(WildPattern, WithManyStarsIsMatchedInAFewSteps) {
  std::string pattern;
  std::string path;
  for (int part = 0; part < 200; ++part) {
    pattern += "**/a*a*a/";
    path += "aaaaaaaaaaaaaaaa/";
  }
  const WildPattern spans(pattern + "q", WildPattern::Subject::kPath, false);
  EXPECT_FALSE(spans.matches(path + "aq"));
  EXPECT_TRUE(spans.matches(path + "q"));
}

}  // namespace
