#include "workers/captured_errors.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "system/io.h"

namespace host {
namespace {

// What does not fit is lost: a module that writes without end is not to fill the memory.
constexpr off_t kMaxBytes = off_t{16} << 20;
constexpr off_t kBytesKept = off_t{64} << 10;  // of memory, once they are read
constexpr std::size_t kMaxTextBytes = 200;
constexpr std::string_view kMark = "Warning: ";  // before each of the module's own

// The end of a file of fixed size is where writing ends.
int makeFile() {
#ifdef __linux__
  const int file = ::memfd_create("quorl-js", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  if (file < 0) return file;
  if (::ftruncate(file, kMaxBytes) != 0 ||
      ::fcntl(file, F_ADD_SEALS, F_SEAL_GROW | F_SEAL_SHRINK) != 0) {
    ::close(file);
    return -1;
  }
  return outOfTheWay(file);
#else
  std::string name = "/tmp/quorl-js-XXXXXX";
  const int file = ::mkstemp(name.data());
  if (file < 0) return file;
  ::unlink(name.c_str());
  return outOfTheWay(file);
#endif
}

// Counts lines and keeps the first.
class LineCount {
 public:
  void add(std::string_view text) {
    for (; !text.empty();) {
      const std::size_t end = text.find('\n');
      line_.append(text.substr(0, end), 0, kMaxTextBytes + kMark.size() - line_.size());
      if (end == std::string_view::npos) return;
      endLine();
      text.remove_prefix(end + 1);
    }
  }

  std::string summary(bool isCut) {
    endLine();  // one may lack its line feed
    if (count_ == 0) return {};
    std::string text = isCut ? "more than " : "";
    text += std::to_string(count_) + (count_ == 1 ? " warning" : " warnings");
    return text.append(areAlike_ ? ": " : ", first: ").append(first_);
  }

 private:
  void endLine() {
    std::string_view line = line_;
    if (line.starts_with(kMark)) line.remove_prefix(kMark.size());
    if (!line.empty()) {
      if (count_ == 0) first_ = line.substr(0, kMaxTextBytes);
      areAlike_ = areAlike_ && line.substr(0, kMaxTextBytes) == first_;
      ++count_;
    }
    line_.clear();
  }

  std::string line_;
  std::string first_;
  std::uint64_t count_ = 0;
  bool areAlike_ = true;
};

}  // namespace

CapturedErrors::CapturedErrors() : file_(makeFile()) {}

CapturedErrors::~CapturedErrors() {
  if (file_ >= 0) ::close(file_);
  if (before_ >= 0) ::close(before_);
}

void CapturedErrors::begin() {
  if (file_ < 0) return;
  if (before_ < 0) before_ = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
  if (before_ >= 0) ::dup2(file_, STDERR_FILENO);
}

void CapturedErrors::end() {
  if (before_ >= 0) ::dup2(before_, STDERR_FILENO);
}

std::string CapturedErrors::take() {
  // Parent and worker share the place where the next byte goes; it is also how many there are.
  const off_t bytes = file_ < 0 ? 0 : ::lseek(file_, 0, SEEK_CUR);
  if (bytes <= 0) return {};
  LineCount lines;
  std::array<char, 65536> block;
  for (off_t at = 0; at < bytes;) {
    const auto wanted = static_cast<std::size_t>(std::min<off_t>(bytes - at, block.size()));
    const ssize_t count = ::pread(file_, block.data(), wanted, at);
    if (count <= 0) break;
    lines.add({block.data(), static_cast<std::size_t>(count)});
    at += count;
  }
  ::lseek(file_, 0, SEEK_SET);
#ifdef __linux__
  if (bytes > kBytesKept) {
    ::fallocate(file_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, kBytesKept, bytes - kBytesKept);
  }
#endif
  return lines.summary(bytes >= kMaxBytes);
}

}  // namespace host
