#include "workers/worker_frame.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "system/io.h"

namespace host {
namespace {

// Stands at both ends of a header, so that stray bytes on the pipe are noticed.
constexpr std::uint64_t kMark = 0x71756f726c2d6a73;

constexpr std::size_t kReadBytes = std::size_t{256} * 1024;

struct Header {
  std::uint64_t mark = kMark;
  std::uint64_t index = 0;
  std::uint64_t messageBytes = 0;
  std::uint64_t warningBytes = 0;
  std::uint64_t omittedBytes = 0;
  std::uint64_t textBytes = 0;
  std::uint64_t sharedBytes = 0;
  std::uint8_t kind = 0;
  std::uint8_t status = 0;
  std::uint8_t hasAnswer = 0;
  std::uint8_t isLast = 0;
  std::uint8_t diagnosticsLost = 0;
  std::uint8_t hasChanged = 0;
  std::uint8_t isWritten = 0;
  std::uint8_t isOtherText = 0;
  std::uint8_t outputError = 0;  // no system has more than 255
  std::uint64_t endMark = kMark;
};

// More than a text can be while its length still adds up.
constexpr std::uint64_t kMaxPartBytes = std::uint64_t{1} << 48U;

bool isSound(const Header& header) {
  return header.mark == kMark && header.endMark == kMark &&
         header.kind <= static_cast<std::uint8_t>(FrameKind::kFile) &&
         header.status <= static_cast<std::uint8_t>(FileStatus::kTooLarge) &&
         header.messageBytes < kMaxPartBytes && header.warningBytes < kMaxPartBytes &&
         header.omittedBytes < kMaxPartBytes && header.textBytes < kMaxPartBytes;
}

Header headerOf(std::string_view bytes) {
  Header header;
  std::memcpy(&header, bytes.data(), sizeof header);
  return header;
}

// Where the text begins.
std::size_t openingBytes(const Header& header) {
  return sizeof header + header.messageBytes + header.warningBytes + header.omittedBytes;
}

std::size_t frameBytes(const Header& header) { return openingBytes(header) + header.textBytes; }

}  // namespace

int writeFrame(int descriptor, const Frame& frame, std::string_view text) {
  Header header;
  header.index = frame.index;
  header.messageBytes = frame.message.size();
  header.warningBytes = frame.warnings.size();
  header.omittedBytes = frame.omitted.size();
  header.textBytes = text.size();
  header.sharedBytes = frame.sharedBytes;
  header.kind = static_cast<std::uint8_t>(frame.kind);
  header.status = static_cast<std::uint8_t>(frame.status);
  header.hasAnswer = frame.hasAnswer ? 1 : 0;
  header.isLast = frame.isLast ? 1 : 0;
  header.diagnosticsLost = frame.diagnosticsLost ? 1 : 0;
  header.hasChanged = frame.hasChanged ? 1 : 0;
  header.isWritten = frame.isWritten ? 1 : 0;
  header.isOtherText = frame.isOtherText ? 1 : 0;
  header.outputError = static_cast<std::uint8_t>(frame.outputError);
  std::string opening(sizeof header, '\0');
  std::memcpy(opening.data(), &header, sizeof header);
  opening.append(frame.message).append(frame.warnings).append(frame.omitted);

  // Together, so that the parent does not wake up for the header alone.
  std::array<iovec, 2> parts = {
      iovec{opening.data(), opening.size()},
      iovec{const_cast<char*>(text.data()), std::min(text.size(), kReadBytes)}};
  ssize_t written = 0;
  do {
    written = ::writev(descriptor, parts.data(), static_cast<int>(parts.size()));
  } while (written < 0 && errno == EINTR);
  if (written < 0) return errno;
  const auto count = static_cast<std::size_t>(written);
  if (count < opening.size()) {
    if (const int error = writeAll(descriptor, std::string_view(opening).substr(count))) {
      return error;
    }
    return writeAll(descriptor, text);
  }
  return writeAll(descriptor, text.substr(count - opening.size()));
}

FrameReader::State FrameReader::read(int descriptor) {
  std::memmove(bytes_.data(), bytes_.data() + taken_, heldBytes());
  end_ -= std::exchange(taken_, 0);
  // No byte behind a frame that has begun, so that a long text need not be copied out.
  std::size_t wanted = kReadBytes;
  if (const std::size_t missing = missingBytes(); missing > 0) {
    wanted = std::min(missing, std::max(wanted, heldBytes()));
    bytes_.reserve(end_ + missing);
  }
  if (bytes_.size() < end_ + wanted) bytes_.resize(end_ + wanted);
  const ssize_t count = readSome(descriptor, bytes_.data() + end_, wanted);
  if (count <= 0) return State::kEnded;
  end_ += static_cast<std::size_t>(count);
  return State::kOpen;
}

std::size_t FrameReader::missingBytes() const {
  const std::string_view rest = held();
  if (rest.size() < sizeof(Header)) return 0;
  return frameBytes(headerOf(rest)) - rest.size();
}

// Gives up the buffer if the text is all of it and long, so that it is not twice in memory.
std::string FrameReader::takeText(std::size_t begin, std::size_t bytes) {
  taken_ = begin + bytes;
  if (bytes <= kReadBytes || taken_ != end_) return bytes_.substr(begin, bytes);
  bytes_.resize(end_);
  bytes_.erase(0, begin);
  taken_ = end_ = 0;
  return std::exchange(bytes_, {});
}

FrameReader::State FrameReader::next(Frame& frame) {
  const std::string_view rest = held();
  if (rest.size() < sizeof(Header)) return State::kOpen;
  const Header header = headerOf(rest);
  if (!isSound(header)) return State::kMalformed;
  if (rest.size() < frameBytes(header)) return State::kOpen;
  frame.kind = static_cast<FrameKind>(header.kind);
  frame.status = static_cast<FileStatus>(header.status);
  frame.hasAnswer = header.hasAnswer != 0;
  frame.isLast = header.isLast != 0;
  frame.diagnosticsLost = header.diagnosticsLost != 0;
  frame.hasChanged = header.hasChanged != 0;
  frame.isWritten = header.isWritten != 0;
  frame.isOtherText = header.isOtherText != 0;
  frame.outputError = header.outputError;
  frame.index = header.index;
  frame.sharedBytes = header.sharedBytes;
  std::size_t next = sizeof header;
  const auto take = [rest, &next](std::uint64_t bytes) {
    return rest.substr(std::exchange(next, next + bytes), bytes);
  };
  frame.message = take(header.messageBytes);
  frame.warnings = take(header.warningBytes);
  frame.omitted = take(header.omittedBytes);
  frame.text = takeText(taken_ + openingBytes(header), header.textBytes);
  return State::kWhole;
}

}  // namespace host
