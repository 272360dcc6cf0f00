#include "lsp/file_outline.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lsp/outline_maker.h"

namespace {

using namespace host::lsp;
using host::outline::CommentLines;
using host::outline::Kind;
using lsp_test::outlineOf;
using lsp_test::Row;
using lsp_test::textOf;

// "name range selection parent" of each entry.
std::vector<std::string> entriesOf(const FileOutline& outline) {
  std::vector<std::string> texts;
  for (const OutlineEntry& entry : outline.entries) {
    texts.push_back(std::string(outline.name(entry)) + " " + textOf(entry.range) + " " +
                    textOf(entry.selection) + " " + std::to_string(entry.parent));
  }
  return texts;
}

using Texts = std::vector<std::string>;

TEST(FileOutline, HasTheNameWhereItStands) {
  EXPECT_EQ(entriesOf(outlineOf("function f() {\n  x();\n}\n", {{Kind::kFunction, "f", 1, 3}})),
            Texts{"f 0:0-2:1 0:9-0:10 -1"});
  EXPECT_EQ(entriesOf(outlineOf("\t  let ab = a, b;  ", {{Kind::kVariable, "a", 1, 1}})),
            Texts{"a 0:3-0:19 0:12-0:13 -1"});
  EXPECT_EQ(entriesOf(outlineOf("  get $x$() {}", {{Kind::kGetter, "$x$", 1, 1}})),
            Texts{"$x$ 0:2-0:14 0:6-0:9 -1"});
  EXPECT_EQ(entriesOf(outlineOf("  a.b = 1;", {{Kind::kVariable, "gone", 1, 1}})),
            Texts{"gone 0:2-0:10 0:2-0:10 -1"});
}

TEST(FileOutline, CountsInTheEncoding) {
  const std::string source = "/*\xf0\x9f\x98\x80*/ f\xc3\xa4(); \xf0\x9f\x98\x80\n";
  EXPECT_EQ(entriesOf(outlineOf(source, {{Kind::kFunction, "f\xc3\xa4", 1, 1}}, Encoding::kUtf16)),
            Texts{"f\xc3\xa4 0:0-0:15 0:7-0:9 -1"});
  EXPECT_EQ(entriesOf(outlineOf(source, {{Kind::kFunction, "f\xc3\xa4", 1, 1}}, Encoding::kUtf8)),
            Texts{"f\xc3\xa4 0:0-0:20 0:9-0:12 -1"});
}

// Each of several items on a line has its own place.
TEST(FileOutline, SearchesTheNamesOfALineInTheirOrder) {
  EXPECT_EQ(
      entriesOf(outlineOf("<div><p></p><div></div></div>", {{Kind::kElement, "div", 1, 1},
                                                            {Kind::kElement, "p", 1, 1, 0},
                                                            {Kind::kElement, "div", 1, 1, 0}})),
      (Texts{"div 0:0-0:29 0:1-0:4 -1", "p 0:0-0:29 0:6-0:7 0", "div 0:0-0:29 0:13-0:16 0"}));
}

TEST(FileOutline, KeepsWhatIsShownOrFolded) {
  const FileOutline outline = outlineOf("a\nb\nc\nd\n", {{Kind::kStatement, "", 1, 1},
                                                         {Kind::kLogic, "", 1, 4},
                                                         {Kind::kCallback, "", 2, 2, 1},
                                                         {Kind::kVariable, "c", 3, 3, 2}});
  EXPECT_EQ(entriesOf(outline), (Texts{" 0:0-3:1 0:0-3:1 -1", "c 2:0-2:1 2:0-2:1 0"}));
}

TEST(FileOutline, NamesOnlyWhatMayBeASymbol) {
  EXPECT_EQ(entriesOf(outlineOf("if (a)\n  b()\n", {{Kind::kLoop, "", 1, 2},
                                                    {Kind::kStatement, "", 1, 2},
                                                    {Kind::kCallback, "", 1, 2},
                                                    {Kind::kScript, "s", 1, 2}})),
            (Texts{" 0:0-1:5 0:0-1:5 -1", " 0:0-1:5 0:0-1:5 -1", "if (a) 0:0-1:5 0:0-0:6 -1",
                   "s 0:0-1:5 0:0-0:6 -1"}));
}

TEST(FileOutline, PutsLinesBeyondTheTextIntoIt) {
  EXPECT_EQ(entriesOf(outlineOf("ab", {{Kind::kVariable, "x", 7, 9}})),
            Texts{"x 0:0-0:2 0:0-0:2 -1"});
  EXPECT_EQ(entriesOf(outlineOf("", {{Kind::kVariable, "x", 0, 0}})),
            Texts{"x 0:0-0:0 0:0-0:0 -1"});
}

TEST(FileOutline, CutsNamesShort) {
  const std::string part(119, 'a');
  const auto nameOf = [](const std::string& name) {
    const FileOutline outline = outlineOf("x", {{Kind::kBlock, name, 1, 1}});
    return std::string(outline.name(outline.entries.at(0)));
  };
  EXPECT_EQ(nameOf(" a \n\t b\r\n"), "a b");
  EXPECT_EQ(nameOf(part + "b"), part + "b");
  EXPECT_EQ(nameOf(part + "bc"), part + "b...");
  EXPECT_EQ(nameOf(part + "\xc3\xa4"), part + "...");
}

TEST(FileOutline, CallsWhatHasNoNameByItsLine) {
  EXPECT_EQ(entriesOf(outlineOf("  it('x',  () => {\n})", {{Kind::kCallback, "", 1, 2}})),
            Texts{"it('x', () => { 0:2-1:2 0:2-0:18 -1"});
}

TEST(FileOutline, TellsWhatClosesIt) {
  for (const auto& [tail, isCloser] : std::vector<std::pair<std::string, bool>>{{"}", true},
                                                                                {"  ]);", true},
                                                                                {") {", true},
                                                                                {"</p>", true},
                                                                                {"<p>", false},
                                                                                {"", false},
                                                                                {"a }", false}}) {
    const FileOutline outline = outlineOf("f(\n" + tail, {{Kind::kCallback, "", 1, 2}});
    EXPECT_EQ(outline.entries.at(0).endsInCloser, isCloser) << tail;
  }
}

TEST(FileOutline, JoinsImportsOverBlankLines) {
  const std::string source =
      "import a\nimport {\n b } from c\n\n  \nimport d\nx\nimport e\nexport {f}\n";
  const FileOutline outline = outlineOf(source, {{Kind::kModule, "a", 1, 1},
                                                 {Kind::kModule, "c", 2, 3},
                                                 {Kind::kModule, "d", 6, 6},
                                                 {Kind::kModule, "e", 8, 8},
                                                 {Kind::kModule, "", 9, 9}});
  EXPECT_EQ(outline.imports, (std::vector<CommentLines>{{1, 6}, {8, 8}}));
}

TEST(FileOutline, ComesBackFromItsBytes) {
  const FileOutline outline = outlineOf("class A {\n  m() {\n  }\n}\n",
                                        {{Kind::kClass, "A", 1, 4}, {Kind::kMethod, "m", 2, 3, 0}},
                                        Encoding::kUtf16, {{1, 2}});
  FileOutline read;
  ASSERT_TRUE(readOutline(outlineBytes(outline), read));
  EXPECT_EQ(entriesOf(read), entriesOf(outline));
  EXPECT_EQ(read.comments, outline.comments);
  EXPECT_EQ(read.names, "Am");
  FileOutline empty;
  EXPECT_TRUE(readOutline(outlineBytes({}), empty));
}

// A broken module may write anything over what its worker sends.
TEST(FileOutline, IsRefusedWithAFault) {
  const FileOutline good =
      outlineOf("a\nb\nc\n", {{Kind::kClass, "a", 1, 3}, {Kind::kClass, "b", 2, 2, 0}});
  FileOutline read;
  const std::string bytes = outlineBytes(good);
  for (std::size_t size = 0; size + 2 < bytes.size(); ++size) {
    EXPECT_FALSE(readOutline(std::string_view(bytes).substr(0, size), read)) << size;
  }
  const auto isRefused = [&](auto spoil) {
    FileOutline bad = good;
    spoil(bad);
    return !readOutline(outlineBytes(bad), read);
  };
  EXPECT_FALSE(isRefused([](FileOutline&) {}));
  EXPECT_TRUE(isRefused([](FileOutline& bad) { bad.entries[0].parent = 0; }));
  EXPECT_TRUE(isRefused([](FileOutline& bad) { bad.entries[0].parent = -2; }));
  EXPECT_TRUE(isRefused([](FileOutline& bad) { bad.entries[1].parent = 1; }));
  EXPECT_TRUE(isRefused([](FileOutline& bad) { bad.entries[1].nameOffset = 3; }));
  EXPECT_TRUE(isRefused([](FileOutline& bad) { bad.entries[1].nameBytes = 2; }));
  EXPECT_TRUE(isRefused([](FileOutline& bad) { bad.entries[1].kind = static_cast<Kind>(21); }));
  EXPECT_TRUE(isRefused([](FileOutline& bad) {
    bad.entries[1].parent = -1;
    bad.entries.push_back(bad.entries[1]);
    bad.entries[2].parent = 0;
  }));
}

}  // namespace
