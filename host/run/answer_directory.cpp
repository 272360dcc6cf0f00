#include "run/answer_directory.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "run/answer_name.h"
#include "run/temporary_file.h"
#include "system/ascii.h"
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

// Answer names are ASCII.
std::string folded(std::string name) { return asciiUpper(std::move(name)); }

}  // namespace

bool foldsCase(int directory) {
  const TemporaryFile file = makeTemporaryFile(directory);
  if (file.descriptor < 0) return false;  // writing answers will fail, with the reason
  ::close(file.descriptor);
  const bool isFound = ::faccessat(directory, folded(file.name).c_str(), F_OK, 0) == 0;
  dropTemporaryFile(directory, file);
  return isFound;
}

AnswerDirectory::AnswerDirectory(const std::string& path, std::string_view extension,
                                 bool (*probe)(int directory))
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
  removeStaleTemporaryFiles(directory_);
  foldsCase_ = probe(directory_);
}

AnswerDirectory::~AnswerDirectory() { ::close(directory_); }

std::optional<std::string> AnswerDirectory::otherOwner(std::string_view sourceFile) {
  if (!foldsCase_) return std::nullopt;
  std::string name = answerName(sourceFile, extension_);
  const auto [owner, isNew] =
      owners_.try_emplace(folded(name), Owner{name, std::string(sourceFile)});
  if (owner->second.answerName == name) return std::nullopt;
  return owner->second.sourceFile;
}

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
