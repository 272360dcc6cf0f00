// Compares the reading of tags and page text, which works on slices, with the reference
// implementation.
#include "html/attributes.h"

#include <cstddef>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "reference/plain_attributes.h"
#include "support/many_texts.h"

namespace {

using std::string_view_literals::operator""sv;
using support::forEachText;
using support::forRandomTexts;

void expectPlainTag(const std::string& tag) {
  ASSERT_EQ(ExtractHrefValue(tag), reference::hrefValue(tag)) << testing::PrintToString(tag);
  ASSERT_EQ(ExtractSrcValue(tag), reference::srcValue(tag)) << testing::PrintToString(tag);
  ASSERT_EQ(GetElementIdentifier(tag), reference::elementIdentifier(tag))
      << testing::PrintToString(tag);
}

void expectPlainPreview(const std::string& text) {
  for (const std::size_t maxLength : {std::size_t{0}, std::size_t{3}, std::size_t{25}})
    ASSERT_EQ(ExtractTextPreview(text, maxLength), reference::textPreview(text, maxLength))
        << testing::PrintToString(text) << " to " << maxLength;
}

constexpr std::string_view kHrefPieces[] = {"href", "=", "\"", "'", " ", "x", ">"};
constexpr std::string_view kIdPieces[] = {"id=", "class=", "\"", "'", " ", "a", "src="};
// clang-format off
constexpr std::string_view kTagPieces[] = {
    "href=", "href ", "src=", "id=", "class=", "action=", "script", "link", "form", "div", "\"",
    "'", "=", " ", "\n", "\t", "\f", "\v", "\r", ">", "x", "a b", "data-", "HREF=", "srcset=",
    "grid=\"y\"", "/", "\0"sv, "\xE9", "\"\"", "''", "src =", "script ", "link ", "form "};
// clang-format on

TEST(AttributesPlainReading, OfTags) {
  forEachText(kHrefPieces, 7, "", expectPlainTag);
  forEachText(kHrefPieces, 5, "a src=", expectPlainTag);
  forEachText(kIdPieces, 6, "script ", expectPlainTag);
  forEachText(kIdPieces, 6, "", expectPlainTag);
  forRandomTexts(kTagPieces, 20, 500'000, expectPlainTag);
}

constexpr std::string_view kTextPieces[] = {" ",  "\n", "\t",   "\"",    "a", "\f",
                                            "\r", "\\", "\xE9", "word ", "'", "\0"sv};

TEST(AttributesPlainReading, OfPreviews) {
  forEachText(" \n\"a\f\r", 7, expectPlainPreview);
  forRandomTexts(kTextPieces, 50, 200'000, expectPlainPreview);
}

}  // namespace
