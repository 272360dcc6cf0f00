#include "sources/input_list.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "sources/directory_walk.h"
#include "system/failure.h"

namespace host {
namespace {

constexpr const char* kWritten = "is written by this run, skipped";

void add(Inputs& inputs, std::string path, InputKind kind, std::string reason = {}) {
  inputs.all.push_back({std::move(path), kind, std::move(reason), inputs.reportCount});
  if (kind != InputKind::kPassedOver) ++inputs.reportCount;
  if (kind == InputKind::kFile) ++inputs.fileCount;
}

bool isSameDirectory(const std::string& path, const std::string& other) {
  std::error_code unseen;
  return !other.empty() && std::filesystem::equivalent(path, other, unseen);
}

// The regular file that a descriptor leads to, if it does: only such a file grows with what is read
// from it.
class WrittenFile {
 public:
  explicit WrittenFile(int descriptor)
      : isThere_(::fstat(descriptor, &status_) == 0 && S_ISREG(status_.st_mode)) {}

  bool is(const std::string& path) const {
    struct stat other {};
    return isThere_ && ::stat(path.c_str(), &other) == 0 && other.st_dev == status_.st_dev &&
           other.st_ino == status_.st_ino;
  }

 private:
  struct stat status_ {};
  bool isThere_;
};

}  // namespace

Inputs findInputs(const std::vector<std::string>& names, const WalkRules& rules,
                  const Written& written) {
  const WrittenFile output(written.output);
  const WrittenFile diagnostics(written.diagnostics);
  Inputs inputs;
  const WalkActions actions = {
      [&](const std::string& path) { return !isSameDirectory(path, written.directory); },
      [&](const std::string& path) {
        if (output.is(path) || diagnostics.is(path)) {
          add(inputs, path, InputKind::kPassedOver, kWritten);
        } else {
          add(inputs, path, InputKind::kFile);
        }
      },
      [&](const std::string& path) { add(inputs, path, InputKind::kPassedOver, kIrregular); },
      [&](const std::string& path, const std::error_code& reason) {
        add(inputs, path, InputKind::kRefused, reason.message());
      }};
  for (const std::string& name : names) {
    const FileKind kind = kindOf(name);
    if (kind == FileKind::kDirectory && rules.recursive) {
      if (isSameDirectory(name, written.directory)) {
        throw Failure("output directory " + written.directory + ": is also one to read");
      }
      walk(name, rules, actions);
    } else if (kind == FileKind::kOther) {
      add(inputs, name, InputKind::kRefused, kIrregular);
    } else if (diagnostics.is(name)) {
      throw Failure("diagnostics file " + name + ": is also one to read");
    } else if (output.is(name)) {
      add(inputs, name, InputKind::kRefused, kWritten);
    } else {
      add(inputs, name, InputKind::kFile);
    }
  }
  return inputs;
}

std::uint64_t regularFileBytes(const std::string& path) {
  struct stat status {};
  const bool isRegular = ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
  return isRegular ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace host
