#include "index/index_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <vector>

#include "system/failure.h"
#include "system/file_lock.h"
#include "system/file_paths.h"
#include "system/io.h"
#include "system/signals.h"

namespace host::index {
namespace {

constexpr std::size_t kCopyBytes = std::size_t{1} << 20U;

// A descriptor that is closed at the end of its block.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  int number() const { return number_; }

 private:
  int number_;
};

// Returns 0 or the number of the error.
int copyByReading(int from, int to) {
  std::vector<char> block(kCopyBytes);
  while (true) {
    const ssize_t count = readSome(from, block.data(), block.size());
    if (count < 0) return errno;
    if (count == 0) return 0;
    const int error = writeAll(to, {block.data(), static_cast<std::size_t>(count)});
    if (error != 0) return error;
  }
}

int copyBytes(int from, int to) {
#ifdef __linux__
  // Within the file system, which may share the blocks.
  constexpr std::size_t kMost = std::size_t{1} << 30U;
  while (true) {
    const ssize_t count = ::copy_file_range(from, nullptr, to, nullptr, kMost, 0);
    if (count == 0) return 0;
    const bool isUnknown = count < 0 && (errno == EXDEV || errno == EINVAL || errno == ENOSYS ||
                                         errno == EOPNOTSUPP || errno == EPERM);
    if (isUnknown) break;
    if (count < 0 && errno != EINTR) return errno;
  }
#endif
  return copyByReading(from, to);
}

// "process 4711 on host", for a person.
std::string holderText() {
  std::array<char, HOST_NAME_MAX + 1> host{};
  ::gethostname(host.data(), host.size() - 1);
  return "process " + std::to_string(::getpid()) + " on " + host.data();
}

int syncedAndClosed(int descriptor) {
  int error = ::fsync(descriptor) != 0 ? errno : 0;
  const int closeError = closeWritten(descriptor);
  return error != 0 ? error : closeError;
}

}  // namespace

IndexFile::IndexFile(const std::string& name, IfLocked ifLocked) : name_(name) {
  namespace fs = std::filesystem;
  // A link stays, and what it leads to is replaced.
  const fs::path path = behindLinks(name);
  std::error_code error;
  const fs::path folder = fs::canonical(path.has_parent_path() ? path.parent_path() : ".", error);
  if (error) throw systemFailure(name, error.value());
  folder_ = folder == "/" ? "" : folder.string();
  file_ = path.filename().string();
  if (file_.empty()) throw systemFailure(name, EISDIR);
  directory_ = ::open((folder_ + "/").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory_ >= 0) directory_ = outOfTheWay(directory_);
  if (directory_ < 0) throw systemFailure(name, errno);
  try {
    lock(ifLocked);
    if (::unlinkat(directory_, (file_ + ".tmp").c_str(), 0) != 0 && errno != ENOENT) {
      throw systemFailure(name + ".tmp", errno);
    }
  } catch (const Failure&) {
    drop();
    throw;
  }
}

IndexFile::~IndexFile() { drop(); }

void IndexFile::drop() {
  if (isBegun_) {
    const SignalsHeld held;
    ::unlinkat(directory_, (file_ + ".tmp").c_str(), 0);
    forgetTemporaryFile();
  }
  if (lock_ >= 0) {
    // Before the lock is gone with the descriptor: nobody else may remove the file of a later one.
    ::unlinkat(directory_, (file_ + ".lock").c_str(), 0);
    ::close(lock_);
  }
  ::close(directory_);
}

void IndexFile::lock(IfLocked ifLocked) {
  // The writer before may have removed the file that was waited for.
  while (!tryLock(ifLocked)) {
  }
  const std::string text = holderText() + "\n";
  if (::ftruncate(lock_, 0) == 0) writeAll(lock_, text);
}

bool IndexFile::tryLock(IfLocked ifLocked) {
  const std::string name = file_ + ".lock";
  const int file =
      ::openat(directory_, name.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (file < 0) throw systemFailure(name_ + ".lock", errno);
  const int descriptor = outOfTheWay(file);
  if (descriptor < 0) throw systemFailure(name_ + ".lock", errno);
  if (ifLocked == IfLocked::kWait) {
    lockFile(descriptor);
  } else if (!tryLockFile(descriptor) && errno == EWOULDBLOCK) {
    ::close(descriptor);
    failAsLocked();
  }
  if (isStillAt(descriptor, directory_, name.c_str())) {
    lock_ = descriptor;
    return true;
  }
  ::close(descriptor);
  return false;
}

void IndexFile::failAsLocked() const {
  std::string holder = "another process";
  const Descriptor file(
      ::openat(directory_, (file_ + ".lock").c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  std::array<char, 512> bytes;
  const ssize_t count =
      file.number() < 0 ? -1 : readSome(file.number(), bytes.data(), bytes.size());
  if (count > 0) {
    const std::string_view text(bytes.data(), static_cast<std::size_t>(count));
    holder = text.substr(0, text.find('\n'));
  }
  throw Failure(name_ + ": is being written by " + holder);
}

bool IndexFile::exists() const {
  struct stat status {};
  if (::fstatat(directory_, file_.c_str(), &status, 0) != 0) {
    if (errno == ENOENT) return false;
    throw systemFailure(name_, errno);
  }
  if (S_ISDIR(status.st_mode)) throw systemFailure(name_, EISDIR);
  if (!S_ISREG(status.st_mode)) throw Failure(name_ + ": not a regular file");
  return true;
}

void IndexFile::begin(bool isCopy) {
  const std::string temporary = file_ + ".tmp";
  const SignalsHeld held;
  struct stat status {};
  const bool isThere = ::fstatat(directory_, file_.c_str(), &status, 0) == 0;
  const Descriptor to(::openat(directory_, temporary.c_str(),
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (to.number() < 0) throw systemFailure(name_ + ".tmp", errno);
  noteTemporaryFile(directory_, temporary);
  isBegun_ = true;
  if (isThere) ::fchmod(to.number(), status.st_mode & 07777);
  if (!isCopy) return;
  const Descriptor from(::openat(directory_, file_.c_str(), O_RDONLY | O_CLOEXEC));
  if (from.number() < 0) throw systemFailure(name_, errno);
  if (const int error = copyBytes(from.number(), to.number())) throw systemFailure(name_, error);
}

void IndexFile::replace() {
  const std::string temporary = file_ + ".tmp";
  const int file = ::openat(directory_, temporary.c_str(), O_RDWR | O_CLOEXEC);
  if (file < 0) throw systemFailure(name_ + ".tmp", errno);
  if (const int error = syncedAndClosed(file)) throw systemFailure(name_, error);
  const SignalsHeld held;
  if (::renameat(directory_, temporary.c_str(), directory_, file_.c_str()) != 0) {
    throw systemFailure(name_, errno);
  }
  forgetTemporaryFile();
  isBegun_ = false;
  if (::fsync(directory_) != 0 && errno != EINVAL) throw systemFailure(name_, errno);
}

OwnFiles::OwnFiles(const std::string& index) {
  const std::filesystem::path path = behindLinks(index);
  folder_ = path.has_parent_path() ? path.parent_path().string() : ".";
  name_ = path.filename().string();
}

bool OwnFiles::hold(const std::string& path) const {
  const std::size_t slash = path.rfind('/');
  const std::string_view name = std::string_view(path).substr(slash + 1);
  if (name != name_ && name != name_ + ".tmp" && name != name_ + ".lock") return false;
  const std::string folder =
      slash == std::string::npos ? "." : path.substr(0, std::max<std::size_t>(slash, 1));
  std::error_code unseen;
  return std::filesystem::equivalent(folder, folder_, unseen);
}

}  // namespace host::index
