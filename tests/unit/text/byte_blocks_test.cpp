#include "text/byte_blocks.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "text/needle.h"

namespace {

using text::Bytes;
using text::kBlockBytes;

constexpr std::size_t kMaxBytes = 3 * kBlockBytes + 3;

// The one special byte at each position of texts of each length, so that it is in a whole block, in
// the last one and in a text shorter than a block.
TEST(ByteBlocks, FindAByteAtAnyPosition) {
  const auto isQuote = [](Bytes bytes) { return bytes.are('"') | bytes.are('\xFF'); };
  for (std::size_t size = 0; size <= kMaxBytes; ++size) {
    std::string text(size, 'a');
    EXPECT_FALSE(text::holdsByte(text, isQuote)) << size;
    for (std::size_t place = 0; place < size; ++place) {
      text[place] = place % 2 == 0 ? '"' : '\xFF';
      EXPECT_TRUE(text::holdsByte(text, isQuote)) << place << " of " << size;
      text[place] = 'a';
    }
  }
}

// What a text shorter than a block is filled up with must not send plain texts the slow way.
TEST(ByteBlocks, HoldNoControlByteBehindAShortText) {
  const auto isControl = [](Bytes bytes) { return bytes.areBelow(0x20); };
  for (std::size_t size = 0; size <= kMaxBytes; ++size) {
    EXPECT_FALSE(text::holdsByte(std::string(size, ' '), isControl)) << size;
    EXPECT_TRUE(text::holdsByte(std::string(size, ' ') + '\x1F', isControl)) << size;
  }
}

TEST(ByteBlocks, NameTheFirstByteThatIsSet) {
  const auto firstQuote = [](const std::string& text) {
    return text::firstSet(Bytes(text.data()).are('"'));
  };
  for (std::size_t place = 0; place < kBlockBytes; ++place) {
    std::string text(kBlockBytes, 'a');
    text[place] = '"';
    EXPECT_EQ(firstQuote(text), place);
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(place), text.end(), '"');
    EXPECT_EQ(firstQuote(text), place) << "and all behind it";
  }
  EXPECT_EQ(firstQuote(std::string(kBlockBytes, 'a')), kBlockBytes);
}

// From each offset, with a byte that only the test passes in front of the member.
TEST(ByteBlocks, FindAMemberAsTheSetDoes) {
  constexpr text::ByteSet kSet{"\"'"};
  const auto areLike = [](Bytes bytes) {
    return bytes.are('"') | bytes.are('\'') | bytes.are('~');
  };
  for (std::size_t size = 0; size <= kMaxBytes; ++size) {
    for (std::size_t place = 0; place <= size; ++place) {
      std::string text(size, 'a');
      if (place < size) text[place] = place % 2 == 0 ? '"' : '\'';
      if (place > 0) text[place / 2] = place / 2 == place ? text[place] : '~';
      for (std::size_t from = 0; from <= size; ++from) {
        EXPECT_EQ(text::findMemberByBlocks(text, kSet, areLike, from),
                  text::findMember(text, kSet, from))
            << text << " from " << from;
        EXPECT_EQ(text::findMember(text, kSet, from), from <= place ? place : size);
      }
    }
  }
}

TEST(ByteBlocks, CompareBytesAsSignedValues) {
  for (int value = 0; value < 256; ++value) {
    const std::string text(kBlockBytes, static_cast<char>(value));
    EXPECT_EQ(text::isAny(Bytes(text.data()).areBelow(0x20)), value < 0x20 || value >= 0x80)
        << value;
    for (int other = 0; other < 256; ++other) {
      EXPECT_EQ(text::isAny(Bytes(text.data()).are(static_cast<char>(other))), value == other)
          << value << " and " << other;
    }
  }
}

// Needles whose anchor is the first, a middle and the last byte but one, at each position,
// unchanged and with each byte changed.
TEST(Needle, OfAnyAnchorIsFoundAtAnyPosition) {
  constexpr text::Needle kNeedles[] = {"class", "function", "=>", "TTTTT", "{", "module.exports"};
  for (const text::Needle& needle : kNeedles) {
    const std::string_view sought = needle.text();
    for (std::size_t size = sought.size(); size <= kMaxBytes; ++size) {
      for (std::size_t place = 0; place + sought.size() <= size; ++place) {
        std::string text(size, ' ');
        text.replace(place, sought.size(), sought);
        EXPECT_TRUE(text::contains(text, needle)) << text;
        EXPECT_EQ(needle.find(text), place) << text;
        for (std::size_t i = 0; i < sought.size(); ++i) {
          std::string changed = text;
          changed[place + i] = '~';
          EXPECT_FALSE(text::contains(changed, needle)) << changed;
          EXPECT_EQ(needle.find(changed), std::string::npos) << changed;
        }
      }
    }
    for (std::size_t size = 0; size < sought.size(); ++size)
      EXPECT_FALSE(text::contains(sought.substr(0, size), needle)) << sought;
  }
}

// Many near misses before the hit, so that several candidates in a block are compared.
TEST(Needle, IsFoundAfterNearMisses) {
  constexpr text::Needle kNeedle = "aab";
  for (std::size_t size = 0; size < kMaxBytes; ++size) {
    std::string text(size, 'a');
    EXPECT_FALSE(text::contains(text, kNeedle)) << text;
    text += 'b';
    EXPECT_EQ(text::contains(text, kNeedle), size >= 2) << text;
    EXPECT_EQ(kNeedle.find(text + "aab"), size >= 2 ? size - 2 : size + 1) << text;
  }
}

}  // namespace
