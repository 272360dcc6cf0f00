#include "sources/directory_walk.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "sources/globs.h"
#include "sources/ignore_rules.h"

namespace host {
namespace {

namespace fs = std::filesystem;

struct Entry {
  std::string name;  // a directory's with a slash at its end, which is its place in the byte order
  FileKind kind;
};

struct Listing {
  std::vector<Entry> entries;  // sorted; after an error, those before it
  std::error_code error;
  bool hasRepository = false;
  bool hasIgnoreFile = false;
};

// Uses the kind from the listing: stat fails for paths that are too long, and in directories that
// may only be listed.
void appendEntry(std::vector<Entry>& entries, const fs::directory_entry& entry, std::string name) {
  std::error_code unseen;
  const bool isLink = entry.is_symlink(unseen);
  if (entry.is_directory(unseen)) {  // or a link to one
    if (!isLink) entries.push_back({std::move(name) + "/", FileKind::kDirectory});
  } else {
    const bool isOther = !entry.is_regular_file(unseen) && (isLink || !unseen);
    entries.push_back({std::move(name), isOther ? FileKind::kOther : FileKind::kRegular});
  }
}

// Where a walk is, for those who make the rules of what it skips.
struct Place {
  WorkTree* tree = nullptr;  // that the directory lies in, or null
  std::string inTree;        // the directory's path in it
  bool isIncluded = false;   // by a glob that matches the directory, or one above it
};

class Walk {
 public:
  Walk(const std::string& directory, const WalkRules& rules, const WalkActions& actions)
      : rules_(rules),
        actions_(actions),
        included_(rules.included),
        excluded_(rules.excluded),
        opening_(directory.ends_with('/') ? directory : directory + "/") {}

  void run(const std::string& directory) {
    std::unique_ptr<WorkTree> tree;
    Place place;
    std::optional<UnusableRepository> fault;
    if (!rules_.ignored) tree = WorkTree::around(directory, place.inTree, fault);
    if (fault) actions_.unusableRepository(fault->path, fault->reason);
    place.tree = tree.get();
    visit(directory, opening_, place);
  }

 private:
  // The length that the system allows for a path bounds the depth. opening is the directory with a
  // slash at its end.
  void visit(const std::string& directory, const std::string& opening, Place place) {
    const Listing listing = list(directory);
    std::unique_ptr<WorkTree> own;
    if (listing.hasRepository && !rules_.ignored && opening != opening_) {
      std::optional<UnusableRepository> fault;
      own = WorkTree::at(directory, fault);
      if (fault) actions_.unusableRepository(fault->path, fault->reason);
      if (own || fault) place = {own.get(), "", place.isIncluded};
    }
    const bool hasRules = place.tree != nullptr && listing.hasIgnoreFile;
    if (hasRules) place.tree->enter(place.inTree);
    std::string inTree = place.inTree.empty() ? "" : place.inTree + "/";
    const std::size_t bytes = inTree.size();
    for (const Entry& entry : listing.entries) {
      if (place.tree != nullptr) inTree.replace(bytes, std::string::npos, entry.name);
      take(entry, opening, {place.tree, inTree, place.isIncluded});
    }
    if (hasRules) place.tree->leave();
    if (listing.error) actions_.unreadableDirectory(directory, listing.error);
  }

  Listing list(const std::string& directory) const {
    Listing result;
    for (fs::directory_iterator next(directory, result.error);
         !result.error && next != fs::directory_iterator(); next.increment(result.error)) {
      std::string name = next->path().filename().string();
      if (name == ".git") result.hasRepository = true;
      if (name == ".gitignore") result.hasIgnoreFile = true;
      if (isWanted(name)) appendEntry(result.entries, *next, std::move(name));
    }
    std::sort(result.entries.begin(), result.entries.end(),
              [](const Entry& left, const Entry& right) { return left.name < right.name; });
    return result;
  }

  bool isWanted(const std::string& name) const {
    if (name.front() == '.') return rules_.hidden;
    return rules_.nodeModules || name != "node_modules";
  }

  // The place is the entry's own, with a slash behind a directory.
  void take(const Entry& entry, const std::string& opening, Place place) {
    const bool isDirectory = entry.kind == FileKind::kDirectory;
    const std::string path = opening + entry.name;
    const std::string_view plainPath =
        std::string_view(path).substr(0, path.size() - (isDirectory ? 1 : 0));
    const std::string_view relative = plainPath.substr(opening_.size());
    if (excluded_.match(relative, isDirectory)) return;
    place.isIncluded =
        place.isIncluded || included_.areNone() || included_.match(relative, isDirectory);
    if (!isDirectory && !place.isIncluded) return;
    if (isDirectory && place.tree != nullptr) place.inTree.pop_back();
    if (place.tree != nullptr && place.tree->isIgnored(place.inTree, isDirectory)) {
      actions_.ignoredEntry();
    } else if (isDirectory) {
      const std::string directory(plainPath);
      if (actions_.entersDirectory(directory)) {
        visit(directory, path, std::move(place));
      }
    } else if (entry.kind == FileKind::kRegular) {
      actions_.regularFile(path);
    } else {
      actions_.otherFile(path);
    }
  }

  const WalkRules& rules_;
  const WalkActions& actions_;
  Globs included_;
  Globs excluded_;
  std::string opening_;  // the directory that was given, with a slash at its end
};

}  // namespace

FileKind kindOf(const std::string& path) {
  std::error_code unseen;
  const fs::file_status status = fs::status(path, unseen);
  if (fs::is_directory(status)) return FileKind::kDirectory;
  const bool isOther = fs::status_known(status) && fs::is_other(status);
  return isOther ? FileKind::kOther : FileKind::kRegular;
}

void walk(const std::string& directory, const WalkRules& rules, const WalkActions& actions) {
  Walk(directory, rules, actions).run(directory);
}

}  // namespace host
