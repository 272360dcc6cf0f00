// Compares escaping, which copies whole runs of ordinary bytes, with the reference implementation.
#include "records/record_format.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "reference/plain_records.h"
#include "support/many_texts.h"

namespace {

using std::string_view_literals::operator""sv;

void expectPlainEscapes(const std::string& text) {
  ASSERT_EQ(EscapeString(text), reference::escapeString(text)) << testing::PrintToString(text);
}

constexpr std::string_view kPieces[] = {"\"",
                                        "'",
                                        "\\",
                                        "\n",
                                        "\r",
                                        "\t",
                                        "a",
                                        "word",
                                        "\f",
                                        "/",
                                        "\b",
                                        "\0"sv,
                                        "\xC3\xA9",
                                        "\x7F",
                                        " ",
                                        "\\n",
                                        "var label = name;",
                                        "                "};

TEST(EscapeStringPlainReading, OfAllShortTexts) {
  support::forEachText("\"'\\\n\r\ta", 7, expectPlainEscapes);
  support::forEachText("\"\0\xE9\fn\\"sv, 7, expectPlainEscapes);
}

TEST(EscapeStringPlainReading, OfShortTextsInLongRuns) {
  support::forEachTextInARun("\"'\\\n\r\ta", 4, 'a', expectPlainEscapes);
  support::forEachTextInARun("\"'\\\n\r\ta", 4, '\xE9', expectPlainEscapes);
  support::forEachTextInARun("\"'\\\n\r\ta", 3, '"', expectPlainEscapes);
}

TEST(EscapeStringPlainReading, OfRandomTexts) {
  support::forRandomTexts(kPieces, 30, 1'000'000, expectPlainEscapes);
  support::forRandomTexts(kPieces, 300, 50'000, expectPlainEscapes);
}

}  // namespace
