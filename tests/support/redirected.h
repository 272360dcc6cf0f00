// Points a file descriptor elsewhere for as long as it lives. What C's streams hold goes where it
// pointed when it was written.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace support {

class Redirected {
 public:
  Redirected(int descriptor, const char* path, int flags)
      : descriptor_(descriptor), before_(dup(descriptor)) {
    std::fflush(nullptr);
    const int other = open(path, flags);
    dup2(other, descriptor);
    close(other);
  }
  Redirected(const Redirected&) = delete;
  Redirected& operator=(const Redirected&) = delete;
  ~Redirected() {
    std::fflush(nullptr);
    dup2(before_, descriptor_);
    close(before_);
  }

 private:
  const int descriptor_;
  const int before_;
};

}  // namespace support
