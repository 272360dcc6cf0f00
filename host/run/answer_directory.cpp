#include "run/answer_directory.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "run/answer_name.h"
#include "run/temporary_file.h"
#include "system/failure.h"
#include "system/io.h"

namespace host {
namespace {

// Gives 0, or the number of the first error.
int fill(const TemporaryFile& file, std::string_view text) {
  const int writeError = writeAll(file.descriptor, text);
  const int closeError = closeWritten(file.descriptor);
  return writeError != 0 ? writeError : closeError;
}

int writeWhole(int directory, const std::string& name, std::string_view text) {
  const TemporaryFile file = makeTemporaryFile(directory);
  if (file.descriptor < 0) return errno;
  return finishTemporaryFile(directory, file, name, fill(file, text));
}

}  // namespace

AnswerDirectory::AnswerDirectory(const std::string& path, std::string_view extension)
    : path_(path),
      extension_(extension),
      directory_(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  const std::string subject = "output directory " + path;
  if (directory_ < 0) throw systemFailure(subject, errno);
  if (::faccessat(directory_, ".", W_OK | X_OK, AT_EACCESS) != 0) {
    const int error = errno;
    ::close(directory_);
    throw systemFailure(subject, error);
  }
}

AnswerDirectory::~AnswerDirectory() { ::close(directory_); }

void AnswerDirectory::remove(std::string_view sourceFile) const {
  const std::string name = answerName(sourceFile, extension_);
  if (::unlinkat(directory_, name.c_str(), 0) != 0 && errno != ENOENT) {
    throw systemFailure("answer file " + path_ + "/" + name, errno);
  }
}

void AnswerDirectory::write(std::string_view sourceFile, std::string_view answer) const {
  const std::string name = answerName(sourceFile, extension_);
  const int error = writeWhole(directory_, name, answer);
  if (error != 0) throw systemFailure("answer file " + path_ + "/" + name, error);
}

}  // namespace host
