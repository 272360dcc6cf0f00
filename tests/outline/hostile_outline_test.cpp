// The rules of outlines, over hostile texts, texts cut short and random ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "hostile/generators.h"
#include "outline/script_scanner.h"
#include "outline_of.h"
#include "outline_rules.h"

namespace hostile {

void PrintTo(const Generator& generator, std::ostream* out) { *out << generator.name; }

}  // namespace hostile

namespace {

using host::outline::Item;
using host::outline::Kind;

class HostileOutline : public testing::TestWithParam<hostile::Generator> {};

TEST_P(HostileOutline, KeepsTheRules) {
  for (const std::size_t bytes : {std::size_t{300}, std::size_t{30'000}}) {
    const std::string text = GetParam().generate(bytes);
    const Outlined outlined = outlineOf(std::string("text") + GetParam().extension, text);
    EXPECT_EQ(brokenRule(outlined.items, text, outlined.answer), "") << bytes;
  }
}

// The same text on the other routes.
TEST_P(HostileOutline, KeepsTheRulesUnderAnyName) {
  const std::string text = GetParam().generate(5'000);
  for (const char* const name : {"a.tsx", "a.ts", "a.html", "a.css"}) {
    const Outlined outlined = outlineOf(name, text);
    EXPECT_EQ(brokenRule(outlined.items, text, outlined.answer), "") << name;
  }
}

INSTANTIATE_TEST_SUITE_P(All, HostileOutline, testing::ValuesIn(hostile::generators()),
                         [](const auto& row) { return std::string(row.param.name); });

// Every piece of syntax beside every other, in files that end anywhere.
TEST(RandomOutline, KeepsTheRules) {
  const std::vector<std::string_view> pieces = {
      "{",          "}",         "(",         ")",
      "[",          "]",         "<",         ">",
      "</",         "/>",        "=>",        "=",
      ":",          ";",         ",",         "?",
      "`",          "${",        "\"",        "'",
      "/",          "/*",        "*/",        "//",
      "<!--",       "-->",       "\n",        "\r\n",
      "\r",         " ",         "\\",        "@",
      "#",          "...",       "function ", "class ",
      "a",          "b.c",       "const ",    "if ",
      "else ",      "return ",   "async ",    "get ",
      "interface ", "enum ",     "type ",     "namespace ",
      "export ",    "default ",  "case ",     "static ",
      "<script>",   "</script>", "<p>",       "<div class=\"a\">",
      "TTTTT",      "extends "};
  std::mt19937 random(20'240'607);
  const std::vector<std::string> names = {"a.js", "a.ts", "a.tsx", "a.html", "a.php", "a.c"};
  for (int round = 0; round < 3'000; ++round) {
    std::string text;
    const std::size_t count = random() % 60 + 1;
    for (std::size_t i = 0; i < count; ++i) text += pieces[random() % pieces.size()];
    const std::string& name = names[random() % names.size()];
    const Outlined outlined = outlineOf(name, text);
    ASSERT_EQ(brokenRule(outlined.items, text, outlined.answer), "") << name << "\n" << text;
  }
}

TEST(OutlineRules, GoRedForBrokenOutlines) {
  const std::string text = "function f() {\n  a();\n}\n";
  const Outlined outlined = outlineOf("a.js", text);
  ASSERT_EQ(outlined.items.size(), 2U);
  ASSERT_EQ(brokenRule(outlined.items, text, outlined.answer), "");
  const auto broken = [&](auto change) {
    std::vector<Item> items = outlined.items;
    change(items);
    return brokenRule(items, text, outlined.answer);
  };
  EXPECT_NE(broken([](auto& items) { items[0].lastLine = 5; }), "");
  EXPECT_NE(broken([](auto& items) { items[0].lastLine = 1; }), "") << "the child is outside";
  EXPECT_NE(broken([](auto& items) { items[1].lastLine = 1; }), "");
  EXPECT_NE(broken([](auto& items) { items[1].depth = 0; }), "");
  EXPECT_NE(broken([](auto& items) { items[1].parent = 1; }), "");
  EXPECT_NE(broken([](auto& items) { items[0].parent = -2; }), "");
  EXPECT_NE(broken([](auto& items) { items[0].depth = 1; }), "");
  EXPECT_NE(broken([](auto& items) { items.pop_back(); }), "") << "a record is lost";
  EXPECT_NE(broken([](auto& items) { items[1].record = 3; }), "") << "one is there twice";
  EXPECT_NE(broken([](auto& items) { std::swap(items[0], items[1]); }), "");
  EXPECT_NE(broken([](auto& items) { items.emplace_back().firstLine = items.back().lastLine = 3; }),
            "");
}

// Deeper than what is remembered, and on one line of a megabyte.
TEST(DeepScript, IsReadWithoutRecursion) {
  const std::size_t depth = 1'000'000;
  std::string text(depth, '{');
  text.append(depth, '}').append("\nfunction f() {\n}\n");
  const auto structure = host::outline::scanScript(text, 1, 100'000, {});
  ASSERT_EQ(structure.definitions.size(), 1U);
  EXPECT_EQ(structure.definitions[0].firstLine, 2);
  EXPECT_EQ(structure.definitions[0].lastLine, 3);
}

}  // namespace
