// The order of the passes, and the pipeline's own passes: page comments and the plain replacement.
// The other passes have their own tests.

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "cleaner/cleaner.h"
#include "support/names.h"

namespace {

using std::string_view_literals::operator""sv;
using support::names;

struct PageCommentCase {
  std::string_view why;
  std::string_view text;
  std::string_view left;
};

constexpr PageCommentCase kPageComments[] = {
    {"no text", ""sv, ""sv},
    {"no comment", "a\t<b>\r\n\0\xE9"sv, "a\t<b>\r\n\0\xE9"sv},
    {"a comment leaves nothing", "a<!-- b -->c"sv, "ac"sv},
    {"it leaves its line feeds", "a<!-- x\ny\n\n -->b"sv, "a\n\n\nb"sv},
    {"but not its carriage returns", "a\r\n<!--\r\n-->\r\nb"sv, "a\r\n\n\r\nb"sv},
    {"several comments", "a<!--1-->b<!--2-->c"sv, "abc"sv},
    {"one right behind the other", "<!--1--><!--2-->"sv, ""sv},
    {"an empty comment", "a<!---->b"sv, "ab"sv},
    {"required: the opener's dashes close nothing", "<!-->x-->y"sv, "y"sv},
    {"nor does one of them", "<!--->x"sv, ""sv},
    {"dashes before the closer belong to the comment", "<!--a--->b"sv, "b"sv},
    {"without an end it runs to the end of the text", "a<!-- b\nc"sv, "a\n"sv},
    {"a bare opener", "a<!--"sv, "a"sv},
    {"a closer cut short", "<!--a--"sv, ""sv},
    {"a closer over two lines is none", "<!--a--\n>b"sv, "\n"sv},
    {"a closer with a blank is none", "<!--a- ->b"sv, ""sv},
    {"a closer outside is text", "a --> b"sv, "a --> b"sv},
    {"the closer behind a comment is text", "<!--a-->-->"sv, "-->"sv},
    {"the first closer ends the comment", "<!-- a <!-- b --> c -->"sv, " c -->"sv},
    {"an opener cut short by the end", "a<!-"sv, "a<!-"sv},
    {"an opener with one dash", "<!- x -->"sv, "<!- x -->"sv},
    {"an opener with a blank", "< !-- x -->"sv, "< !-- x -->"sv},
    {"a document type", "<!DOCTYPE html>"sv, "<!DOCTYPE html>"sv},
    {"what the removal joins is not read again", "<!<!--x-->--y-->z"sv, "<!--y-->z"sv},
    {"required: strings are not known", "s = \"<!--\"; t\n-->u"sv, "s = \"\nu"sv},
    {"nor are script comments", "// <!--\na\n//-->\nb"sv, "// \n\n\nb"sv},
    {"odd bytes in a comment go", "a<!--\0\xE9\t-->b"sv, "ab"sv},
};

TEST(CleaningPipeline, PageComments) {
  for (const PageCommentCase& row : kPageComments) {
    SCOPED_TRACE(testing::Message() << row.why << ": " << testing::PrintToString(row.text));
    EXPECT_EQ(Cleaner().RemoveHTMLComments(std::string(row.text)), row.left);
  }
}

TEST(CleaningPipeline, ManyPageCommentOpenersWithoutACloser) {
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += "<!--\n";
  EXPECT_EQ(Cleaner().RemoveHTMLComments(text), std::string(100'000, '\n'));
}

struct ReplaceCase {
  std::string_view why;
  std::string_view text;
  std::string_view from;
  std::string_view to;
  std::string_view result;
};

constexpr ReplaceCase kReplacements[] = {
    {"nothing is sought", "abc"sv, ""sv, "x"sv, "abc"sv},
    {"no text", ""sv, "a"sv, "x"sv, ""sv},
    {"nothing sought in no text", ""sv, ""sv, "x"sv, ""sv},
    {"absent", "abc"sv, "d"sv, "x"sv, "abc"sv},
    {"longer than the text", "ab"sv, "abc"sv, "x"sv, "ab"sv},
    {"the whole text", "abc"sv, "abc"sv, "x"sv, "x"sv},
    {"case counts", "aAa"sv, "A"sv, "x"sv, "axa"sv},
    {"what is put in is not searched", "aa"sv, "a"sv, "aa"sv, "aaaa"sv},
    {"what is shorter is not searched either", "aaaa"sv, "aa"sv, "a"sv, "aa"sv},
    {"from the left", "aaa"sv, "aa"sv, "b"sv, "ba"sv},
    {"at both ends", "xax"sv, "x"sv, "--"sv, "--a--"sv},
    {"taken out", "a-b-"sv, "-"sv, ""sv, "ab"sv},
    {"what comes together is not searched", "aabb"sv, "ab"sv, ""sv, "ab"sv},
    {"by itself", "abab"sv, "ab"sv, "ab"sv, "abab"sv},
    {"NUL is a byte", "a\0b\0"sv, "\0"sv, "x"sv, "axbx"sv},
    {"a byte of 0x80 and above", "a\xE9"sv, "\xE9"sv, "e"sv, "ae"sv},
};

TEST(CleaningPipeline, Replacements) {
  for (const ReplaceCase& row : kReplacements) {
    SCOPED_TRACE(testing::Message() << row.why << ": " << testing::PrintToString(row.text));
    std::string text(row.text);
    Cleaner().ReplaceAll(text, std::string(row.from), std::string(row.to));
    EXPECT_EQ(text, row.result);
  }
}

struct PipelineCase {
  std::string_view why;
  std::string_view text;
  std::string_view known;    // names for conditions
  std::string_view defines;  // the running list before the call
  std::string_view cleaned;
  std::string_view definesAfter;
};

constexpr PipelineCase kPipeline[] = {
    {"no text", ""sv, "", "", ""sv, ""},
    {"a plain line", "var a = 1;\n"sv, "", "", "var a = 1;\n"sv, ""},
    {"a last line without a line feed", "  var a;"sv, "", "", "var a;"sv, ""},
    {"required: carriage return and line feed are two line ends", "var a = 1; // x\r\nvar b;\r\n"sv,
     "", "D", "var a = 1; \n\nvar b;\n\n"sv, "D"},
    {"a carriage return alone is a line end", "a // b\rc\r"sv, "", "", "a \nc\n"sv, ""},
    {"indentation goes", "\tif (a) {\n\t\tb();\n\t}\n"sv, "", "", "if (a) {\nb();\n}\n"sv, ""},
    {"a tab is one space", "a\tb\t\tc\t\n"sv, "", "", "a b  c \n"sv, ""},
    {"a condition fails and is remembered", "#ifdef X\nvar a;\n#endif\n"sv, "", "", "\n\n\n"sv,
     "X"},
    {"required: the running list makes no name known", "#ifdef X\nvar a;\n#endif\n"sv, "", "X",
     "\n\n\n"sv, "X"},
    {"a known name", "#ifdef X\nvar a;\n#endif\n"sv, "W,X", "", "\nvar a;\n\n"sv, "X"},
    {"new names go behind the old ones", "#if B\n#endif\n#if A\n#endif\n"sv, "", "A,D,A",
     "\n\n\n\n"sv, "A,D,A,B"},
    {"a comment with a letter outside ASCII", "/* \xC3\xA9 */\nx = 1;"sv, "", "", "\nx = 1;"sv, ""},
    {"such a letter opens a line", "\xC3\xA9x\n"sv, "", "", "x\n"sv, ""},
    {"or stands in it", "x\xC3\xA9y\n"sv, "", "", "x  y\n"sv, ""},
    {"control bytes become spaces",
     "a\0b\fc\vd\x1F"
     "e\x7F"
     "f"sv,
     "", "", "a b c d e f"sv, ""},
    {"a page comment", "a <!-- b\nc --> d\n"sv, "", "", "a \nd\n"sv, ""},
    {"page comments go first: no block comment opens", "<!-- /* -->\na // b\n"sv, "", "",
     "\na \n"sv, ""},
    {"in a script comment too", "// <!--\na\n// -->\nb\n"sv, "", "", "\n\n\nb\n"sv, ""},
    {"the removal may put a line comment together", "/<!--x-->/ a\nb"sv, "", "", "\nb"sv, ""},
    {"tabs go before the statement's start is looked at", "a;\t[b]"sv, "", "", "a; b]"sv, ""},
    {"so do carriage returns", "a\r[b]"sv, "", "", "a\nb]"sv, ""},
    {"an apostrophe in page text opens a string", "<a href=\"x\">it's</a>\n<b>// y</b>\n"sv, "", "",
     "<a href=\"x\">it's</a>\n<b>// y</b>\n"sv, ""},
    {"two slashes in page text end the line", "see p//q\nr\n"sv, "", "", "see p\nr\n"sv, ""},
    {"a directive in a comment is none", "// #if A\n/*\n#if B\n*/\nx\n"sv, "", "", "\n\n\n\nx\n"sv,
     ""},
    {"a directive behind a comment is one", "/* x */#if A\nq\n#endif\n"sv, "", "", "\n\n\n"sv, "A"},
    {"a comment behind a name is no part of it", "#if A // b\n#endif // A\nx\n"sv, "", "",
     "\n\nx\n"sv, "A"},
    {"required: a directive in a string is one", "s = \"\n#if A\n\";\n"sv, "", "", "s = \"\n\n\n"sv,
     "A"},
    {"a tab in a directive parts its words", "#ifdef\tX\na\n#endif\n"sv, "", "", "\n\n\n"sv, "X"},
    {"the line behind a comment keeps its indentation if the comment stood alone",
     "a\n  // c\n  b\n  d\n"sv, "", "", "a\n\n  b\nd\n"sv, ""},
    {"a first line for a shell", "#!/usr/bin/env node\nvar a;\n"sv, "", "", "\nvar a;\n"sv, ""},
    {"a style rule for an id", "p { }\n#menu { }\nb { }\n"sv, "", "", "p { }\n\nb { }\n"sv, ""},
    {"only a marker run loses line feeds", "TTTTT\n\n;a\n"sv, "", "", "a\n"sv, ""},
    {"every other pass keeps them", "a\r\nb\tc\n<!--\n\n-->\n/*\n*/\n#x\n// y\nz"sv, "", "",
     "a\n\nb c\n\n\n\n\n\n\n\nz"sv, ""},
};

TEST(CleaningPipeline, WholeTexts) {
  for (const PipelineCase& row : kPipeline) {
    SCOPED_TRACE(testing::Message() << row.why << ": " << testing::PrintToString(row.text));
    Cleaner cleaner;
    std::vector<std::string> defines = names(row.defines);
    EXPECT_EQ(cleaner.CleanText(std::string(row.text), names(row.known), defines), row.cleaned);
    EXPECT_EQ(defines, names(row.definesAfter));
    for (const bool keepStrings : {false, true}) {
      defines = names(row.defines);
      EXPECT_EQ(cleaner.CleanText(std::string(row.text), names(row.known), defines, keepStrings),
                row.cleaned)
          << "keepStrings " << keepStrings;
      EXPECT_EQ(defines, names(row.definesAfter));
    }
  }
}

// Whatever a call leaves open is forgotten; only the list of names keeps growing.
TEST(CleaningPipeline, NothingIsKeptBetweenCalls) {
  Cleaner cleaner;
  std::vector<std::string> defines;
  for (const char* open : {"<!-- a", "/* a", "'a", "TTTTTa", "#if A\n", "#define A \\\n", "  "}) {
    SCOPED_TRACE(open);
    cleaner.CleanText(open, {}, defines);
    EXPECT_EQ(cleaner.CleanText("  x // y\n", {}, defines), "x \n");
  }
  EXPECT_EQ(defines, names("A"));
}

TEST(CleaningPipeline, EveryByteValue) {
  Cleaner cleaner;
  for (int value = 0; value < 256; ++value) {
    std::vector<std::string> defines;
    const char byte = static_cast<char>(value);
    const std::string cleaned = cleaner.CleanText({'x', byte, 'y', '\n'}, {}, defines);
    const bool kept = value >= 0x20 && value <= 0x7E;
    const char becomes = kept ? byte : value == '\n' || value == '\r' ? '\n' : ' ';
    EXPECT_EQ(cleaned, (std::string{'x', becomes, 'y', '\n'})) << "byte " << value;
  }
}

}  // namespace
