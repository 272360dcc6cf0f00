#include "sources/name_patterns.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using host::NamePatterns;

// What it must never do is deny a name that a rule matches; what it should do is deny most others.
TEST(NamePatterns, DenyNamesThatNoRuleCanMatch) {
  struct Row {
    const char* rules;
    const char* name;
    bool mayMatch;
  };
  const std::vector<Row> rows = {
      {"", "a", false},
      {"# a comment\n\n   \n", "a", false},
      {"build\n", "build", true},
      {"build\n", "builds", false},
      {"build", "build", true},
      {"build/\r\n", "build", true},
      {"/build\n", "build", true},
      {"src/gen/out.js\n", "out.js", true},
      {"src/gen/out.js\n", "gen", false},
      {"*.log\n", "a.log", true},
      {"*.log\n", "a.log.js", false},
      {"*.LOG\n", "a.log", true},
      {"*.log\n", "A.Log", true},
      {"*~\n", "a~", true},
      {"foo*\n", "foobar", true},
      {"foo*\n", "bar", false},
      {"a*b*c\n", "axbyc", true},
      {"a*b*c\n", "abd", false},
      {"*.py[cod]\n", "a.pyc", true},
      {"*.py[cod]\n", "a.js", false},
      {"a[]x]b\n", "a]b", true},
      {"a[b\n", "a[b", true},
      {"[[:alpha:]].js\n", "a.js", true},
      {"a?\n", "ab", true},
      {"a?\n", "a", false},
      {"\\#a\n", "#a", true},
      {"\\!a\n", "!a", true},
      {"a\\ \n", "a ", true},
      {"a  \n", "a", true},
      {"a  \n", "a  ", true},
      {"!keep.log\n", "keep.log", false},
      {"*\n", "anything", true},
      {"**\n", "anything", true},
      {"/*\n", "anything", true},
      {"**/*\n", "anything", true},
      {"dist/*\n", "anything", false},
      {"dist/**\n", "anything", false},
      {"dist/**/*.map\n", "a.map", true},
      {"dist/**/*.map\n", "a.js", false},
  };
  for (const Row& row : rows) {
    NamePatterns patterns;
    patterns.add(row.rules);
    EXPECT_EQ(patterns.mayMatch(row.name), row.mayMatch) << row.rules << " and " << row.name;
  }
}

TEST(NamePatterns, KnowDirectoriesInWhichARuleMatchesAll) {
  struct Row {
    const char* rules;
    const char* directory;
    bool mayMatch;
  };
  const std::vector<Row> rows = {
      {"dist\n", "dist/", false},      {"dist/*\n", "dist/", true},
      {"dist/*\n", "lib/dist/", true}, {"dist/*\n", "lib/", false},
      {"dist/*\n", "", false},         {"/dist/**\n", "dist/deep/", true},
      {"a/b*/**\n", "a/bc/d/", true},  {"a/b*/**\n", "a/c/", false},
      {"Dist/*\n", "dIst/", true},     {"[d]ist/*\n", "dist/", true},
  };
  for (const Row& row : rows) {
    NamePatterns patterns;
    patterns.add(row.rules);
    EXPECT_EQ(patterns.mayMatchAllIn(row.directory), row.mayMatch)
        << row.rules << " and " << row.directory;
  }
}

TEST(NamePatterns, OfSeveralFilesAddUp) {
  NamePatterns patterns;
  patterns.add("*.log\nbuild\n");
  patterns.add("*.log\n*.tmp\n");
  for (const std::string_view name : {"a.log", "a.tmp", "build"}) {
    EXPECT_TRUE(patterns.mayMatch(name)) << name;
  }
  EXPECT_FALSE(patterns.mayMatch("a.js"));
}

}  // namespace
