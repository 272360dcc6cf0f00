// Points a file descriptor elsewhere while alive. Flushes C's streams before each switch, so that
// buffered text goes where the descriptor pointed when it was written.
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
