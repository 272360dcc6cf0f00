// The file of an index on disk, and how it is replaced.
//
// A writer holds a lock on INDEX.lock, builds INDEX.tmp and renames it. So a reader, which takes no
// lock, finds the old index or the new one, whole, and whatever ends the writer, the next one
// cleans up what it left.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace host::index {

enum class IfLocked { kWait, kFail };

class IndexFile {
 public:
  // Takes the lock; what an earlier writer left is gone then. Throws Failure if it cannot be had.
  // name is the path as the user gave it.
  IndexFile(const std::string& name, IfLocked ifLocked);
  IndexFile(const IndexFile&) = delete;
  IndexFile& operator=(const IndexFile&) = delete;
  ~IndexFile();  // without replace, the index is as it was

  const std::string& name() const { return name_; }
  std::string path() const { return folder_ + "/" + file_; }  // absolute, and no link
  std::string temporaryPath() const { return path() + ".tmp"; }

  // Whether there is an index to read.
  bool exists() const;

  // Begins the new file, empty or with the bytes of the old one. It is removed by a signal that
  // ends the program.
  void begin(bool isCopy);

  // Puts the new file, which nobody has open any more, in the place of the old one, and waits until
  // it is on disk.
  void replace();

 private:
  void lock(IfLocked ifLocked);
  bool tryLock(IfLocked ifLocked);
  [[noreturn]] void failAsLocked() const;
  void drop();

  std::string name_;
  std::string folder_;
  std::string file_;
  int directory_ = -1;
  int lock_ = -1;
  bool isBegun_ = false;
};

// The file of an index and those beside it that its writer makes.
class OwnFiles {
 public:
  explicit OwnFiles(const std::string& index);

  // Whether the path is that of one of them.
  bool hold(const std::string& path) const;

 private:
  std::string folder_;
  std::string name_;
};

}  // namespace host::index
