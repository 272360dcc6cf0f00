#include "lsp/symbols.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lsp/outline_maker.h"

namespace {

using namespace host::lsp;
using host::outline::Kind;
using lsp_test::outlineOf;
using lsp_test::Row;

constexpr SymbolKinds kAllKinds = ~SymbolKinds{0};

std::string symbolsOf(const FileOutline& outline, const ClientFeatures& features) {
  rapidjson::StringBuffer buffer;
  JsonWriter out(buffer);
  writeDocumentSymbols(out, outline, "u", features);
  EXPECT_TRUE(out.IsComplete());
  std::string text = buffer.GetString();
  std::replace(text.begin(), text.end(), '"', '\'');
  return text;
}

const FileOutline& twoLevels() {
  static const FileOutline outline = outlineOf(
      "class A {\n  m() {\n  }\n}\n", {{Kind::kClass, "A", 1, 4}, {Kind::kMethod, "m", 2, 3, 0}});
  return outline;
}

TEST(Symbols, AreATree) {
  ClientFeatures features;
  features.takesSymbolTree = true;
  features.documentKinds = kAllKinds;
  EXPECT_EQ(
      symbolsOf(twoLevels(), features),
      "[{'name':'A','kind':5,"
      "'range':{'start':{'line':0,'character':0},'end':{'line':3,'character':1}},"
      "'selectionRange':{'start':{'line':0,'character':6},'end':{'line':0,'character':7}},"
      "'children':[{'name':'m','kind':6,"
      "'range':{'start':{'line':1,'character':2},'end':{'line':2,'character':3}},"
      "'selectionRange':{'start':{'line':1,'character':2},'end':{'line':1,'character':3}}}]}]");
  EXPECT_EQ(symbolsOf({}, features), "[]");
}

TEST(Symbols, AreAListWithoutHierarchy) {
  ClientFeatures features;
  features.documentKinds = kAllKinds;
  EXPECT_EQ(symbolsOf(twoLevels(), features),
            "[{'name':'A','kind':5,'location':{'uri':'u',"
            "'range':{'start':{'line':0,'character':0},'end':{'line':3,'character':1}}}},"
            "{'name':'m','kind':6,'location':{'uri':'u',"
            "'range':{'start':{'line':1,'character':2},'end':{'line':2,'character':3}}},"
            "'containerName':'A'}]");
}

// "name kind depth" of the symbols; the rows' names.
std::vector<std::string> rowsOf(const FileOutline& outline, bool withImports) {
  std::vector<std::string> texts;
  for (const SymbolRow& row : symbolRows(outline, withImports)) {
    texts.push_back(std::string(outline.name(outline.entries[row.entry])) + " " +
                    std::to_string(row.kind) + " " + std::to_string(row.depth));
  }
  return texts;
}

TEST(Symbols, HaveTheProtocolsKinds) {
  const std::vector<std::pair<Kind, std::string>> kinds = {
      {Kind::kFunction, "x 12 0"},  {Kind::kMethod, "x 6 0"},    {Kind::kConstructor, "x 9 0"},
      {Kind::kGetter, "x 6 0"},     {Kind::kSetter, "x 6 0"},    {Kind::kClass, "x 5 0"},
      {Kind::kInterface, "x 11 0"}, {Kind::kEnum, "x 10 0"},     {Kind::kNamespace, "x 3 0"},
      {Kind::kType, "x 11 0"},      {Kind::kVariable, "x 13 0"}, {Kind::kField, "x 8 0"},
      {Kind::kElement, "x 8 0"},    {Kind::kLink, "x 17 0"},     {Kind::kBlock, "x 19 0"}};
  for (const auto& [kind, text] : kinds) {
    EXPECT_EQ(rowsOf(outlineOf("x\ny\n", {{kind, "x", 1, 2}}), false),
              std::vector<std::string>{text});
  }
  for (const Kind kind : {Kind::kModule, Kind::kCallback, Kind::kLogic, Kind::kLoop,
                          Kind::kStatement, Kind::kScript}) {
    EXPECT_EQ(rowsOf(outlineOf("x\ny\n", {{kind, "x", 1, 2}}), false), std::vector<std::string>{});
  }
  EXPECT_EQ(rowsOf(outlineOf("x", {{Kind::kModule, "x", 1, 1}}), true),
            std::vector<std::string>{"x 2 0"});
}

// A callback is one only around others; what is none leaves its children to its parent.
TEST(Symbols, StandInWhatContainsThem) {
  const FileOutline outline = outlineOf("a\nb\nc\nd\ne\nf\n", {{Kind::kCallback, "a", 1, 6},
                                                               {Kind::kLogic, "b", 2, 5, 0},
                                                               {Kind::kFunction, "c", 3, 4, 1},
                                                               {Kind::kCallback, "e", 5, 6, 0}});
  EXPECT_EQ(rowsOf(outline, false), (std::vector<std::string>{"a 12 0", "c 12 1"}));
}

TEST(Symbols, AreAtMostSoDeep) {
  std::vector<Row> rows;
  std::string source;
  for (int i = 0; i < 300; ++i) {
    rows.push_back({Kind::kClass, "x", i + 1, 300, i - 1});
    source += "x\n";
  }
  const std::vector<SymbolRow> symbols = symbolRows(outlineOf(source, rows), false);
  ASSERT_EQ(symbols.size(), 300U);
  EXPECT_EQ(symbols[199].depth, 199);
  for (std::size_t i = 200; i < 300; ++i) {
    EXPECT_EQ(symbols[i].depth, 199);
    EXPECT_EQ(symbols[i].parent, 198);
  }
}

TEST(Symbols, AreOfKindsThatTheClientKnows) {
  EXPECT_EQ(kindFor(19, kAllKinds), 19);
  EXPECT_EQ(kindFor(19, (1U << 19U) - 1), 3);
  rapidjson::Document parameters;
  ASSERT_TRUE(parseJson(R"({"capabilities":{}})", parameters));
  EXPECT_EQ(readFeatures(parameters).documentKinds, (1U << 19U) - 1);
  ASSERT_TRUE(parseJson(R"({"capabilities":{"textDocument":{"documentSymbol":{
      "symbolKind":{"valueSet":[5,19,99,-1,"x"]}}}}})",
                        parameters));
  EXPECT_EQ(readFeatures(parameters).documentKinds, (1U << 5U) | (1U << 19U));
}

}  // namespace
