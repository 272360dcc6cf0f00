// Finds files without opening any of them: to open a FIFO is to wait for a writer, and to open a
// device may do anything.
#pragma once

#include <functional>
#include <string>
#include <system_error>
#include <vector>

namespace host {

enum class FileKind { kRegular, kDirectory, kOther };

// What the path leads to. One that leads nowhere, or that cannot be asked for, counts as a regular
// file: opening it fails, and with the better reason.
FileKind kindOf(const std::string& path);

struct WalkRules {
  bool recursive = false;    // walk directories that are named
  bool hidden = false;       // include entries with a leading dot
  bool nodeModules = false;  // include entries named node_modules
  bool ignored = false;      // include what git ignores
  bool binary = false;       // include files that hold NUL bytes; see isBinary
  std::vector<std::string>
      included;  // globs that a file or a directory above it has to match; none for all
  std::vector<std::string> excluded;  // globs that no file or directory may match
};

// What a walk does with what it finds. Paths begin with the directory as it was given.
struct WalkActions {
  std::function<bool(const std::string& path)> entersDirectory;  // whether to enter it
  std::function<void(const std::string& path)> regularFile;
  std::function<void(const std::string& path)> otherFile;  // also a link that leads nowhere
  std::function<void(const std::string& path, const std::error_code& reason)> unreadableDirectory;
  std::function<void(const std::string& path, const std::string& reason)> unusableRepository;
  std::function<void()> ignoredEntry;  // which git ignores
};

// Finds what is below the directory, in byte order of the paths. Links to directories are skipped,
// so that no walk is endless; other links count as what they lead to.
void walk(const std::string& directory, const WalkRules& rules, const WalkActions& actions);

}  // namespace host
