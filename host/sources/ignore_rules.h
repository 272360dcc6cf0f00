// What git ignores, asked of libgit2. Of a repository nothing but its ignore rules is read, so one
// that another user owns is as good as one's own.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace host {

class NamePatterns;

// A git work tree. All paths are relative to its root, without a slash at either end.
class WorkTree {
 public:
  // The work tree that the directory lies in; null if there is none or if it ignores the directory.
  // place is set to the directory's path in it.
  static std::unique_ptr<WorkTree> around(const std::string& directory, std::string& place);

  // The work tree whose root the directory is, or null.
  static std::unique_ptr<WorkTree> at(const std::string& directory);

  WorkTree(const WorkTree&) = delete;
  WorkTree& operator=(const WorkTree&) = delete;
  ~WorkTree();

  // Reads what the .gitignore file of a directory may match. It has to be called for each directory
  // with such a file before isIgnored is for what lies below it.
  void enter(const std::string& place);

  // Whether a rule may be for all that lies right in the directory, whatever it is called.
  bool mayIgnoreAllOf(std::string_view place) const;

  // Whether git ignores the entry. Unless mayBeAny, which mayIgnoreAllOf tells of its directory, a
  // look at its name may be enough.
  bool isIgnored(const std::string& place, bool isDirectory, bool mayBeAny) const;

 private:
  class Library;
  struct Repository;

  explicit WorkTree(std::unique_ptr<Repository> repository);

  std::unique_ptr<Repository> repository_;
  std::unique_ptr<NamePatterns> patterns_;
};

}  // namespace host
