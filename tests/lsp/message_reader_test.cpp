#include "lsp/message_reader.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using host::lsp::framed;
using host::lsp::MessageReader;

// The messages that the bytes hold, with "<broken>" for each header that is dropped.
std::vector<std::string> messagesIn(std::string_view bytes, std::size_t step) {
  MessageReader reader;
  std::vector<std::string> messages;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    reader.append(bytes.substr(at, step));
    std::string_view body;
    for (auto result = reader.next(body); result != MessageReader::Result::kNone;
         result = reader.next(body)) {
      messages.emplace_back(result == MessageReader::Result::kMessage ? body : "<broken>");
    }
    reader.compact();
  }
  return messages;
}

struct FrameCase {
  std::string why;
  std::string bytes;
  std::vector<std::string> messages;
};

const std::vector<FrameCase> kFrames = {
    {"nothing", "", {}},
    {"a frame", "Content-Length: 2\r\n\r\n{}", {"{}"}},
    {"two of them", "Content-Length: 2\r\n\r\n{}Content-Length: 3\r\n\r\n[1]", {"{}", "[1]"}},
    {"an empty body", "Content-Length: 0\r\n\r\nContent-Length: 1\r\n\r\n1", {"", "1"}},
    {"bytes are counted, not characters",
     "Content-Length: 4\r\n\r\n\"\xc3\xa4\"",
     {"\"\xc3\xa4\""}},
    {"any case", "content-LENGTH:2\r\n\r\n{}", {"{}"}},
    {"other headers, before and behind",
     "A: b\r\nContent-Length: 2\r\nContent-Type: application/vscode-jsonrpc; "
     "charset=utf-8\r\n\r\n{}",
     {"{}"}},
    {"the last of several lengths", "Content-Length: 9\r\nContent-Length: 2\r\n\r\n{}", {"{}"}},
    {"line feeds alone", "Content-Length: 2\n\n{}", {"{}"}},
    {"a body that is cut", "Content-Length: 3\r\n\r\n{}", {}},
    {"a header that is cut", "Content-Length: 2\r\n", {}},
    {"no length", "A: b\r\n\r\nContent-Length: 2\r\n\r\n{}", {"<broken>", "{}"}},
    {"a length that is no number",
     "Content-Length: x\r\n\r\nContent-Length: 2\r\n\r\n{}",
     {"<broken>", "{}"}},
    {"a negative length",
     "Content-Length: -2\r\n\r\nContent-Length: 2\r\n\r\n{}",
     {"<broken>", "{}"}},
    {"an empty length", "Content-Length: \r\n\r\nContent-Length: 2\r\n\r\n{}", {"<broken>", "{}"}},
    {"a length beyond 64 bits",
     "Content-Length: 99999999999999999999\r\n\r\nContent-Length: 2\r\n\r\n{}",
     {"<broken>", "{}"}},
    {"more than 1 GiB",
     "Content-Length: 1073741825\r\n\r\nContent-Length: 2\r\n\r\n{}",
     {"<broken>", "{}"}},
    {"stray bytes before a frame", "{}{}Content-Length: 2\r\n\r\n{}", {"<broken>", "{}"}},
    {"a line without a colon", "hello\r\n\r\nContent-Length: 2\r\n\r\n{}", {"<broken>", "{}"}}};

TEST(MessageReader, TakesFramesOutOfAStream) {
  for (const FrameCase& row : kFrames) {
    EXPECT_EQ(messagesIn(row.bytes, row.bytes.size() + 1), row.messages) << row.why;
  }
}

// A header is judged when its blank line has come, so pieces change nothing.
TEST(MessageReader, TakesThemFromPiecesOfAnySize) {
  for (const FrameCase& row : kFrames) {
    for (const std::size_t step : {1U, 2U, 3U, 7U}) {
      EXPECT_EQ(messagesIn(row.bytes, step), row.messages) << row.why << " by " << step;
    }
  }
}

TEST(MessageReader, DropsAHeaderThatHasNoEnd) {
  const std::string stray(8192, 'x');
  EXPECT_EQ(messagesIn(stray + framed("{}"), 100'000),
            (std::vector<std::string>{"<broken>", "{}"}));
  EXPECT_EQ(messagesIn(std::string(8191, 'x'), 100'000), std::vector<std::string>{});
}

TEST(MessageReader, ReadsWhatIsFramed) {
  EXPECT_EQ(framed("{}"), "Content-Length: 2\r\n\r\n{}");
  const std::string large(5'000'000, 'a');
  EXPECT_EQ(messagesIn(framed(large) + framed(""), 65536), (std::vector<std::string>{large, ""}));
}

}  // namespace
