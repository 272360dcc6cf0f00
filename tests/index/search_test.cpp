// What a search finds in an index that was written row by row.
#include "index/search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "index/index_writer.h"
#include "index/schema.h"
#include "support/temp_dir.h"
#include "system/failure.h"

namespace host::index {
namespace {

using outline::Kind;

ItemRow row(Kind kind, std::int64_t line, std::int64_t lastLine, std::int64_t parent,
            std::string_view name, std::string_view text) {
  ItemRow item;
  item.kind = kind;
  item.label = "line";
  item.line = line;
  item.lastLine = lastLine;
  if (parent >= 0) item.parent = parent;
  item.record = 1;
  if (!name.empty()) item.name = name;
  item.text = text;
  item.isNamePlain = isPlainText(name);
  return item;
}

void put(IndexWriter& writer, std::int64_t file, std::string_view path,
         const std::vector<ItemRow>& rows) {
  FileRow row;
  row.status = "answered";
  auto next = rows.begin();
  writer.putFile(file, path, row, [&](ItemRow& item) {
    if (next == rows.end()) return false;
    item = *next++;
    return true;
  });
}

class SearchTest : public testing::Test {
 protected:
  // Two files: in the first, numbers 0 to 6, a class Tree (1-9) with a method grow (2-5), which has
  // a statement (3) and a function leaf (4-5), a field leaf_count (7), and behind it a variable
  // tree (10) and one whose name is not UTF-8 (11); in the second a function leaf (1-2) with a
  // statement.
  SearchTest() {
    IndexWriter writer(path_, "index");
    put(writer, writer.newFile(), "src/tree.js",
        {row(Kind::kClass, 1, 9, -1, "Tree", "class Tree {"),
         row(Kind::kMethod, 2, 5, 0, "grow", "grow() {"),
         row(Kind::kStatement, 3, 3, 1, "", "water(100%);"),
         row(Kind::kFunction, 4, 5, 1, "leaf", "function leaf() {"),
         row(Kind::kField, 7, 7, 0, "leaf_count", "leaf_count = 0;"),
         row(Kind::kVariable, 10, 10, -1, "tree", "let tree;"),
         row(Kind::kVariable, 11, 11, -1, "leaf\xff", "let leaf;")});
    put(writer, writer.newFile(), "lib/leaf.js",
        {row(Kind::kFunction, 1, 2, -1, "leaf", "function leaf() {"),
         row(Kind::kStatement, 2, 2, 0, "", "water(1);")});
    writer.finish();
  }

  // The matches as FILE:NUMBER, in order, with an asterisk behind exact ones.
  std::string found(const Query& query) {
    IndexReader reader(path_);
    std::vector<Match> matches = Search(reader, query).run();
    std::sort(matches.begin(), matches.end(),
              [](const Match& a, const Match& b) { return a.item < b.item; });
    std::string text;
    for (const Match& match : matches) {
      text += (text.empty() ? "" : " ") + std::to_string(fileOf(match.item)) + ":" +
              std::to_string(numberOf(match.item)) + (match.isExact ? "*" : "");
    }
    return text;
  }

  std::string foundByName(NameMatch match, const std::string& name) {
    Query query;
    query.nameMatch = match;
    query.name = name;
    const NamePattern pattern(match == NameMatch::kRegex ? name : "x");
    query.pattern = &pattern;
    return found(query);
  }

  support::TempDir folder_;
  std::string path_ = folder_.path("index");
};

TEST_F(SearchTest, FindsNames) {
  EXPECT_EQ(foundByName(NameMatch::kExact, "leaf"), "1:3 2:0");
  EXPECT_EQ(foundByName(NameMatch::kExact, "leaf\xff"), "1:6");
  EXPECT_EQ(foundByName(NameMatch::kExact, "lea"), "");
  EXPECT_EQ(foundByName(NameMatch::kPrefix, "leaf"), "1:3* 1:4 1:6 2:0*");
  EXPECT_EQ(foundByName(NameMatch::kPrefix, "leaf\xff"), "1:6*");
  EXPECT_EQ(foundByName(NameMatch::kPrefix, "tree"), "1:5*");
  EXPECT_EQ(foundByName(NameMatch::kPrefix, ""), "1:0 1:1 1:3 1:4 1:5 1:6 2:0");
  EXPECT_EQ(foundByName(NameMatch::kContains, "ea"), "1:3 1:4 1:6 2:0");
  EXPECT_EQ(foundByName(NameMatch::kContains, "ree"), "1:0 1:5");
  EXPECT_EQ(foundByName(NameMatch::kContains, "\xff"), "1:6");
  EXPECT_EQ(foundByName(NameMatch::kRegex, "^[Tt]ree$|_c"), "1:0 1:4 1:5");
}

TEST_F(SearchTest, FindsKindsTextsAndPaths) {
  Query query;
  query.kinds.emplace().set(static_cast<std::size_t>(Kind::kFunction));
  EXPECT_EQ(found(query), "1:3 2:0");
  const Globs lib({"lib"});
  query.paths = &lib;
  EXPECT_EQ(found(query), "2:0");
  query.kinds.reset();
  EXPECT_EQ(found(query), "2:0 2:1");
  query.paths = nullptr;
  query.text = "water(1";
  EXPECT_EQ(found(query), "1:2 2:1");
  query.text = "100%";
  EXPECT_EQ(found(query), "1:2");
  // At the end, at the beginning, as a whole, longer than any, and nothing.
  for (const auto& [text, items] :
       std::vector<std::pair<std::string, std::string>>{{");", "1:2 2:1"},
                                                        {"water", "1:2 2:1"},
                                                        {"let tree;", "1:5"},
                                                        {"water(100%);;", ""},
                                                        {"tree", "1:5"},
                                                        {"eaf", "1:3 1:4 1:6 2:0"},
                                                        {"(1)", "2:1"}}) {
    query.text = text;
    EXPECT_EQ(found(query), items) << text;
  }
  query.text = "";
  query.paths = &lib;
  EXPECT_EQ(found(query), "2:0 2:1");
}

TEST_F(SearchTest, FindsWhatIsInside) {
  Query query;
  query.inside = "Tree";
  EXPECT_EQ(found(query), "1:1 1:2 1:3 1:4");
  query.inside = "grow";
  EXPECT_EQ(found(query), "1:2 1:3");
  query.nameMatch = NameMatch::kExact;
  query.name = "leaf";
  EXPECT_EQ(found(query), "1:3");
  query.inside = "tree";
  EXPECT_EQ(found(query), "");
}

TEST_F(SearchTest, FindsTheItemsAroundALine) {
  const auto at = [this](std::int64_t line) {
    Query query;
    query.atPaths = {"no such file", "src/tree.js"};
    query.atLine = line;
    return found(query);
  };
  EXPECT_EQ(at(0), "");
  EXPECT_EQ(at(1), "1:0");
  EXPECT_EQ(at(3), "1:0 1:1 1:2");
  EXPECT_EQ(at(5), "1:0 1:1 1:3");
  EXPECT_EQ(at(6), "1:0");
  EXPECT_EQ(at(7), "1:0 1:4");
  EXPECT_EQ(at(10), "1:5");
  EXPECT_EQ(at(99), "");
}

TEST_F(SearchTest, ReplacesAndRemovesFiles) {
  {
    IndexWriter writer(path_, "index");
    put(writer, 1, "src/tree.js", {row(Kind::kFunction, 1, 1, -1, "leaf", "leaf() {}")});
    writer.removeFile(2);
    EXPECT_EQ(writer.newFile(), 3);
    writer.finish();
  }
  EXPECT_EQ(foundByName(NameMatch::kPrefix, ""), "1:0");
  EXPECT_EQ(foundByName(NameMatch::kExact, "leaf"), "1:0");
}

TEST(SelectsPath, TakesNamesFoldersAndPaths) {
  EXPECT_TRUE(selectsPath(Globs({"*.js"}), "./src/a.js"));
  EXPECT_TRUE(selectsPath(Globs({"src"}), "./src/deep/a.js"));
  EXPECT_TRUE(selectsPath(Globs({"src/"}), "src/a.js"));
  EXPECT_TRUE(selectsPath(Globs({"src/**"}), "src/deep/a.js"));
  EXPECT_TRUE(selectsPath(Globs({"home/x/*.js"}), "/home/x/a.js"));
  EXPECT_FALSE(selectsPath(Globs({"src/*.js"}), "lib/src/a.js"));
  EXPECT_FALSE(selectsPath(Globs({"a"}), "a.js"));
}

TEST(NamePattern, RefusesWhatCouldTakeForever) {
  EXPECT_THROW(NamePattern("("), Failure);
  EXPECT_THROW(NamePattern("(a)\\1"), Failure);
  EXPECT_NO_THROW(NamePattern("\\\\1"));
  EXPECT_THROW(NamePattern("((((a{9}){9}){9}){9})"), Failure);
  EXPECT_THROW(NamePattern(std::string(1001, 'a')), Failure);
  EXPECT_THROW(NamePattern(std::string("a\0b", 3)), Failure);
}

}  // namespace
}  // namespace host::index
