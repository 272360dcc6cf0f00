#include "sources/ignore_rules.h"

#include <git2.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>

#include "sources/name_patterns.h"
#include "system/text_parts.h"

namespace host {
namespace {

namespace fs = std::filesystem;

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string takeBuffer(git_buf& buffer) {
  std::string text(buffer.ptr == nullptr ? "" : buffer.ptr);
  git_buf_dispose(&buffer);
  return text;
}

// The lists of rules that are for every work tree of the user: the one that core.excludesFile
// names, or else the usual ones.
std::vector<std::string> globalLists(git_repository* repository) {
  git_config* config = nullptr;
  if (git_repository_config_snapshot(&config, repository) == 0) {
    git_buf path{};
    const bool isNamed = git_config_get_path(&path, config, "core.excludesfile") == 0;
    git_config_free(config);
    if (isNamed) return {takeBuffer(path)};
  }
  git_buf directories{};
  if (git_libgit2_opts(GIT_OPT_GET_SEARCH_PATH, GIT_CONFIG_LEVEL_XDG, &directories) != 0) return {};
  const std::string all = takeBuffer(directories);
  std::vector<std::string> lists;
  for (const std::string_view directory : partsOf(all, GIT_PATH_LIST_SEPARATOR)) {
    lists.push_back(std::string(directory) + "/ignore");
  }
  return lists;
}

}  // namespace

// libgit2 counts how often it was set up.
class WorkTree::Library {
 public:
  Library() {
    git_libgit2_init();
    git_libgit2_opts(GIT_OPT_SET_OWNER_VALIDATION, 0);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() { git_libgit2_shutdown(); }
};

struct WorkTree::Repository {
  Repository() = default;
  Repository(const Repository&) = delete;
  Repository& operator=(const Repository&) = delete;
  ~Repository() { git_repository_free(handle); }

  // Opens the repository of a work tree. Null if the directory, or with search one above it, is
  // none.
  static std::unique_ptr<Repository> open(const std::string& directory, bool search) {
    auto repository = std::make_unique<Repository>();
    const unsigned flags = search ? 0 : static_cast<unsigned>(GIT_REPOSITORY_OPEN_NO_SEARCH);
    const bool isOpen =
        git_repository_open_ext(&repository->handle, directory.c_str(), flags, nullptr) == 0 &&
        git_repository_workdir(repository->handle) != nullptr;
    return isOpen ? std::move(repository) : nullptr;
  }

  std::string root() const { return git_repository_workdir(handle); }  // with a slash at its end

  Library library;
  git_repository* handle = nullptr;
};

WorkTree::WorkTree(std::unique_ptr<Repository> repository)
    : repository_(std::move(repository)), patterns_(std::make_unique<NamePatterns>()) {
  const std::string common = git_repository_commondir(repository_->handle);
  patterns_->add(contentsOf(common + "/info/exclude"));
  for (const std::string& list : globalLists(repository_->handle)) {
    patterns_->add(contentsOf(list));
  }
  patterns_->add(".git\n");  // which libgit2 ignores without a rule
}

WorkTree::~WorkTree() = default;

std::unique_ptr<WorkTree> WorkTree::around(const std::string& directory, std::string& place) {
  std::unique_ptr<Repository> repository = Repository::open(directory, true);
  if (!repository) return nullptr;
  std::error_code error;
  const fs::path real = fs::canonical(directory, error);
  const fs::path root = error ? fs::path() : fs::canonical(repository->root(), error);
  if (error) return nullptr;
  const fs::path relative = real.lexically_relative(root);
  place = relative == "." ? "" : relative.string();
  std::unique_ptr<WorkTree> tree(new WorkTree(std::move(repository)));
  if (place.empty()) return tree;
  std::string above;
  tree->enter(above);
  for (const fs::path& component : relative) {
    above += (above.empty() ? "" : "/") + component.string();
    if (above != place) tree->enter(above);
  }
  return tree->isIgnored(place, true, true) ? nullptr : std::move(tree);
}

std::unique_ptr<WorkTree> WorkTree::at(const std::string& directory) {
  std::unique_ptr<Repository> repository = Repository::open(directory, false);
  if (!repository) return nullptr;
  return std::unique_ptr<WorkTree>(new WorkTree(std::move(repository)));
}

void WorkTree::enter(const std::string& place) {
  patterns_->add(contentsOf(repository_->root() + place + "/.gitignore"));
}

bool WorkTree::mayIgnoreAllOf(std::string_view place) const {
  return patterns_->mayMatchAllIn(place);
}

bool WorkTree::isIgnored(const std::string& place, bool isDirectory, bool mayBeAny) const {
  if (!mayBeAny && !patterns_->mayMatch(std::string_view(place).substr(place.rfind('/') + 1))) {
    return false;
  }
  int isIgnored = 0;
  const std::string path = isDirectory ? place + "/" : place;
  return git_ignore_path_is_ignored(&isIgnored, repository_->handle, path.c_str()) == 0 &&
         isIgnored != 0;
}

}  // namespace host
