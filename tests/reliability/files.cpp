#include "reliability/files.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace reliability {

Files files;

namespace {

bool opens() {
  if (!files.isWatched) return true;
  ++files.opens;
  errno = files.openError;
  return files.openError == 0;
}

int openFile(const char* path, int flags, mode_t mode) {
  return opens() ? static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode)) : -1;
}

std::FILE* openStream(const char* symbol, const char* path, const char* mode) {
  using Open = std::FILE* (*)(const char*, const char*);
  static const auto real = reinterpret_cast<Open>(dlsym(RTLD_NEXT, symbol));
  return opens() ? real(path, mode) : nullptr;
}

ssize_t readFile(int descriptor, void* buffer, std::size_t bytes) {
  ssize_t allowed = static_cast<ssize_t>(bytes);
  if (files.isWatched) {
    const std::size_t number = files.reads++;
    if (files.read) allowed = std::min(allowed, files.read(number, bytes));
  }
  if (allowed < 0) {
    errno = static_cast<int>(-allowed);
    return -1;
  }
  return syscall(SYS_read, descriptor, buffer, static_cast<std::size_t>(allowed));
}

off_t seek(int descriptor, off_t offset, int whence) {
  if (files.isWatched && files.seeks++ == files.failingSeek) {
    errno = EIO;
    return -1;
  }
  return syscall(SYS_lseek, descriptor, offset, whence);
}

}  // namespace
}  // namespace reliability

extern "C" {

int open(const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) == 0 ? 0 : va_arg(arguments, mode_t);
  va_end(arguments);
  return reliability::openFile(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) == 0 ? 0 : va_arg(arguments, mode_t);
  va_end(arguments);
  return reliability::openFile(path, flags, mode);
}

std::FILE* fopen(const char* path, const char* mode) {
  return reliability::openStream("fopen", path, mode);
}
std::FILE* fopen64(const char* path, const char* mode) {
  return reliability::openStream("fopen64", path, mode);
}

ssize_t read(int descriptor, void* buffer, std::size_t bytes) {
  return reliability::readFile(descriptor, buffer, bytes);
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept {
  return reliability::seek(descriptor, offset, whence);
}
off64_t lseek64(int descriptor, off64_t offset, int whence) noexcept {
  return reliability::seek(descriptor, offset, whence);
}

int close(int descriptor) {
  const int result = static_cast<int>(syscall(SYS_close, descriptor));
  if (!reliability::files.isWatched || reliability::files.closeError == 0) return result;
  errno = reliability::files.closeError;
  return -1;
}
}
