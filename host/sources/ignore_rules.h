// What git ignores. libgit2 finds the repository and its settings; the rules are read and matched
// here. Of a repository nothing else is read, so one that another user owns is as good as one's
// own.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sources/ignore_list.h"

namespace host {

// A repository whose rules cannot be known.
struct UnusableRepository {
  std::string path;
  std::string reason;
};

// A git work tree. All paths are relative to its root, without a slash at either end.
class WorkTree {
 public:
  // The work tree that the directory lies in, with the rules of all directories above that one;
  // null if there is none, if it ignores the directory, or with fault set. place is set to the
  // directory's path in it.
  static std::unique_ptr<WorkTree> around(const std::string& directory, std::string& place,
                                          std::optional<UnusableRepository>& fault);

  // The work tree whose root the directory is; null if it is none, or with fault set.
  static std::unique_ptr<WorkTree> at(const std::string& directory,
                                      std::optional<UnusableRepository>& fault);

  WorkTree(const WorkTree&) = delete;
  WorkTree& operator=(const WorkTree&) = delete;
  ~WorkTree();

  // Adds the rules of a directory's .gitignore file, until leave. Directories are entered from the
  // outermost inwards, those without such a file may be left out.
  void enter(const std::string& place);
  void leave() { directories_.pop_back(); }

  // Whether git ignores the entry, given that it does not ignore the directory that holds it.
  bool isIgnored(std::string_view place, bool isDirectory) const;

 private:
  struct Repository;

  struct DirectoryRules {
    std::size_t pathBytes;  // of the directory, with the slash behind it
    IgnoreList list;
  };

  explicit WorkTree(const Repository& repository);

  std::string root_;  // with a slash at its end
  bool ignoresCase_;
  std::vector<IgnoreList> commonLists_;  // the strongest first
  std::vector<DirectoryRules> directories_;
};

}  // namespace host
