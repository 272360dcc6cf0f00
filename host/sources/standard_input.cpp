#include "sources/standard_input.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "system/failure.h"
#include "system/io.h"
#include "system/signals.h"

namespace host {
namespace {

constexpr std::size_t kReadBytes = std::size_t{64} * 1024;

void copyStandardInput(int file, const std::string& path, std::uint64_t limit) {
  std::array<char, kReadBytes> block;
  for (std::uint64_t total = 0; limit == 0 || total <= limit;) {
    std::size_t wanted = block.size();
    if (limit != 0) wanted = std::min<std::uint64_t>(wanted, limit + 1 - total);
    const ssize_t count = readSome(STDIN_FILENO, block.data(), wanted);
    if (count < 0) throw systemFailure("standard input", errno);
    if (count == 0) return;
    total += static_cast<std::uint64_t>(count);
    const int error =
        writeAll(file, std::string_view(block.data(), static_cast<std::size_t>(count)));
    if (error != 0) throw systemFailure(path, error);
  }
}

void removeBoth(const std::string& directory, const std::string& file) {
  const SignalsHeld held;
  ::unlink(file.c_str());
  ::rmdir(directory.c_str());
  forgetTemporaryDirectory();
}

}  // namespace

StandardInputCopy::StandardInputCopy(const std::string& path, std::uint64_t limit)
    : directory_(temporaryParent() + "/quorl-js-XXXXXX") {
  const std::string name = path.substr(path.rfind('/') + 1);
  int file = -1;
  {
    const SignalsHeld held;
    if (::mkdtemp(directory_.data()) == nullptr) {
      throw systemFailure("temporary directory in " + temporaryParent(), errno);
    }
    file_ = directory_ + "/" + name;
    noteTemporaryDirectory(directory_, file_);
  }
  try {
    file = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) throw systemFailure(path, errno);
    copyStandardInput(file, file_, limit);
    const int error = closeWritten(file);
    file = -1;
    if (error != 0) throw systemFailure(file_, error);
  } catch (...) {
    if (file >= 0) ::close(file);
    removeBoth(directory_, file_);
    throw;
  }
}

StandardInputCopy::~StandardInputCopy() { removeBoth(directory_, file_); }

}  // namespace host
