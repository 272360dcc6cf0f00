// Compares the chunk, which tracks the answers to its questions, with the plain rules, which read
// the whole text each time: the chunk grows byte by byte or in pieces, and every question is asked
// at each step.
#include "builder/chunk_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "reference/plain_scanner.h"
#include "reference/plain_strings.h"
#include "support/many_texts.h"

namespace {

using builder::ChunkText;
using std::string_view_literals::operator""sv;

struct Answers {
  bool isBlank = false;
  bool cleansToNothing = false;
  bool continues = false;

  bool operator==(const Answers&) const = default;
};

void PrintTo(const Answers& answers, std::ostream* out) {
  *out << "blank " << answers.isBlank << ", cleans to nothing " << answers.cleansToNothing
       << ", continues " << answers.continues;
}

Answers plainAnswers(const std::string& text) {
  return {reference::trimAndReduce(text).empty(), reference::cleanedChunk(text).empty(),
          reference::continues(text)};
}

Answers answersOf(ChunkText& chunk) {
  return {chunk.isBlank(), chunk.cleansToNothing(), chunk.continues()};
}

struct Row {
  std::string_view text;
  Answers answers;
  const char* why;
};

constexpr Row kRows[] = {
    {"", {true, true, false}, ""},
    {" \n\t\r\f\v", {true, true, false}, ""},
    {",", {false, true, false}, ""},
    {" , \f ", {false, true, false}, ""},
    {",,", {false, false, false}, "one comma only"},
    {")", {false, true, false}, ""},
    {"))) )))", {false, true, false}, "one run at each end"},
    {") ) )", {false, false, false}, "the middle one stays"},
    {", )", {false, true, false}, ""},
    {", ) )", {false, true, false}, ""},
    {",\f)", {false, true, false}, ""},
    {",\f) )", {false, false, false}, "nothing goes from the front of what a form feed opens"},
    {"),", {false, false, false}, "no leading comma"},
    {"x", {false, false, false}, ""},
    {"\0"sv, {false, false, false}, ""},
    {"\\", {false, false, true}, ""},
    {"x\\", {false, false, true}, ""},
    {"x\\ ", {false, false, true}, "required: the text before the last blank counts"},
    {"x\\ y", {false, false, true}, ""},
    {"x\\ y ", {false, false, false}, ""},
    {"x \\", {false, false, false}, ""},
    {" \\", {false, false, false}, "nothing comes before the blank"},
    {"\\\\", {false, false, true}, ""},
    {"x\\y", {false, false, false}, ""},
    {"x\t\\", {false, false, true}, "a tab is not a blank"},
};

TEST(ChunkText, Rows) {
  for (const Row& row : kRows) {
    std::string text(row.text);
    ChunkText chunk(text);
    EXPECT_EQ(answersOf(chunk), row.answers) << testing::PrintToString(text) << "  // " << row.why;
    EXPECT_EQ(plainAnswers(text), row.answers) << testing::PrintToString(text) << ", plainly";
  }
}

TEST(ChunkText, WorksOnTheCallersString) {
  std::string text = "a";
  ChunkText chunk(text);
  chunk.append("b\\");
  EXPECT_EQ(text, "ab\\");
  EXPECT_EQ(&chunk.text(), &text);
  EXPECT_TRUE(chunk.continues());
  chunk.clear();
  EXPECT_EQ(text, "");
  EXPECT_EQ(answersOf(chunk), (Answers{true, true, false}));
  chunk.append(" c");
  EXPECT_EQ(text, " c");
  EXPECT_EQ(answersOf(chunk), (Answers{false, false, false}));
}

TEST(ChunkText, ForgetsWhatItClears) {
  for (const Row& before : kRows) {
    for (const Row& row : kRows) {
      std::string text;
      ChunkText chunk(text);
      chunk.append(before.text);
      answersOf(chunk);
      chunk.clear();
      chunk.append(row.text);
      EXPECT_EQ(answersOf(chunk), row.answers)
          << testing::PrintToString(std::string(row.text)) << " after "
          << testing::PrintToString(std::string(before.text));
    }
  }
}

// Numbers all texts of that many bytes of the alphabet; the last byte is the least significant.
constexpr std::string_view kAlphabet = " ,)\fx\\";
constexpr std::size_t kLength = 7;

class PlainTable {
 public:
  PlainTable() {
    std::size_t count = 1;
    for (std::size_t length = 0; length <= kLength; ++length, count *= kAlphabet.size()) {
      for (std::size_t number = 0; number < count; ++number)
        answers_[length].push_back(plainAnswers(text(length, number)));
    }
  }

  static std::string text(std::size_t length, std::size_t number) {
    std::string text(length, ' ');
    for (std::size_t i = length; i-- > 0; number /= kAlphabet.size())
      text[i] = kAlphabet[number % kAlphabet.size()];
    return text;
  }

  std::size_t longest() const { return answers_[kLength].size(); }

  // The answers for a prefix of the longest text of that number.
  const Answers& ofPrefix(std::size_t length, std::size_t number) const {
    for (std::size_t i = kLength; i > length; --i) number /= kAlphabet.size();
    return answers_[length][number];
  }

 private:
  std::array<std::vector<Answers>, kLength + 1> answers_;
};

// Grows each of the longest texts in pieces; nextPiece returns their sizes.
template <typename NextPiece>
void expectPlainAnswers(const PlainTable& table, NextPiece nextPiece) {
  for (std::size_t number = 0; number < table.longest(); ++number) {
    const std::string whole = PlainTable::text(kLength, number);
    std::string text;
    ChunkText chunk(text);
    for (std::size_t length = 0; length < kLength;) {
      const std::size_t piece = std::min(nextPiece(), kLength - length);
      chunk.append(std::string_view(whole).substr(length, piece));
      length += piece;
      ASSERT_EQ(answersOf(chunk), table.ofPrefix(length, number)) << testing::PrintToString(text);
    }
    ASSERT_EQ(text, whole);
  }
}

TEST(ChunkText, AnswersLikeThePlainRulesForAllShortTexts) {
  const PlainTable table;
  expectPlainAnswers(table, [] { return std::size_t{1}; });
  std::mt19937 random(20240307);
  expectPlainAnswers(table, [&random] { return std::size_t{1} + random() % 5; });
}

TEST(ChunkText, AnswersLikeThePlainRulesForLongerTexts) {
  constexpr std::string_view kPieces[] = {" ",  "  ", ",",  ")", "))",   "\f",   "\v",  "\t",
                                          "\n", "\r", "\\", "x", "\0"sv, "\x80", "\\ ", ") )"};
  std::mt19937 random(20240308);
  int cleaned = 0;
  for (int left = support::textCount(200'000); left > 0; --left) {
    std::string text;
    ChunkText chunk(text);
    // Few kinds of pieces at a time, so that one dominant piece is not in every text.
    const std::size_t first = random() % std::size(kPieces);
    const std::size_t kinds = 1 + random() % std::size(kPieces);
    for (std::size_t pieces = 1 + random() % 20; pieces > 0; --pieces) {
      chunk.append(kPieces[(first + random() % kinds) % std::size(kPieces)]);
      if (random() % 3 == 0) continue;  // not asked after every piece
      const Answers plain = plainAnswers(text);
      ASSERT_EQ(answersOf(chunk), plain) << testing::PrintToString(text);
      cleaned += plain.cleansToNothing && !plain.isBlank ? 1 : 0;
    }
  }
  EXPECT_GT(cleaned, support::textCount(20'000)) << "the texts must show both answers";
}

}  // namespace
