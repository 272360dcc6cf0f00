#include "sources/ignore_rules.h"

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <system_error>

#include "sources/git_library.h"
#include "system/failure.h"
#include "system/io.h"
#include "system/text_parts.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// Empty for a file that cannot be read, as for git.
std::string contentsOf(const std::string& path, int flags) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | flags);
  if (file < 0) return {};
  std::string text;
  try {
    text = readToEnd(file, path);
  } catch (const Failure&) {
    text.clear();  // a directory, say
  }
  ::close(file);
  return text;
}

std::string takeBuffer(git_buf& buffer) {
  std::string text(buffer.ptr == nullptr ? "" : buffer.ptr);
  git().buf_dispose(&buffer);
  return text;
}

std::string lastReason() {
  const git_error* const error = git().error_last();
  return error == nullptr ? "unknown error" : error->message;
}

// The .git of the work tree that the directory lies in, as the user would name it if it is there.
std::string repositoryPath(const std::string& directory) {
  std::string own = directory + (directory.ends_with('/') ? ".git" : "/.git");
  std::error_code unseen;
  if (fs::exists(own, unseen)) return own;
  git_buf found{};
  if (git().repository_discover(&found, directory.c_str(), 0, nullptr) != 0) return own;
  std::string path = takeBuffer(found);
  if (path.ends_with('/')) path.pop_back();
  return path;
}

// False if no directory from the root to this one has a .git, so that libgit2 need not be loaded.
bool mayBeInRepository(const std::string& directory) {
  std::error_code error;
  const fs::path real = fs::canonical(directory, error);
  if (error) return true;
  fs::path above;
  for (const fs::path& component : real) {
    above /= component;
    if (fs::symlink_status(above / ".git", error).type() != fs::file_type::not_found) return true;
  }
  return false;
}

// The list of rules that is for every work tree of the user: the one that core.excludesFile names,
// or else the usual one. May be empty.
std::string globalList(git_config* config, const std::string& root) {
  git_buf path{};
  if (config != nullptr && git().config_get_path(&path, config, "core.excludesfile") == 0) {
    const std::string named = takeBuffer(path);
    return named.empty() || named.starts_with('/') ? named : root + named;
  }
  git_buf directories{};
  if (git().libgit2_opts(GIT_OPT_GET_SEARCH_PATH, GIT_CONFIG_LEVEL_XDG, &directories) != 0)
    return {};
  const std::string all = takeBuffer(directories);
  const std::string first = all.substr(0, all.find(GIT_PATH_LIST_SEPARATOR));
  return first.empty() ? first : first + "/ignore";
}

}  // namespace

struct WorkTree::Repository {
  Repository() { git(); }  // or the destructor could fail
  Repository(const Repository&) = delete;
  Repository& operator=(const Repository&) = delete;
  ~Repository() { git().repository_free(handle); }

  // Opens the repository of the directory or, with search, of one above it. Returns false if there
  // is none with a work tree, or with fault set.
  bool open(const std::string& directory, bool search, std::optional<UnusableRepository>& fault) {
    const unsigned flags = search ? 0 : static_cast<unsigned>(GIT_REPOSITORY_OPEN_NO_SEARCH);
    const int error = git().repository_open_ext(&handle, directory.c_str(), flags, nullptr);
    if (error == 0) return git().repository_workdir(handle) != nullptr;
    if (error != GIT_ENOTFOUND) {
      std::string reason = lastReason();  // which the next call may replace
      fault.emplace(UnusableRepository{repositoryPath(directory), std::move(reason)});
    }
    return false;
  }

  git_repository* handle = nullptr;
};

WorkTree::WorkTree(const Repository& repository)
    : root_(git().repository_workdir(repository.handle)) {
  git_config* config = nullptr;
  if (git().repository_config_snapshot(&config, repository.handle) != 0) config = nullptr;
  int ignoresCase = 0;
  if (config != nullptr) git().config_get_bool(&ignoresCase, config, "core.ignorecase");
  ignoresCase_ = ignoresCase != 0;
  const std::string own =
      std::string(git().repository_commondir(repository.handle)) + "/info/exclude";
  for (const std::string& list : {own, globalList(config, root_)}) {
    if (!list.empty()) commonLists_.emplace_back(contentsOf(list, 0), ignoresCase_);
  }
  git().config_free(config);
}

WorkTree::~WorkTree() = default;

std::unique_ptr<WorkTree> WorkTree::around(const std::string& directory, std::string& place,
                                           std::optional<UnusableRepository>& fault) {
  if (!mayBeInRepository(directory)) return nullptr;
  Repository repository;
  if (!repository.open(directory, true, fault)) return nullptr;
  std::unique_ptr<WorkTree> tree(new WorkTree(repository));
  std::error_code error;
  const fs::path real = fs::canonical(directory, error);
  const fs::path root = error ? fs::path() : fs::canonical(tree->root_, error);
  if (error) return nullptr;
  const fs::path relative = real.lexically_relative(root);
  if (relative == ".") return tree;
  for (const fs::path& component : relative) {
    if (component == "..") return nullptr;  // a work tree that is kept elsewhere
    tree->enter(place);
    place += (place.empty() ? "" : "/") + component.string();
    if (tree->isIgnored(place, true)) return nullptr;
  }
  return tree;
}

std::unique_ptr<WorkTree> WorkTree::at(const std::string& directory,
                                       std::optional<UnusableRepository>& fault) {
  Repository repository;
  if (!repository.open(directory, false, fault)) return nullptr;
  return std::unique_ptr<WorkTree>(new WorkTree(repository));
}

void WorkTree::enter(const std::string& place) {
  const std::string path = place.empty() ? place : place + "/";
  // git reads no .gitignore file through a link.
  directories_.push_back(
      {path.size(), IgnoreList(contentsOf(root_ + path + ".gitignore", O_NOFOLLOW), ignoresCase_)});
}

bool WorkTree::isIgnored(std::string_view place, bool isDirectory) const {
  const std::string_view name = place.substr(place.rfind('/') + 1);
  if (name == ".git") return true;  // which needs no rule
  for (auto rules = directories_.rbegin(); rules != directories_.rend(); ++rules) {
    if (const auto verdict = rules->list.verdictOn(place.substr(rules->pathBytes), isDirectory)) {
      return *verdict;
    }
  }
  for (const IgnoreList& list : commonLists_) {
    if (const auto verdict = list.verdictOn(place, isDirectory)) return *verdict;
  }
  return false;
}

}  // namespace host
