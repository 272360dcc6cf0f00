#include "text/needle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "support/many_texts.h"

namespace {

using text::contains;
using text::Needle;

struct Row {
  std::string_view haystack;
  bool found;
  std::string_view why;
};

TEST(Needle, IsFoundAtAnyPosition) {
  constexpr Needle kNeedle = "export ";
  constexpr Row kRows[] = {
      {"export ", true, "the whole text"},
      {"export x", true, "at the start"},
      {"an export ", true, "at the end"},
      {"xxexport x", true, "after bytes that look like its middle"},
      {"eexport ", true, "a false start"},
      {"", false, "an empty text"},
      {"export", false, "a byte short"},
      {"exporx ", false, "one byte off"},
      {"xport e", false, "its middle too near the start"},
      {"exp ort ", false, "in two pieces"},
      {"Export ", false, "case counts"},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(contains(row.haystack, kNeedle), row.found) << row.haystack << ": " << row.why;
  }
}

TEST(Needle, OfOneByte) {
  EXPECT_TRUE(contains("a=b", "="));
  EXPECT_FALSE(contains("ab", "="));
  EXPECT_TRUE(contains(std::string_view("a\0", 2), std::string_view("\0", 1)));
}

// Each text fills its own allocation, so that a sanitizer detects a read past its end.
TEST(Needle, IsSearchedWithinTheTextOnly) {
  constexpr Needle kNeedles[] = {"=>", "export ", "aab"};
  for (const Needle& needle : kNeedles) {
    for (std::size_t size = needle.text().size(); size <= 80; ++size) {
      const auto bytes = std::make_unique<char[]>(size);
      const std::string_view haystack(bytes.get(), size);
      std::fill_n(bytes.get(), size, 'x');
      EXPECT_EQ(needle.find(haystack), std::string_view::npos) << size;
      const std::size_t last = size - needle.text().size();
      needle.text().copy(bytes.get() + last, needle.text().size());
      EXPECT_EQ(needle.find(haystack), last) << size;
    }
  }
}

TEST(Needle, AgreesWithAPlainSearchOfAllShortTexts) {
  constexpr Needle kNeedles[] = {"e", "=>", "ee=", "e=e", "aae", "=e>="};
  support::forEachText("ea=>", 8, [&](const std::string& haystack) {
    for (const Needle& needle : kNeedles)
      ASSERT_EQ(contains(haystack, needle), haystack.find(needle.text()) != std::string::npos)
          << haystack << " holds " << needle.text();
  });
}

// Every needle of the table in random texts of its own bytes, where near misses are frequent.
TEST(Needle, AgreesWithAPlainSearch) {
  constexpr Needle kNeedles[] = {"class", "exports.",  "=>",      "require(", "aaa",
                                 "aab",   "import ",   "TTTTT",   ": \"",     "module.exports",
                                 "e",     "</script>", "export {"};
  std::mt19937 random(20);
  for (const Needle& needle : kNeedles) {
    const std::string_view bytes = needle.text();
    for (int round = 0; round < 20'000; ++round) {
      std::string haystack;
      while (haystack.size() < 30) {
        // Mostly pieces of the needle, so that whole ones occur.
        const std::size_t from = random() % bytes.size();
        haystack += bytes.substr(from, 1 + random() % bytes.size());
      }
      ASSERT_EQ(contains(haystack, needle), haystack.find(bytes) != std::string::npos)
          << haystack << " holds " << bytes;
    }
  }
}

}  // namespace
