// Compares the string primitives and file names, which work on slices, with the reference
// implementation.
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "reference/plain_strings.h"
#include "support/many_texts.h"
#include "text/file_names.h"
#include "text/string_primitives.h"

namespace {

using std::string_view_literals::operator""sv;
using support::forEachText;
using support::forRandomTexts;

void expectPlainTrims(const std::string& text) {
  std::string copy = text;
  ASSERT_EQ(ltrim(text), reference::ltrim(text)) << testing::PrintToString(text);
  ASSERT_EQ(rtrim(text), reference::rtrim(text)) << testing::PrintToString(text);
  ASSERT_EQ(trim(text), reference::trim(text)) << testing::PrintToString(text);
  ASSERT_EQ(ConvertWhiteSpacesToSingleSpace(text), reference::whiteSpaceToSingleSpace(text))
      << testing::PrintToString(text);
  ASSERT_EQ(TrimAndReduce(copy), reference::trimAndReduce(text)) << testing::PrintToString(text);
}

void expectPlainWords(const std::string& text) {
  std::string copy = text;
  ASSERT_EQ(FirstWord(copy), reference::firstWord(text)) << testing::PrintToString(text);
  ASSERT_EQ(LastWord(copy), reference::lastWord(text)) << testing::PrintToString(text);
  std::string plainCopy = text;
  ASSERT_EQ(LastWordNoDots(copy), reference::lastWordNoDots(plainCopy))
      << testing::PrintToString(text);
  ASSERT_EQ(copy, plainCopy) << testing::PrintToString(text);
}

void expectPlainSearches(const std::string& text) {
  for (const char* needle : {"", "a", "?", "a?", "==", "{", "\""}) {
    std::string copy = text;
    ASSERT_EQ(Contains(copy, needle), reference::contains(text, needle))
        << testing::PrintToString(text) << " with " << needle;
    ASSERT_EQ(IndexOf(text, needle), reference::indexOf(text, needle))
        << testing::PrintToString(text) << " with " << needle;
    ASSERT_EQ(OutsideStringMatch(text, needle), reference::outsideStringMatch(text, needle))
        << testing::PrintToString(text) << " with " << needle;
  }
}

void expectPlainReplacing(const std::string& text) {
  for (const char* from : {"", "a", "b", "aa", "ab", "aba"}) {
    for (const char* to : {"", "a", "ab", "baab"}) {
      std::string real = text;
      replaceAll(real, from, to);
      std::string plain = text;
      reference::replaceAll(plain, from, to);
      ASSERT_EQ(real, plain) << testing::PrintToString(text) << ", " << from << " by " << to;
    }
  }
}

constexpr std::string_view kTextPieces[] = {
    " ", "\n",   "\r",    "\t", "\f",   "\v", "  ", "a",  "b",    "{",    "}",  "(",
    ")", "<",    ">",     "\"", "'",    "?",  "==", "!=", "\0"sv, "\xE9", "_",  "#",
    ":", "word", "a b\n", "9",  "\r\n", "$",  "ab", "::", " :",   "aba",  "=>", "[\\z"};

TEST(StringPrimitivesPlainReading, OfAllShortTexts) {
  forEachText(" \t\n\fab", 7, expectPlainTrims);
  forEachText(" \v\rx\0"sv, 7, expectPlainTrims);
  forEachText(": a_$Z9", 6, expectPlainWords);
  forEachText(":a #", 7, expectPlainWords);
  forEachText("?{}()<\"a", 6, expectPlainSearches);
  forEachText("?<>\"a=", 7, expectPlainSearches);
  forEachText("ab", 10, expectPlainReplacing);
  forEachText("abc", 7, expectPlainReplacing);
}

TEST(StringPrimitivesPlainReading, OfShortTextsInLongRuns) {
  for (const char filler : {'a', ' ', '\n'}) {
    support::forEachTextInARun(" \t\f\na", 4, filler, expectPlainTrims);
    support::forEachTextInARun(": a$", 3, filler, expectPlainWords);
  }
  support::forEachTextInARun("?<>\"a", 3, 'a', expectPlainSearches);
}

TEST(StringPrimitivesPlainReading, OfRandomTexts) {
  forRandomTexts(kTextPieces, 40, 500'000, [](const std::string& text) {
    expectPlainTrims(text);
    expectPlainWords(text);
  });
  forRandomTexts(kTextPieces, 30, 100'000, [](const std::string& text) {
    expectPlainSearches(text);
    expectPlainReplacing(text);
  });
}

void expectPlainFileNames(const std::string& path) {
  ASSERT_EQ(GetFileExtension(path), reference::fileExtension(path)) << path;
  ASSERT_EQ(IsHTMLFile(path), reference::isHtmlFile(path)) << path;
  ASSERT_EQ(IsJavaScriptOnlyFile(path), reference::isJavaScriptOnlyFile(path)) << path;
  ASSERT_EQ(FileName(path), reference::fileName(path)) << path;
  ASSERT_EQ(FileNameWithExtension(path), reference::fileNameWithExtension(path)) << path;
}

constexpr std::string_view kPathPieces[] = {".",   "/",  "\\",  "js",   "jsx", "ts",    "tsx",
                                            "mjs", "es", "cjs", "html", "htm", "xhtml", "php",
                                            "es6", "JS", " ",   "a",    ".js", ".html", "6"};

TEST(FileNamesPlainReading, OfManyPaths) {
  forEachText("./\\jse", 7, expectPlainFileNames);
  forEachText(kPathPieces, 4, "", expectPlainFileNames);
  forRandomTexts(kPathPieces, 12, 200'000, expectPlainFileNames);
}

}  // namespace
