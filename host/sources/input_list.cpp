#include "sources/input_list.h"

#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>

#include "sources/binary_files.h"
#include "system/failure.h"

namespace host {
namespace {

constexpr const char* kWritten = "is written by this run, skipped";

bool isBrokenLink(const std::string& path) {
  std::error_code unseen;
  return std::filesystem::is_symlink(path, unseen) && !std::filesystem::exists(path, unseen);
}

bool isSameDirectory(const std::string& path, const std::string& other) {
  std::error_code unseen;
  return !other.empty() && std::filesystem::equivalent(path, other, unseen);
}

// The regular file that a descriptor or path leads to, if it does: only such a file grows with what
// is read from it.
class WrittenFile {
 public:
  explicit WrittenFile(int descriptor)
      : isThere_(::fstat(descriptor, &status_) == 0 && S_ISREG(status_.st_mode)) {}
  explicit WrittenFile(const std::string& path)
      : isThere_(::stat(path.c_str(), &status_) == 0 && S_ISREG(status_.st_mode)) {}

  bool is(const std::string& path) const {
    struct stat other {};
    return isThere_ && ::stat(path.c_str(), &other) == 0 && other.st_dev == status_.st_dev &&
           other.st_ino == status_.st_ino;
  }

 private:
  struct stat status_ {};
  bool isThere_;
};

class InputFinder {
 public:
  InputFinder(const WalkRules& rules, const Written& written)
      : rules_(rules),
        written_(written),
        output_(written.file ? WrittenFile(*written.file) : WrittenFile(written.output)),
        diagnostics_(written.diagnosticsFile ? WrittenFile(*written.diagnosticsFile)
                                             : WrittenFile(written.diagnostics)) {}

  void take(const std::string& name) {
    const FileKind kind = kindOf(name);
    if (kind == FileKind::kDirectory && rules_.recursive) {
      if (isSameDirectory(name, written_.directory)) {
        throw Failure("output directory " + written_.directory + ": is also an input");
      }
      hasWalked_ = true;
      walk(name, rules_, actions_);
    } else if (kind == FileKind::kOther) {
      add(name, InputKind::kRefused, kIrregular);
    } else if (diagnostics_.is(name)) {
      throw Failure("diagnostics file " + name + ": is also an input");
    } else if (output_.is(name)) {
      // What was there is replaced by -o; by a shell's ">" it is gone already.
      if (written_.file) throw Failure("output file " + name + ": is also an input");
      add(name, InputKind::kRefused, kWritten);
    } else {
      add(name, InputKind::kFile);
    }
  }

  Inputs finish() {
    if (hasWalked_ && !rules_.included.empty() && !hasFound_) {
      add("--include", InputKind::kPassedOver, "no file matched");
    }
    if (!rules_.binary) leaveOutBinaryFiles();
    for (Input& input : inputs_.all) {
      input.place = inputs_.reportCount;
      if (input.kind != InputKind::kPassedOver) ++inputs_.reportCount;
      if (input.kind == InputKind::kFile) ++inputs_.fileCount;
    }
    return std::move(inputs_);
  }

 private:
  void add(const std::string& path, InputKind kind, std::string reason = {}) {
    inputs_.all.push_back({.path = path, .kind = kind, .reason = std::move(reason)});
  }

  void takeFound(const std::string& path) {
    hasFound_ = true;
    if (output_.is(path) || diagnostics_.is(path)) {
      add(path, InputKind::kPassedOver, kWritten);
    } else {
      found_.push_back(inputs_.all.size());
      add(path, InputKind::kFile);
      inputs_.all.back().isFound = true;
    }
  }

  void leaveOutBinaryFiles() {
    std::vector<const std::string*> paths;
    for (const std::size_t index : found_) paths.push_back(&inputs_.all[index].path);
    const std::vector<bool> marks = areBinary(paths);
    std::vector<Input> kept;
    auto next = found_.begin();
    for (std::size_t index = 0; index < inputs_.all.size(); ++index) {
      const bool isFound = next != found_.end() && *next == index;
      if (isFound && marks[static_cast<std::size_t>(next - found_.begin())]) {
        ++inputs_.skippedCount;
      } else {
        kept.push_back(std::move(inputs_.all[index]));
      }
      if (isFound) ++next;
    }
    inputs_.all = std::move(kept);
  }

  const WalkRules& rules_;
  const Written& written_;
  const WrittenFile output_;
  const WrittenFile diagnostics_;
  Inputs inputs_;
  bool hasWalked_ = false;
  bool hasFound_ = false;           // a file that --include selects, if it is given
  std::vector<std::size_t> found_;  // the indices of regular files that were met in walks
  const WalkActions actions_ = {
      [this](const std::string& path) { return !isSameDirectory(path, written_.directory); },
      [this](const std::string& path) { takeFound(path); },
      [this](const std::string& path) {
        add(path, InputKind::kPassedOver, isBrokenLink(path) ? "broken link, skipped" : kIrregular);
      },
      [this](const std::string& path, const std::error_code& reason) {
        add(path, InputKind::kRefused, reason.message());
      },
      [this](const std::string& path, const std::string& reason) {
        add(path, InputKind::kPassedOver,
            "cannot read (" + reason + "); ignore rules are not applied");
      },
      [this] { ++inputs_.skippedCount; }};
};

}  // namespace

Inputs findInputs(const std::vector<std::string>& names, const WalkRules& rules,
                  const Written& written) {
  InputFinder finder(rules, written);
  for (const std::string& name : names) finder.take(name);
  return finder.finish();
}

Inputs inputCalled(const std::string& name, const std::string& copy) {
  Inputs inputs;
  inputs.all.push_back({.path = name, .kind = InputKind::kFile, .reason = {}, .copy = copy});
  inputs.reportCount = 1;
  inputs.fileCount = 1;
  return inputs;
}

std::uint64_t regularFileBytes(const std::string& path) {
  struct stat status {};
  const bool isRegular = ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
  return isRegular ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace host
