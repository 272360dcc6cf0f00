#include "sources/standard_input.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "system/failure.h"
#include "system/file_lock.h"
#include "system/io.h"
#include "system/signals.h"

namespace host {
namespace {

constexpr std::size_t kReadBytes = std::size_t{64} * 1024;
constexpr std::string_view kDirectoryPrefix = "quorl-js-stdin-";
constexpr std::string_view kRandomPart = "XXXXXX";  // as mkdtemp wants it

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

// Removes the directory if nobody holds a lock on it and if it has no more in it than a run leaves.
void removeIfStale(int parent, const char* name) {
  const int directory =
      ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (directory < 0) return;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(directory), ::closedir);
  if (!entries) {
    ::close(directory);
    return;
  }
  struct stat status {};
  const bool isOurs = ::fstat(directory, &status) == 0 && status.st_uid == ::geteuid();
  if (!isOurs || !tryLockFile(directory) || !isStillAt(directory, parent, name)) return;
  std::vector<std::string> files;
  while (const dirent* const entry = ::readdir(entries.get())) {
    const std::string_view file = entry->d_name;
    if (file != "." && file != "..") files.emplace_back(file);
  }
  if (files.size() > 1) return;
  for (const std::string& file : files) ::unlinkat(directory, file.c_str(), 0);
  ::unlinkat(parent, name, AT_REMOVEDIR);
}

void removeStaleDirectories(const std::string& path) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(path.c_str()), ::closedir);
  if (!entries) return;  // making a directory there will fail too, or need not read it
  while (const dirent* const entry = ::readdir(entries.get())) {
    const std::string_view name = entry->d_name;
    const bool isOurs = name.starts_with(kDirectoryPrefix) &&
                        name.size() == kDirectoryPrefix.size() + kRandomPart.size();
    if (isOurs) removeIfStale(::dirfd(entries.get()), entry->d_name);
  }
}

}  // namespace

StandardInputCopy::StandardInputCopy(const std::string& path, std::uint64_t limit) {
  const std::string name = path.substr(path.rfind('/') + 1);
  int file = -1;
  removeStaleDirectories(temporaryParent());
  {
    const SignalsHeld held;
    makeDirectory();
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
    ::close(lock_);
    throw;
  }
}

StandardInputCopy::~StandardInputCopy() {
  removeBoth(directory_, file_);
  ::close(lock_);
}

// A run that starts may remove the directory before it is locked; then another is made.
void StandardInputCopy::makeDirectory() {
  const std::string parent = temporaryParent();
  while (true) {
    directory_ = parent + "/" + std::string(kDirectoryPrefix) + std::string(kRandomPart);
    if (::mkdtemp(directory_.data()) == nullptr) {
      throw systemFailure("temporary directory in " + parent, errno);
    }
    const int opened = ::open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    lock_ = opened < 0 ? opened : outOfTheWay(opened);
    if (lock_ < 0 && errno != ENOENT) {
      const int error = errno;
      ::rmdir(directory_.c_str());
      throw systemFailure(directory_, error);
    }
    if (lock_ < 0) continue;
    lockFile(lock_);
    if (isStillAt(lock_, AT_FDCWD, directory_.c_str())) return;
    ::close(lock_);
  }
}

}  // namespace host
