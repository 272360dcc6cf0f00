#include "base/stream_writer.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

// A file in which every write is visible at once.
class Stream {
 public:
  Stream() : file_(std::tmpfile()) { std::setvbuf(file_, nullptr, _IONBF, 0); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() { std::fclose(file_); }

  std::FILE* file() const { return file_; }

  // Returns everything written so far; later writes are appended.
  std::string text() const {
    std::string text(static_cast<std::size_t>(std::ftell(file_)), '\0');
    std::rewind(file_);
    text.resize(std::fread(text.data(), 1, text.size(), file_));
    std::fseek(file_, 0, SEEK_END);
    return text;
  }

 private:
  std::FILE* const file_;
};

struct PiecesCase {
  std::vector<std::size_t> sizes;  // of the pieces, each of one repeated letter: a, b, c ...
  const char* why;
};

TEST(StreamWriter, KeepsEveryByteInOrder) {
  const PiecesCase rows[] = {{{}, "nothing"},
                             {{0}, "an empty piece"},
                             {{1, 0, 2}, "an empty piece between others"},
                             {{8192}, "as much as the writer gathers"},
                             {{8191, 1}, "the same in two pieces"},
                             {{8192, 1}, "a byte more than that"},
                             {{1, 8192}, "a piece that fits only once what is there has gone"},
                             {{8193}, "a piece that never fits"},
                             {{5, 8193, 5}, "such a piece between small ones"},
                             {{20000, 20000}, "two of them"}};
  for (const PiecesCase& row : rows) {
    const Stream stream;
    std::string expected;
    {
      base::StreamWriter out(stream.file());
      char letter = 'a';
      for (const std::size_t size : row.sizes) {
        const std::string piece(size, letter++);
        expected += piece;
        out << piece;
      }
    }
    EXPECT_TRUE(stream.text() == expected) << row.why;
  }
}

TEST(StreamWriter, WritesNumbersInPlainDecimal) {
  const Stream stream;
  {
    base::StreamWriter out(stream.file());
    out << 0 << " " << -1 << " " << 1234567 << " " << std::numeric_limits<std::int32_t>::min()
        << " " << std::numeric_limits<std::int32_t>::max();
  }
  EXPECT_EQ(stream.text(), "0 -1 1234567 -2147483648 2147483647");
}

TEST(StreamWriter, WritesOnFlush) {
  const Stream stream;
  base::StreamWriter out(stream.file());
  out << "a" << 1;
  EXPECT_EQ(stream.text(), "");
  out.flush();
  EXPECT_EQ(stream.text(), "a1");
  out.flush();
  EXPECT_EQ(stream.text(), "a1") << "nothing is written twice";
  out << "b";
  out.flush();
  EXPECT_EQ(stream.text(), "a1b");
}

}  // namespace
