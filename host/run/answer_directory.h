// Answers as files of their own, in one directory.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace host {

// Whether the directory takes names that differ in case for one, as those of macOS do.
bool foldsCase(int directory);

class AnswerDirectory {
 public:
  // Answer files have the extension. Removes temporary files of processes that are gone. Throws
  // Failure if the path is not a directory that files can be made in.
  AnswerDirectory(const std::string& path, std::string_view extension,
                  bool (*probe)(int directory) = foldsCase);
  AnswerDirectory(const AnswerDirectory&) = delete;
  AnswerDirectory& operator=(const AnswerDirectory&) = delete;
  ~AnswerDirectory();

  // To be called before write and remove. Where the directory folds case, the answer file may be
  // that of another source file of this run: then returns that one.
  std::optional<std::string> otherOwner(std::string_view sourceFile);

  // Makes the answer file of the source file, in place of one from before. It appears complete or,
  // with a Failure, not at all. Temporary files have names with a leading dot, as no answer has.
  void write(std::string_view sourceFile, std::string_view answer) const;

  // Removes what a run before may have left for the source file.
  void remove(std::string_view sourceFile) const;

 private:
  struct Owner {
    std::string answerName;
    std::string sourceFile;
  };

  std::string path_;
  std::string extension_;
  int directory_;
  bool foldsCase_ = false;
  std::unordered_map<std::string, Owner> owners_;  // by folded name, where that is needed
};

}  // namespace host
