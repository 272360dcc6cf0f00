#include "merge/line_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "system/failure.h"
#include "system/io.h"

namespace host {
namespace {

constexpr std::size_t kMinReadBytes = std::size_t{256} * 1024;

}  // namespace

LineReader::LineReader(std::string path)
    : path_(std::move(path)),
      // Without O_NONBLOCK the opening of a FIFO would wait for somebody to write.
      descriptor_(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
  if (descriptor_ < 0) throw systemFailure(path_, errno);
  struct stat status {};
  const bool isFile = ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
  if (!isFile) {
    ::close(descriptor_);
    throw Failure(path_ + ": not a regular file");
  }
}

LineReader::~LineReader() { ::close(descriptor_); }

void LineReader::seek(std::uint64_t offset, std::uint64_t bytes) {
  if (::lseek(descriptor_, static_cast<off_t>(offset), SEEK_SET) < 0) {
    throw systemFailure(path_, errno);
  }
  buffer_.clear();
  begin_ = 0;
  offset_ = offset;
  end_ = offset + bytes;
}

bool LineReader::next(std::string_view& line) {
  std::size_t searched = begin_;
  while (true) {
    const std::size_t end = buffer_.find('\n', searched);
    if (end != std::string::npos) {
      line = std::string_view(buffer_).substr(begin_, end - begin_);
      offset_ += end + 1 - begin_;
      begin_ = end + 1;
      return true;
    }
    searched = buffer_.size() - begin_;
    if (!readMore()) return false;  // which moves what is left to the front
  }
}

// Reads behind what is still to be taken, so much at a time that a long line is moved only a few
// times; false at the end of the file.
bool LineReader::readMore() {
  buffer_.erase(0, begin_);
  begin_ = 0;
  const std::size_t kept = buffer_.size();
  const std::uint64_t left = end_ - (offset_ + kept);
  buffer_.resize(kept + std::min<std::uint64_t>(left, std::max(kept, kMinReadBytes)));
  const ssize_t count = readSome(descriptor_, buffer_.data() + kept, buffer_.size() - kept);
  const int error = errno;
  buffer_.resize(kept + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  if (count < 0) throw systemFailure(path_, error);
  return count > 0;
}

}  // namespace host
