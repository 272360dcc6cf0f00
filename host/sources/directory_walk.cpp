#include "sources/directory_walk.h"

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

namespace host {
namespace {

namespace fs = std::filesystem;

struct Entry {
  std::string name;  // a directory's with a slash behind it, which is its place in the byte order
  FileKind kind;
};

bool isWanted(const std::string& name, const WalkRules& rules) {
  if (name.front() == '.') return rules.hidden;
  return rules.nodeModules || name != "node_modules";
}

// Asks the entry and not its path: the listing has told the kind already, also of what is too deep
// for a path or in a directory that may only be listed.
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

// The wanted entries, sorted; after an error, those before it.
std::vector<Entry> entriesOf(const std::string& directory, const WalkRules& rules,
                             std::error_code& error) {
  std::vector<Entry> entries;
  for (fs::directory_iterator next(directory, error); !error && next != fs::directory_iterator();
       next.increment(error)) {
    std::string name = next->path().filename().string();
    if (isWanted(name, rules)) appendEntry(entries, *next, std::move(name));
  }
  std::sort(entries.begin(), entries.end(),
            [](const Entry& left, const Entry& right) { return left.name < right.name; });
  return entries;
}

}  // namespace

FileKind kindOf(const std::string& path) {
  std::error_code unseen;
  const fs::file_status status = fs::status(path, unseen);
  if (fs::is_directory(status)) return FileKind::kDirectory;
  const bool isOther = fs::status_known(status) && fs::is_other(status);
  return isOther ? FileKind::kOther : FileKind::kRegular;
}

// The length that the system allows for a path bounds the depth.
void walk(const std::string& directory, const WalkRules& rules, const WalkActions& actions) {
  const std::string opening = directory.ends_with('/') ? directory : directory + "/";
  std::error_code error;
  for (const Entry& entry : entriesOf(directory, rules, error)) {
    std::string path = opening + entry.name;
    if (entry.kind == FileKind::kDirectory) {
      path.pop_back();
      if (actions.entersDirectory(path)) walk(path, rules, actions);
    } else if (entry.kind == FileKind::kRegular) {
      actions.regularFile(path);
    } else {
      actions.otherFile(path);
    }
  }
  if (error) actions.unreadableDirectory(directory, error);
}

}  // namespace host
