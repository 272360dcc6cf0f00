#include "sources/globs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "system/failure.h"

namespace {

using host::Globs;

TEST(Globs, MatchNamesAndPaths) {
  struct Row {
    const char* pattern;
    const char* path;
    bool isMatch;
    bool isDirectory = false;
  };
  const std::vector<Row> rows = {
      {"*.js", "a.js", true},
      {"*.js", "deep/down/a.js", true},
      {"*.js", "a.jsx", false},
      {"*.js", "a.JS", false},
      {"a?.js", "ab.js", true},
      {"a?.js", "a.js", false},
      {"[ab].js", "b.js", true},
      {"[!ab].js", "b.js", false},
      {"*", ".hidden", true},
      {"src/*.js", "src/a.js", true},
      {"src/*.js", "src/deep/a.js", false},
      {"src/*.js", "lib/src/a.js", false},
      {"/a.js", "a.js", true},
      {"/a.js", "src/a.js", false},
      {"**/a.js", "a.js", true},
      {"**/a.js", "src/deep/a.js", true},
      {"src/**", "src/deep/a.js", true},
      {"src/**", "src", false, true},
      {"src/**/a.js", "src/a.js", true},
      {"src/**/a.js", "src/x/y/a.js", true},
      {"src/**/a.js", "lib/a.js", false},
      {"**/test/**", "a/test/b/c.js", true},
      {"**/test/**", "a/tests/b.js", false},
      {"**", "a/b", true},
      {"build/", "build", true, true},
      {"build/", "lib/build", true, true},
      {"build/", "build", false},
      {"/build/", "lib/build", false, true},
      {"*.{js,ts}", "a.ts", true},
      {"*.{js,ts}", "a.tsx", false},
      {"{src,lib}/*.{m,c}js", "lib/a.mjs", true},
      {"{src,lib}/*.{m,c}js", "lib/a.js", false},
      {"a{,b{c,d}}.js", "a.js", true},
      {"a{,b{c,d}}.js", "abd.js", true},
      {"a{,b{c,d}}.js", "ab.js", false},
      {"a{b.js", "a{b.js", true},
      {"\\{a,b\\}", "{a,b}", true},
      {"\\*.js", "*.js", true},
      {"\\*.js", "a.js", false},
      {"\xff*", "\xff\xfe.js", true},
      {"", "a.js", false},
  };
  for (const Row& row : rows) {
    const Globs globs({row.pattern});
    EXPECT_FALSE(globs.areNone());
    EXPECT_EQ(globs.match(row.path, row.isDirectory), row.isMatch)
        << row.pattern << " and " << row.path;
  }
}

TEST(Globs, WithManyStarsOrBracesAreBounded) {
  std::string stars;
  std::string path;
  for (int part = 0; part < 40; ++part) {
    stars += "**/";
    path += "a/";
  }
  EXPECT_FALSE(Globs({stars + "q"}).match(path + "a", false));
  EXPECT_TRUE(Globs({stars + "a"}).match(path + "a", false));
  EXPECT_TRUE(Globs({"{a,b}{a,b}{a,b}{a,b}{a,b}{a,b}{a,b}{a,b}{a,b}"}).match("abababaab", false));
  std::string alternatives = "{0";
  for (int number = 1; number < 1000; ++number) alternatives += "," + std::to_string(number);
  EXPECT_TRUE(Globs({alternatives + "}"}).match("999", false));
  EXPECT_THROW(Globs({alternatives + ",1000}"}), host::Failure);
  std::string braces(5000, '{');
  EXPECT_THROW(Globs({braces + "a" + std::string(5000, '}')}), host::Failure);
}

TEST(Globs, MatchIfOneOfThemDoes) {
  const Globs globs({"*.js", "doc/*"});
  EXPECT_TRUE(globs.match("a.js", false));
  EXPECT_TRUE(globs.match("doc/a.md", false));
  EXPECT_FALSE(globs.match("a.md", false));
  EXPECT_TRUE(Globs({}).areNone());
  EXPECT_FALSE(Globs({}).match("a.js", false));
}

}  // namespace
