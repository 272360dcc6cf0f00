#include "workers/worker_frame.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace {

using host::Frame;
using host::FrameKind;
using host::FrameReader;
using State = host::FrameReader::State;

struct Sent {
  std::uint64_t index;
  std::string message;
  std::string text;
};

bool operator==(const Sent& left, const Sent& right) {
  return left.index == right.index && left.message == right.message && left.text == right.text;
}

// What the reader makes of the frames, read while they are written.
std::vector<Sent> passThroughAPipe(const std::vector<Sent>& frames) {
  std::array<int, 2> ends{};
  EXPECT_EQ(::pipe(ends.data()), 0);
  std::thread writer([&] {
    for (const Sent& each : frames) {
      Frame frame;
      frame.kind = FrameKind::kFile;
      frame.index = each.index;
      frame.message = each.message;
      EXPECT_EQ(host::writeFrame(ends[1], frame, each.text), 0);
    }
    ::close(ends[1]);
  });
  std::vector<Sent> received;
  FrameReader reader;
  while (reader.read(ends[0]) != State::kEnded) {
    Frame frame;
    while (reader.next(frame) == State::kWhole) {
      received.push_back({frame.index, frame.message, frame.text});
    }
  }
  EXPECT_EQ(reader.heldBytes(), 0U);
  writer.join();
  ::close(ends[0]);
  return received;
}

TEST(WorkerFrame, ArrivesAsItWasWrittenWhateverItsLength) {
  const std::string large(std::size_t{3} << 20U, 'x');
  const std::vector<Sent> frames = {{1, "", ""},          {2, "message", "text"},
                                    {3, "", large},       {4, "after a large one", "y"},
                                    {5, large, "z"},      {6, "", large + "1"},
                                    {7, "", large + "2"}, {8, "", std::string(256 * 1024, 'a')},
                                    {9, "last", ""}};
  EXPECT_EQ(passThroughAPipe(frames), frames);
}

TEST(WorkerFrame, ManyAreTakenFromOneRead) {
  std::vector<Sent> frames;
  for (std::uint64_t index = 0; index < 5000; ++index) {
    frames.push_back({index, std::to_string(index), std::string(index % 300, 'b')});
  }
  EXPECT_EQ(passThroughAPipe(frames), frames);
}

TEST(WorkerFrame, OfOtherBytesIsMalformed) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const std::string bytes(200, 'q');
  ASSERT_EQ(::write(ends[1], bytes.data(), bytes.size()), 200);
  FrameReader reader;
  Frame frame;
  EXPECT_EQ(reader.next(frame), State::kOpen);
  EXPECT_EQ(reader.read(ends[0]), State::kOpen);
  EXPECT_EQ(reader.next(frame), State::kMalformed);
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace
