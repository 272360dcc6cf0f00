#include "lsp/folding.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lsp/outline_maker.h"

namespace {

using namespace host::lsp;
using host::outline::Kind;
using lsp_test::outlineOf;
using lsp_test::textOf;

constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

std::vector<std::string> foldsOf(const FileOutline& outline, std::size_t limit = kNoLimit) {
  std::vector<std::string> texts;
  for (const Fold& fold : findFolds(outline, limit)) {
    texts.push_back(std::to_string(fold.startLine) + "-" + std::to_string(fold.endLine) +
                    std::string(fold.kind.empty() ? "" : " ").append(fold.kind));
  }
  return texts;
}

using Texts = std::vector<std::string>;

TEST(Folds, LeaveTheClosingLine) {
  EXPECT_EQ(foldsOf(outlineOf("f {\n a\n}\n", {{Kind::kFunction, "f", 1, 3}})), Texts{"0-1"});
  EXPECT_EQ(foldsOf(outlineOf("f\n a\n b\n", {{Kind::kFunction, "f", 1, 3}})), Texts{"0-2"});
  EXPECT_EQ(foldsOf(outlineOf("f {\n}\n", {{Kind::kFunction, "f", 1, 2}})), Texts{});
  EXPECT_EQ(foldsOf(outlineOf("f { }\n", {{Kind::kFunction, "f", 1, 1}})), Texts{});
}

TEST(Folds, AreCommentsAndImportsToo) {
  const FileOutline outline = outlineOf(
      "import a\nimport b\n/*\n*/\nf {\n a\n}\n",
      {{Kind::kModule, "a", 1, 1}, {Kind::kModule, "b", 2, 2}, {Kind::kFunction, "f", 5, 7}},
      Encoding::kUtf16, {{3, 4}});
  EXPECT_EQ(foldsOf(outline), (Texts{"0-1 imports", "2-3 comment", "4-5"}));
}

TEST(Folds, AreOneALine) {
  const FileOutline outline = outlineOf(
      "a(b(\nc\n), d\n)\n", {{Kind::kCallback, "", 1, 4}, {Kind::kCallback, "", 1, 3, 0}});
  EXPECT_EQ(foldsOf(outline), Texts{"0-2"});
}

TEST(Folds, OfMoreThanTheLimitTheOutermostStay) {
  const FileOutline outline = outlineOf("a\nb\nc\nd\ne\nf\ng\nh\n", {{Kind::kClass, "a", 1, 6},
                                                                     {Kind::kClass, "b", 2, 5, 0},
                                                                     {Kind::kClass, "c", 3, 4, 1},
                                                                     {Kind::kClass, "g", 7, 8}});
  EXPECT_EQ(foldsOf(outline, 4), (Texts{"0-5", "1-4", "2-3", "6-7"}));
  EXPECT_EQ(foldsOf(outline, 3), (Texts{"0-5", "1-4", "6-7"}));
  EXPECT_EQ(foldsOf(outline, 2), (Texts{"0-5", "6-7"}));
  EXPECT_EQ(foldsOf(outline, 1), Texts{"0-5"});
  EXPECT_EQ(foldsOf(outline, 0), Texts{});
}

std::string written(bool foldsLinesOnly) {
  const std::string text = "\xf0\x9f\x98\x80 {\n a\n}\nxyz {\n a\n}\n";
  const FileOutline outline =
      outlineOf(text, {{Kind::kFunction, "f", 1, 3}, {Kind::kFunction, "xyz", 4, 6}});
  ClientFeatures features;
  features.foldsLinesOnly = foldsLinesOnly;
  rapidjson::StringBuffer buffer;
  JsonWriter out(buffer);
  writeFolds(out, outline, text, features);
  std::string result = buffer.GetString();
  std::replace(result.begin(), result.end(), '"', '\'');
  return result;
}

TEST(Folds, BeginAtTheEndsOfTheirLines) {
  EXPECT_EQ(written(true), "[{'startLine':0,'endLine':1},{'startLine':3,'endLine':4}]");
  EXPECT_EQ(written(false),
            "[{'startLine':0,'startCharacter':4,'endLine':1},"
            "{'startLine':3,'startCharacter':5,'endLine':4}]");
}

std::vector<std::string> around(const FileOutline& outline, std::string_view text, Position at) {
  std::vector<std::string> texts;
  for (const Range& range : rangesAround(outline, text, at, Encoding::kUtf16)) {
    texts.push_back(textOf(range));
  }
  return texts;
}

TEST(Selections, WidenFromTheWordToTheText) {
  const std::string text = "class A {\n  m(one) {\n    two;\n  }\n}\n";
  const FileOutline outline =
      outlineOf(text, {{Kind::kClass, "A", 1, 5}, {Kind::kMethod, "m", 2, 4, 0}});
  const std::string all = "0:0-5:0";
  EXPECT_EQ(around(outline, text, {1, 5}),
            (Texts{"1:4-1:7", "1:2-1:10", "1:2-3:3", "0:0-4:1", all}));
  EXPECT_EQ(around(outline, text, {2, 7}),
            (Texts{"2:4-2:7", "2:4-2:8", "1:2-3:3", "0:0-4:1", all}));
  EXPECT_EQ(around(outline, text, {2, 0}), (Texts{"1:2-3:3", "0:0-4:1", all}));
  EXPECT_EQ(around(outline, text, {5, 0}), Texts{all});
  EXPECT_EQ(around(outline, text, {9, 9}), Texts{all});
  EXPECT_EQ(around(outline, text, {2, 99}), (Texts{"2:4-2:8", "1:2-3:3", "0:0-4:1", all}));
  EXPECT_EQ(around({}, "", {0, 0}), Texts{"0:0-0:0"});
}

TEST(Selections, AreNestedObjects) {
  rapidjson::StringBuffer buffer;
  JsonWriter out(buffer);
  writeSelections(out, {}, "a b", {{0, 0}}, Encoding::kUtf16);
  std::string text = buffer.GetString();
  std::replace(text.begin(), text.end(), '"', '\'');
  EXPECT_EQ(
      text,
      "[{'range':{'start':{'line':0,'character':0},'end':{'line':0,'character':1}},"
      "'parent':{'range':{'start':{'line':0,'character':0},'end':{'line':0,'character':3}}}}]");
}

}  // namespace
