// Finds files without opening any of them: opening a FIFO waits for a writer, and opening a device
// may do anything.
#pragma once

#include <functional>
#include <string>
#include <system_error>

namespace host {

enum class FileKind { kRegular, kDirectory, kOther };

// What the path leads to. One that leads nowhere, or cannot be looked at, counts as a regular file:
// opening it fails, and with the better reason.
FileKind kindOf(const std::string& path);

struct WalkRules {
  bool recursive = false;    // walk directories that are named
  bool hidden = false;       // take entries with a leading dot
  bool nodeModules = false;  // take entries called node_modules
};

// What a walk does with what it finds. Paths begin with the directory as it was given.
struct WalkActions {
  std::function<bool(const std::string& path)> entersDirectory;  // whether to go into it
  std::function<void(const std::string& path)> regularFile;
  std::function<void(const std::string& path)> otherFile;  // also a link that leads nowhere
  std::function<void(const std::string& path, const std::error_code& reason)> unreadableDirectory;
};

// Finds what is below the directory, in byte order of the paths. Of links, those to directories are
// passed over, so that no walk is endless; others count as what they lead to.
void walk(const std::string& directory, const WalkRules& rules, const WalkActions& actions);

}  // namespace host
