#include "merge/line_reader.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "system/failure.h"

namespace {

class LineReaderTest : public testing::Test {
 protected:
  ~LineReaderTest() override { std::filesystem::remove(path_); }

  std::string fileWith(std::string_view bytes) const {
    std::ofstream(path_, std::ios::binary) << bytes;
    return path_;
  }

  static std::vector<std::string> linesOf(host::LineReader& reader) {
    std::vector<std::string> lines;
    for (std::string_view line; reader.next(line);) lines.emplace_back(line);
    return lines;
  }

 private:
  std::string path_ = testing::TempDir() + "line_reader_test_" +
                      testing::UnitTest::GetInstance()->current_test_info()->name();
};

using Lines = std::vector<std::string>;

TEST_F(LineReaderTest, GivesWholeLinesWithTheirEnds) {
  host::LineReader reader(fileWith("a\n\nbc\n"));
  std::string_view line;
  ASSERT_TRUE(reader.next(line));
  EXPECT_EQ(line, "a");
  EXPECT_EQ(reader.offset(), 2U);
  EXPECT_FALSE(reader.isAtEnd());
  EXPECT_EQ(linesOf(reader), (Lines{"", "bc"}));
  EXPECT_EQ(reader.offset(), 6U);
  EXPECT_TRUE(reader.isAtEnd());
}

TEST_F(LineReaderTest, LeavesALineThatIsCut) {
  host::LineReader reader(fileWith("a\nbc"));
  EXPECT_EQ(linesOf(reader), Lines{"a"});
  EXPECT_EQ(reader.offset(), 2U);
  EXPECT_FALSE(reader.isAtEnd());
}

TEST_F(LineReaderTest, HasRoomForLongLines) {
  const std::string longLine(1'000'000, 'x');
  host::LineReader reader(fileWith("a\n" + longLine + "\n" + longLine + "y\nb\n"));
  EXPECT_EQ(linesOf(reader), (Lines{"a", longLine, longLine + "y", "b"}));
}

TEST_F(LineReaderTest, GoesToAPlaceAndNoFurtherThanAsked) {
  host::LineReader reader(fileWith("a\nbc\nd\ne\n"));
  reader.seek(2, 5);
  EXPECT_EQ(linesOf(reader), (Lines{"bc", "d"}));
  EXPECT_EQ(reader.offset(), 7U);
  reader.seek(0, 4);
  EXPECT_EQ(linesOf(reader), Lines{"a"}) << "the line behind it is cut";
  EXPECT_EQ(reader.offset(), 2U);
  reader.seek(7, 100);
  EXPECT_EQ(linesOf(reader), Lines{"e"}) << "less is there than asked for";
  EXPECT_EQ(reader.offset(), 9U);
}

TEST_F(LineReaderTest, RefusesWhatIsNoFile) {
  EXPECT_THROW(host::LineReader{"/dev/null"}, host::Failure);
  EXPECT_THROW(host::LineReader{testing::TempDir()}, host::Failure);
  EXPECT_THROW(host::LineReader{testing::TempDir() + "/no/such/file"}, host::Failure);
}

}  // namespace
