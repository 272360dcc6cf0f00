#include "text/string_primitives.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

// Returns every text over the alphabet of at most maxLength bytes, starting with the empty one.
std::vector<std::string> everyText(std::string_view alphabet, std::size_t maxLength) {
  std::vector<std::string> texts{""};
  std::size_t first = 0;
  for (std::size_t length = 1; length <= maxLength; ++length) {
    const std::size_t last = texts.size();
    for (; first < last; ++first)
      for (const char byte : alphabet) texts.push_back(texts[first] + byte);
  }
  return texts;
}

TEST(BothAreSpaces, OnlyForTwoBlanks) {
  struct Case {
    char a;
    char b;
    bool both;
    std::string_view why = "";
  };
  constexpr Case kCases[] = {
      {' ', ' ', true},
      {'\t', '\t', false, "no other white space counts"},
      {'\n', '\n', false},
      {'\r', '\r', false},
      {' ', '\t', false},
      {'\t', ' ', false},
      {' ', 'a', false},
      {'a', ' ', false},
      {'a', 'a', false, "equal is not enough"},
      {'!', '!', false, "the byte above the space"},
      {'\0', '\0', false},
      {'\xA0', '\xA0', false},
  };
  for (const Case& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.a) + " and " + testing::PrintToString(row.b) + " " +
                 std::string(row.why));
    EXPECT_EQ(BothAreSpaces(row.a, row.b), row.both);
  }
}

struct ReplaceCase {
  std::string_view text;
  std::string_view from;
  std::string_view to;
  std::string_view result;
  std::string_view why = "";
};
constexpr ReplaceCase kReplaceCases[] = {
    {"aa", "a", "aa", "aaaa", "what was put in is not searched again"},
    {"aaaa", "aa", "a", "aa", "what was put in joins no later match"},
    {"aaa", "aa", "b", "ba", "matches are taken from the left and do not overlap"},
    {"abab", "ab", "ba", "baba", "the search never goes back"},
    {"aab", "ab", "b", "ab", "what was put in joins no earlier byte either"},
    {"abc", "", "x", "abc", "an empty needle changes nothing"},
    {"", "", "x", "", "not even in an empty text"},
    {"", "a", "x", ""},
    {"abc", "abc", "", ""},
    {"abcabc", "b", "", "acac"},
    {"abcabc", "bc", "x", "axax", "the text ends in a match"},
    {"ab", "abc", "z", "ab", "a needle longer than the text"},
    {"ab", "ac", "z", "ab"},
    {"AbaB", "b", "x", "AxaB", "letter case counts"},
    {"cat cat", "cat", "dog", "dog dog"},
    {"a\r\nb\r\n", "\r\n", "\n", "a\nb\n"},
    {"a\0b\0"sv, "\0"sv, "00", "a00b00", "NUL is a byte like any other"},
    {"\xC3\xA9", "\xC3", "e", "e\xA9", "bytes are not decoded"},
};

TEST(ReplaceAll, Table) {
  for (const ReplaceCase& row : kReplaceCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + ", " + testing::PrintToString(row.from) +
                 " by " + testing::PrintToString(row.to) + ": " + std::string(row.why));
    std::string text(row.text);
    replaceAll(text, std::string(row.from), std::string(row.to));
    EXPECT_EQ(text, row.result);
  }
}

struct TrimCase {
  std::string_view text;
  std::string_view left;
  std::string_view right;
  std::string_view both;
  std::string_view why = "";
};
constexpr TrimCase kTrimCases[] = {
    {"", "", "", ""},
    {"\t\n", "", "", "", "only white space"},
    {" ", "", "", ""},
    {"a", "a", "a", "a"},
    {"  a  b \f", "a  b \f", "  a  b", "a  b", "inner spaces stay"},
    {" \n\r\t\f\va\v\f\t\r\n ", "a\v\f\t\r\n ", " \n\r\t\f\va", "a", "all six bytes go"},
    {"\n\n\n", "", "", ""},
    {"a\n", "a\n", "a", "a"},
    {"\na", "a", "\na", "a"},
    {"\b a \x0E", "\b a \x0E", "\b a \x0E", "\b a \x0E", "the neighbours of tab and CR stay"},
    {"\x1F!", "\x1F!", "\x1F!", "\x1F!", "the neighbours of the space stay"},
    {" \0 "sv, "\0 "sv, " \0"sv, "\0"sv, "NUL stays"},
    {"\xA0 \x85", "\xA0 \x85", "\xA0 \x85", "\xA0 \x85", "white space of other encodings stays"},
};

TEST(Trim, Table) {
  for (const TrimCase& row : kTrimCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    const std::string text(row.text);
    EXPECT_EQ(ltrim(text), row.left);
    EXPECT_EQ(rtrim(text), row.right);
    EXPECT_EQ(trim(text), row.both);
  }
}

struct TextCase {
  std::string_view text;
  std::string_view result;
  std::string_view why = "";
};

TEST(ConvertWhiteSpacesToSingleSpace, Table) {
  constexpr TextCase kCases[] = {
      {"", ""},
      {"\t\n", " ", "one space, not empty"},
      {"  a  b \f", " a b \f", "the form feed stays"},
      {"a", "a"},
      {"a b", "a b"},
      {"a\tb", "a b", "a single tab"},
      {"a\nb\rc", "a b c"},
      {"a\r\nb", "a b"},
      {"a \t\r\n b", "a b", "a mixed run is one run"},
      {"\na\n", " a ", "a run at either end leaves a space"},
      {"a  ", "a "},
      {"a\fb\vc", "a\fb\vc"},
      {"a \f b", "a \f b", "a form feed parts two runs"},
      {" \v ", " \v "},
      {"a \0\t b"sv, "a \0 b"sv, "NUL is no white space"},
      {"a\xA0\x85z", "a\xA0\x85z"},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(ConvertWhiteSpacesToSingleSpace(std::string(row.text)), row.result);
  }
}

TEST(TrimAndReduce, Table) {
  constexpr TextCase kCases[] = {
      {"", ""},
      {"  a \n\n b ", "a b"},
      {"\f a", "a"},
      {"a\fb", "a\fb", "a form feed inside stays"},
      {"a \f", "a"},
      {"\va\v", "a"},
      {" \t\r\n", ""},
      {" \f \v ", ""},
      {"a", "a"},
      {"a b c", "a b c"},
      {"a  b", "a b"},
      {"a\tb", "a b"},
      {"a\nb", "a b"},
      {"\ta b\n", "a b", "only the ends change"},
      {"a\f \v b", "a\f \v b"},
      {"\f  a  \f  b \f", "a \f b", "form feeds at the ends go, with the spaces around them"},
      {"a\0 \t b"sv, "a\0 b"sv},
      {" \xC3\xA9 ", "\xC3\xA9"},
      {"\xA0 a", "\xA0 a"},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    std::string text(row.text);
    EXPECT_EQ(TrimAndReduce(text), row.result);
    EXPECT_EQ(text, row.text) << "the argument is only read";
  }
}

TEST(TrimAndReduce, IsTrimAfterTheConversion) {
  for (const std::string& original : everyText("ab \t\f\n", 6)) {
    std::string text = original;
    ASSERT_EQ(TrimAndReduce(text), trim(ConvertWhiteSpacesToSingleSpace(original)))
        << testing::PrintToString(original);
  }
}

// The result is a slice of the text itself, unless something inside needs collapsing.
TEST(TrimAndReduceView, CopiesOnlyIfNeeded) {
  for (const std::string& original : everyText("ab \t\f\n", 6)) {
    const std::string trimmed = trim(original);
    const bool changes = ConvertWhiteSpacesToSingleSpace(trimmed) != trimmed;
    std::string scratch = "before";
    const std::string_view reduced = text::trimAndReduceView(original, scratch);
    ASSERT_EQ(reduced.data() == scratch.data(), changes) << testing::PrintToString(original);
    ASSERT_EQ(scratch == "before", !changes) << testing::PrintToString(original);
  }
}

TEST(FirstWord, Table) {
  constexpr TextCase kCases[] = {
      {"", ""},
      {"foo(bar)", "foo", "stops at the first byte that is not a word byte"},
      {"#include <x>", "#include", "# is a word byte"},
      {"a_b1#c.d", "a_b1#c"},
      {"$x = 1", "", "$ is not"},
      {" if (a)", "", "nothing is trimmed first"},
      {"\tif", ""},
      {"(a)", ""},
      {"abc", "abc", "a text without an end of the word is the word"},
      {"1.5", "1"},
      {"a$b", "a"},
      {"a\nb", "a"},
      {"a\0b"sv, "a"},
      {"\xC3\xA9", ""},
      {"caf\xC3\xA9", "caf", "a byte of 0x80 and above ends the word"},
      {"a-b", "a"},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    std::string text(row.text);
    EXPECT_EQ(FirstWord(text), row.result);
    EXPECT_EQ(FirstWord(std::as_const(text)), row.result);
    EXPECT_EQ(text, row.text) << "the argument is only read";
  }
}

TEST(FirstWord, ClassOfEachByte) {
  constexpr std::string_view kWordBytes =
      "_#0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  for (int code = 0; code < 256; ++code) {
    SCOPED_TRACE(code);
    const std::string text(1, static_cast<char>(code));
    const bool inWord = kWordBytes.find(text) != std::string_view::npos;
    EXPECT_EQ(FirstWord(text), inWord ? text : "");
  }
}

TEST(LastWord, AllButTheLastWord) {
  constexpr TextCase kCases[] = {
      {"", ""},
      {"var a = b", "var a =", "required: the last word is what goes"},
      {"abc", "abc", "without a space the whole text"},
      {"abc ", "abc"},
      {" abc", ""},
      {" ", ""},
      {"a b ", "a b"},
      {"a  b", "a ", "only the last of two spaces goes"},
      {"a\tb", "a\tb", "no other white space counts"},
      {"a b\nc", "a"},
      {"a\0 b"sv, "a\0"sv},
      {"\xC3\xA9 \xA0", "\xC3\xA9"},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    std::string text(row.text);
    EXPECT_EQ(LastWord(text), row.result);
    EXPECT_EQ(text, row.text) << "the argument is only read";
  }
}

TEST(LastWordNoDots, ChangesItsArgumentToo) {
  constexpr TextCase kCases[] = {
      {"", ""},
      {"foo:bar", "fo", "required: the byte before the colon is lost as well"},
      {"a bc:d", "b"},
      {"x y : z", "y"},
      {":x", ":x", "a colon in first place cuts nothing"},
      {": x", "x"},
      {"a b", "b"},
      {"a b ", "a b ", "a space in last place cuts nothing"},
      {"a b  ", "a b  "},
      {"a:", ""},
      {"ab:", "a"},
      {"a:b:c", "a:", "the last colon decides"},
      {"::", ""},
      {"x:y z", "", "what follows the colon is gone before the space is looked for"},
      {"ab c: d e", "ab ", "the cut may leave a space in last place"},
      {"a.b c.d", "c.d", "required: dots mean nothing here"},
      {" a", "a"},
      {" ", " "},
      {"a\tb", "a\tb"},
      {"a \0:b"sv, "a ", "NUL is a byte like any other"},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    std::string text(row.text);
    EXPECT_EQ(LastWordNoDots(text), row.result);
    EXPECT_EQ(text, row.result) << "the argument is changed too";
  }
}

struct SearchCase {
  std::string_view haystack;
  std::string_view needle;
  std::int64_t offset;
  std::string_view why = "";
};
constexpr SearchCase kSearchCases[] = {
    {"subclass", "class", 3, "required: inside a longer word too"},
    {"subclassing", "class", 3, "required: no word boundary on either side"},
    {"const x", "const ", 0},
    {" const x", "const ", 1},
    {"abc", "x", -1},
    {"abc", "", 0, "an empty needle is at the start"},
    {"", "", 0, "of an empty text too"},
    {"", "a", -1},
    {"abc", "abc", 0},
    {"abc", "abcd", -1},
    {"abc", "c", 2},
    {"abc", "ac", -1},
    {"abc", "B", -1, "letter case counts"},
    {"xabab", "ab", 1, "the first of two"},
    {"aab", "ab", 1},
    {"a\0b"sv, "\0b"sv, 1, "NUL ends neither text"},
    {"a\0b"sv, "\0c"sv, -1},
    {"\xC3\xA9", "\xA9", 1, "bytes are not decoded"},
};

TEST(Contains, AnywhereInTheText) {
  for (const SearchCase& row : kSearchCases) {
    SCOPED_TRACE(testing::PrintToString(row.needle) + " in " +
                 testing::PrintToString(row.haystack) + " " + std::string(row.why));
    std::string haystack(row.haystack);
    EXPECT_EQ(Contains(haystack, std::string(row.needle)), row.offset >= 0);
    EXPECT_EQ(haystack, row.haystack) << "the argument is only read";
  }
}

TEST(ContainsWord, IgnoresWordBoundaries) {
  for (const SearchCase& row : kSearchCases) {
    SCOPED_TRACE(testing::PrintToString(row.needle) + " in " +
                 testing::PrintToString(row.haystack) + " " + std::string(row.why));
    std::string haystack(row.haystack);
    EXPECT_EQ(ContainsWord(haystack, std::string(row.needle)), row.offset >= 0);
    EXPECT_EQ(haystack, row.haystack) << "the argument is only read";
  }
}

TEST(IndexOf, OffsetOfTheFirst) {
  static_assert(std::is_same_v<decltype(IndexOf("", "")), std::int64_t>);
  for (const SearchCase& row : kSearchCases) {
    SCOPED_TRACE(testing::PrintToString(row.needle) + " in " +
                 testing::PrintToString(row.haystack) + " " + std::string(row.why));
    EXPECT_EQ(IndexOf(std::string(row.haystack), std::string(row.needle)), row.offset);
  }
}

struct OutsideCase {
  std::string_view haystack;
  std::string_view needle;
  bool matches;
  std::string_view why = "";
};
constexpr OutsideCase kOutsideCases[] = {
    {"a ? b : c", "?", true},
    {"?", "?", true},
    {"a", "?", false},
    {"", "?", false},
    {"", "", false, "an empty needle is contained but equals no byte"},
    {"a", "", false},
    {R"(a = "?" ? 1 : 2)", "?", true, "the second mark is outside the quotes"},
    {R"("?")", "?", false},
    {R"(x="?)", "?", false, "an open quote runs to the end"},
    {R"("a" ? "b")", "?", true},
    {R"("\"?")", "?", true, "required: a backslash protects no quote"},
    {R"("\"" ? 1)", "?", false, "required: so the third quote opens again"},
    {"'?'", "?", true, "required: a single quote opens nothing"},
    {"`?`", "?", true, "required: nor does a backtick"},
    {R"('"' ? 1)", "?", false, "required: a double quote opens inside single quotes"},
    {"f(a?b:c)", "?", false},
    {"f(a?b:c) ? d : e", "?", true},
    {"(?)?", "?", true},
    {"{a?b}", "?", false},
    {"{a}?b", "?", true},
    {"<a?b>", "?", false},
    {"<a>?b", "?", true},
    {"[a?b]", "?", true, "square brackets are not counted"},
    {"((a)?b)", "?", false, "depth one is not the top"},
    {R"("(" ? 1)", "?", true, "a bracket within quotes is not counted"},
    {"x > 1 ? 2 : 3", "?", false, "required: a lone > leaves the depth at -1"},
    {"x < 1 ? 2 : 3", "?", false, "required: a lone < leaves it at 1"},
    {"a => b ? c : d", "?", false, "required: an arrow is a lone >"},
    {"a > b, c < d ? e", "?", true, "required: a later < brings the depth back"},
    {"}{?", "?", true, "depths go below zero and come back"},
    {")(?", "?", true},
    {")?(", "?", false},
    {"}?", "?", false},
    {"(}?", "?", false, "the three depths are separate"},
    {"{)?", "?", false},
    {"<)?", "?", false},
    {"a == b", "==", false, "required: only one-byte needles match"},
    {"a === b", "===", false, "required: only one-byte needles match"},
    {"a != b", "!=", false, "required: only one-byte needles match"},
    {"a !== b", "!==", false, "required: only one-byte needles match"},
    {"a ?? b", "??", false, "required: only one-byte needles match"},
    {"==", "==", false, "required: not even the whole text"},
    {"a == b", "=", true},
    {"a{b", "{", false, "required: a byte that is counted never matches"},
    {"a}b", "}", false, "required: a byte that is counted never matches"},
    {"a(b", "(", false, "required: a byte that is counted never matches"},
    {"a)b", ")", false, "required: a byte that is counted never matches"},
    {"a<b", "<", false, "required: a byte that is counted never matches"},
    {"a>b", ">", false, "required: a byte that is counted never matches"},
    {"a\"b", "\"", false, "required: nor does the quote"},
    {"a[b", "[", true},
    {"a\0b"sv, "\0"sv, true, "NUL is a byte like any other"},
    {"a\xE9", "\xE9", true},
};

TEST(OutsideStringMatch, Table) {
  for (const OutsideCase& row : kOutsideCases) {
    SCOPED_TRACE(testing::PrintToString(row.needle) + " in " +
                 testing::PrintToString(row.haystack) + " " + std::string(row.why));
    EXPECT_EQ(OutsideStringMatch(std::string(row.haystack), std::string(row.needle)), row.matches);
  }
}

}  // namespace
