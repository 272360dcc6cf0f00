#include "run/temporary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "system/signals.h"

namespace host {

TemporaryFile makeTemporaryFile(int directory) {
  const SignalsHeld held;
  // A process with the same number, on another machine or before this one, may have left a file.
  for (unsigned attempt = 0;; ++attempt) {
    const std::string name =
        ".quorl-js-" + std::to_string(::getpid()) + "-" + std::to_string(attempt);
    const int file =
        ::openat(directory, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0) noteTemporaryFile(directory, name);
    if (file >= 0 || errno != EEXIST) return {name, file};
  }
}

int finishTemporaryFile(int directory, const TemporaryFile& file, const std::string& name,
                        int error) {
  const SignalsHeld held;
  if (error == 0 && ::renameat(directory, file.name.c_str(), directory, name.c_str()) != 0) {
    error = errno;
  }
  if (error != 0) ::unlinkat(directory, file.name.c_str(), 0);
  forgetTemporaryFile();
  return error;
}

}  // namespace host
