#include "run/temporary_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <string_view>

#include "system/file_lock.h"
#include "system/io.h"
#include "system/signals.h"

namespace host {
namespace {

constexpr std::string_view kPrefix = ".quorl-js-";

// Removes the digits that text begins with. Returns false if there are none.
bool takeDigits(std::string_view& text) {
  const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  text.remove_prefix(digits);
  return digits > 0;
}

bool isTemporaryName(std::string_view name) {
  if (!name.starts_with(kPrefix)) return false;
  name.remove_prefix(kPrefix.size());
  if (!takeDigits(name) || !name.starts_with('-')) return false;
  name.remove_prefix(1);
  return takeDigits(name) && name.empty();
}

void removeIfStale(int directory, const char* name) {
  const int file =
      ::openat(directory, name, O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (file < 0) return;
  struct stat status {};
  const bool isRegular = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  // With the lock in hand, no other run removes, renames or makes a file of that name.
  if (isRegular && tryLockFile(file) && isStillAt(file, directory, name)) {
    ::unlinkat(directory, name, 0);
  }
  ::close(file);
}

// Locks the new file. Returns false, and removes the file unless another run did, if it cannot be.
bool lockNew(int directory, TemporaryFile& file) {
  file.lock = ::fcntl(file.descriptor, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
  const int error = errno;
  if (file.lock >= 0) {
    lockFile(file.lock);
    if (isStillAt(file.lock, directory, file.name.c_str())) return true;
    ::close(file.lock);
  } else {
    ::unlinkat(directory, file.name.c_str(), 0);
  }
  ::close(file.descriptor);
  file.descriptor = -1;
  errno = file.lock < 0 ? error : EEXIST;
  return false;
}

}  // namespace

TemporaryFile makeTemporaryFile(int directory) {
  const SignalsHeld held;
  // A process with the same number, on another machine or before this one, may have left a file;
  // and a run that starts may remove ours before it is locked.
  for (unsigned attempt = 0;; ++attempt) {
    TemporaryFile file{
        std::string(kPrefix) + std::to_string(::getpid()) + "-" + std::to_string(attempt), -1, -1};
    file.descriptor =
        ::openat(directory, file.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file.descriptor >= 0 && lockNew(directory, file)) {
      noteTemporaryFile(directory, file.name);
      return file;
    }
    if (errno != EEXIST) return file;
  }
}

int finishTemporaryFile(int directory, const TemporaryFile& file, const std::string& name,
                        int error) {
  const SignalsHeld held;
  if (error == 0 && ::renameat(directory, file.name.c_str(), directory, name.c_str()) != 0) {
    error = errno;
  }
  if (error != 0) ::unlinkat(directory, file.name.c_str(), 0);
  ::close(file.lock);
  forgetTemporaryFile();
  return error;
}

void dropTemporaryFile(int directory, const TemporaryFile& file) {
  const SignalsHeld held;
  ::unlinkat(directory, file.name.c_str(), 0);
  ::close(file.lock);
  forgetTemporaryFile();
}

void removeStaleTemporaryFiles(int directory) {
  const int listing = ::openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (listing < 0) return;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(listing), ::closedir);
  if (!entries) {
    ::close(listing);
    return;
  }
  while (const dirent* const entry = ::readdir(entries.get())) {
    if (isTemporaryName(entry->d_name)) removeIfStale(directory, entry->d_name);
  }
}

}  // namespace host
