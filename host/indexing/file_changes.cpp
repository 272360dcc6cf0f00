#include "indexing/file_changes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <unordered_set>

#include "index/content_hash.h"
#include "index/index_file.h"
#include "records/status_words.h"
#include "sources/binary_files.h"
#include "system/failure.h"
#include "system/file_times.h"
#include "system/io.h"

namespace host::indexing {
namespace {

using index::KnownFile;

// More than the clocks of file systems leave out.
constexpr std::int64_t kClockTick = 2'000'000'000;

enum class Change { kNone, kTimes, kBytes };

// An empty text, which no hash is, if the file cannot be read.
std::string hashOf(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return {};
  std::string hash;
  try {
    hash = index::contentHash(readToEnd(file, path));
  } catch (const Failure&) {
    hash.clear();
  }
  ::close(file);
  return hash;
}

class ChangeFinder {
 public:
  ChangeFinder(KnownFiles known, const RunOptions& options)
      : known_(std::move(known)), options_(options) {
    byPath_.reserve(known_.files.size());
    for (std::size_t place = 0; place < known_.files.size(); ++place) {
      byPath_.emplace(known_.files[place].path, place);
    }
    isKept_.resize(known_.files.size());
  }

  FileChanges find(Inputs found) {
    changes_.inputs.skippedCount = found.skippedCount;
    for (Input& input : found.all) take(input);
    if (!options_.walkRules.binary) leaveOutBinaryFiles();
    for (Input& input : changes_.inputs.all) {
      input.place = changes_.inputs.reportCount;
      if (input.kind != InputKind::kPassedOver) ++changes_.inputs.reportCount;
      if (input.kind == InputKind::kFile) ++changes_.inputs.fileCount;
    }
    // By what is kept in the end: a known file may have become binary.
    for (const Input& input : changes_.inputs.all) keep(input);
    for (std::size_t place = 0; place < known_.files.size(); ++place) {
      KnownFile& file = known_.files[place];
      if (!isKept_[place]) changes_.gone.push_back(std::move(file));
    }
    return std::move(changes_);
  }

 private:
  void take(Input& input) {
    if (input.kind != InputKind::kPassedOver && !seen_.insert(input.path).second) return;
    const auto entry = byPath_.find(input.path);
    if (input.kind == InputKind::kFile && entry != byPath_.end()) {
      const KnownFile& file = known_.files[entry->second];
      FileTimes times;
      const Change change = changeOf(file, times);
      if (change != Change::kBytes) {
        isKept_[entry->second] = true;
        ++changes_.inputs.unchangedCount;
        if (change == Change::kTimes) changes_.touched.emplace_back(file.id, times);
        return;
      }
    }
    changes_.inputs.all.push_back(std::move(input));
  }

  Change changeOf(const KnownFile& file, FileTimes& times) const {
    struct stat status {};
    const bool wasRead = file.status == kAnsweredWord || file.status == kEmptyWord;
    if (!wasRead || ::stat(file.path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
      return Change::kBytes;
    }
    const std::uint64_t limit = options_.limits.sourceBytes;
    const bool isTooLarge = limit != 0 && static_cast<std::uint64_t>(status.st_size) > limit;
    if (isTooLarge || status.st_size != file.size || !file.times || file.hash.empty()) {
      return Change::kBytes;
    }
    times = timesOf(status);
    const bool isSame = times == *file.times;
    const bool isOld = std::max(times.modified, times.changed) < known_.writtenAt - kClockTick;
    if (isSame && isOld) return Change::kNone;
    if (hashOf(file.path) != file.hash) return Change::kBytes;
    return isSame ? Change::kNone : Change::kTimes;
  }

  void leaveOutBinaryFiles() {
    std::vector<const std::string*> paths;
    for (const Input& input : changes_.inputs.all) {
      if (input.isFound) paths.push_back(&input.path);
    }
    const std::vector<bool> marks = areBinary(paths);
    std::size_t next = 0;
    const std::size_t before = changes_.inputs.all.size();
    std::erase_if(changes_.inputs.all,
                  [&](const Input& input) { return input.isFound && marks[next++]; });
    changes_.inputs.skippedCount += before - changes_.inputs.all.size();
  }

  void keep(const Input& input) {
    if (input.kind == InputKind::kPassedOver) return;
    const auto entry = byPath_.find(input.path);
    if (entry == byPath_.end()) return;
    isKept_[entry->second] = true;
    changes_.ids.emplace(input.path, known_.files[entry->second].id);
  }

  KnownFiles known_;
  const RunOptions& options_;
  std::unordered_map<std::string, std::size_t> byPath_;
  std::vector<bool> isKept_;
  std::unordered_set<std::string> seen_;
  FileChanges changes_;
};

}  // namespace

FileChanges findChanges(KnownFiles known, Inputs found, const RunOptions& options) {
  return ChangeFinder(std::move(known), options).find(std::move(found));
}

Inputs inputsFor(const std::vector<std::string>& names, const WalkRules& rules,
                 const std::string& index) {
  WalkRules all = rules;
  all.binary = true;
  Inputs inputs = findInputs(
      names, all,
      {.file = {}, .output = -1, .diagnosticsFile = {}, .diagnostics = -1, .directory = {}});
  const index::OwnFiles own(index);
  std::erase_if(inputs.all, [&own](const Input& input) { return own.hold(input.path); });
  return inputs;
}

}  // namespace host::indexing
