#include "run/diagnostics.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "system/io.h"

namespace host {
namespace {

// Each clear of 0 and 2, should they be closed.
int openFile(const std::string& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  const int descriptor = file < 0 ? file : outOfTheWay(file);
  if (descriptor < 0) throw systemFailure("diagnostics file " + path, errno);
  return descriptor;
}

int copyOfStandardError() {
  const int descriptor = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, kFirstFreeDescriptor);
  if (descriptor < 0) throw systemFailure("standard error", errno);
  return descriptor;
}

}  // namespace

void Diagnostics::begin() {
  if (where_ == "stderr") {
    descriptor_ = copyOfStandardError();
    return;
  }
  descriptor_ = openFile(file().value_or("/dev/null"));
  struct stat status {};
  const bool isFile = ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
  if (isFile && ::ftruncate(descriptor_, 0) != 0) {
    throw systemFailure("diagnostics file " + where_, errno);
  }
}

Failure Diagnostics::failure() const {
  return Failure("diagnostics could not be written: " + where_);
}

Diagnostics::~Diagnostics() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace host
