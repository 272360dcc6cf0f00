// Answers as files of their own, in one directory.
#pragma once

#include <string>
#include <string_view>

namespace host {

class AnswerDirectory {
 public:
  // Answer files have the extension. Throws Failure when the path is no directory that files can be
  // made in.
  AnswerDirectory(const std::string& path, std::string_view extension);
  AnswerDirectory(const AnswerDirectory&) = delete;
  AnswerDirectory& operator=(const AnswerDirectory&) = delete;
  ~AnswerDirectory();

  // Makes the answer file of the source file, in place of one from before. It appears complete or,
  // with a Failure, not at all. Temporary files have names with a leading dot, as no answer has.
  void write(std::string_view sourceFile, std::string_view answer) const;

  // Removes what a run before may have left for the source file.
  void remove(std::string_view sourceFile) const;

 private:
  std::string path_;
  std::string extension_;
  int directory_;
};

}  // namespace host
