#include "run/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "system/failure.h"
#include "system/io.h"
#include "system/platform.h"

namespace host {

Output::Output() {
  if (::fcntl(STDOUT_FILENO, F_GETFD) < 0) throw systemFailure("standard output", errno);
}

void Output::write(std::string_view text) { check(writeAll(STDOUT_FILENO, text)); }

void Output::check(int errorNumber) const {
  if (errorNumber != 0) throw systemFailure("standard output", errorNumber);
}

void Output::checkReader() const {
  if (isAbandoned(STDOUT_FILENO)) throw systemFailure("standard output", EPIPE);
}

void Output::close() { check(closeWritten(STDOUT_FILENO)); }

}  // namespace host
