#include "lsp/workspace_index.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lsp/outline_maker.h"

namespace {

using namespace host::lsp;
using host::outline::Kind;
using lsp_test::outlineOf;
using lsp_test::Row;

// The names that a search over the files finds, with their containers.
std::vector<std::string> found(const std::vector<FileSymbols>& files, std::string_view query) {
  SymbolSearch search(query);
  const std::string uri = "u";
  for (const FileSymbols& file : files) search.add(uri, file);
  rapidjson::StringBuffer buffer;
  JsonWriter out(buffer);
  search.write(out, ~SymbolKinds{0});
  rapidjson::Document document;
  EXPECT_TRUE(parseJson(buffer.GetString(), document));
  std::vector<std::string> names;
  for (const Json& symbol : document.GetArray()) {
    std::string name(findText(symbol, {"name"}).value());
    if (const auto container = findText(symbol, {"containerName"})) {
      name.append(" in ").append(*container);
    }
    names.push_back(name);
  }
  return names;
}

FileSymbols symbolsOf(const std::vector<std::string>& names) {
  std::string source;
  std::vector<Row> rows;
  for (const std::string& name : names) {
    source += name + "\n";
    rows.push_back({Kind::kFunction, name, static_cast<std::int32_t>(rows.size()) + 1,
                    static_cast<std::int32_t>(rows.size()) + 1});
  }
  return FileSymbols(outlineOf(source, rows));
}

using Names = std::vector<std::string>;

TEST(SymbolSearch, HasExactNamesThenPrefixesThenOthers) {
  const std::vector<FileSymbols> files = {symbolsOf({"unload", "loader", "xyz"}),
                                          symbolsOf({"Load", "load", "reLoadAll", "LOADING"})};
  EXPECT_EQ(found(files, "load"),
            (Names{"Load", "load", "loader", "LOADING", "unload", "reLoadAll"}));
  EXPECT_EQ(found(files, "LOAD"), found(files, "load"));
  EXPECT_EQ(found(files, "zz"), Names{});
  EXPECT_EQ(found(files, "xyzz"), Names{});
  EXPECT_EQ(found(files, "").size(), 7U);
}

// The limit is the last step: what is exact is never lost to it.
TEST(SymbolSearch, KeepsTheBestOfMany) {
  Names names;
  for (int i = 0; i < 1500; ++i) names.push_back("xa" + std::to_string(i));
  const Names all = found({symbolsOf(names), symbolsOf({"a", "ab"})}, "a");
  ASSERT_EQ(all.size(), 1000U);
  EXPECT_EQ(all[0], "a");
  EXPECT_EQ(all[1], "ab");
  EXPECT_EQ(all[2], "xa0");
  EXPECT_EQ(all[999], "xa997");
}

TEST(SymbolSearch, NamesTheContainerAndLeavesOutWhatIsNotSearched) {
  const FileOutline outline = outlineOf("a\nb\nc\nd\n", {{Kind::kClass, "a", 1, 4},
                                                         {Kind::kCallback, "b", 2, 4, 0},
                                                         {Kind::kMethod, "c", 3, 3, 1},
                                                         {Kind::kElement, "d", 4, 4, 0}});
  EXPECT_EQ(found({FileSymbols(outline)}, ""), (Names{"a", "c in a"}));
}

TEST(WorkspaceIndex, KnowsWhatIsBelowAFolder) {
  EXPECT_TRUE(isBelow("/a/b", "/a"));
  EXPECT_TRUE(isBelow("/a/b", "/a/"));
  EXPECT_TRUE(isBelow("/a", "/a"));
  EXPECT_TRUE(isBelow("/a", "/"));
  EXPECT_FALSE(isBelow("/ab", "/a"));
  EXPECT_FALSE(isBelow("/", "/a"));
  WorkspaceIndex index;
  for (const char* path : {"/a/x", "/ab/x", "/a/b/y"}) index.set(path, {});
  EXPECT_EQ(index.pathsBelow("/a"), (Names{"/a/b/y", "/a/x"}));
  index.erase("/a/x");
  EXPECT_FALSE(index.holds("/a/x"));
  EXPECT_EQ(index.files().at("/a/b/y").uri, "file:///a/b/y");
}

}  // namespace
