#include "system/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace host {

void lockFile(int descriptor) {
  while (::flock(descriptor, LOCK_EX) != 0 && errno == EINTR) {
  }
}

bool tryLockFile(int descriptor) { return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0; }

bool isStillAt(int descriptor, int directory, const char* name) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(descriptor, &opened) == 0 &&
         ::fstatat(directory, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace host
