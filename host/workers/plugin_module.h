// The plug-in module, opened at run time as any host would open it.
#pragma once

#include <optional>
#include <string>

#include "plugin/plugin_api.h"

namespace host {

// The module's file that belongs to this program: beside the executable, as in a build tree, or
// else in ../lib/quorl-js seen from there, as installed. Throws Failure when there is neither.
std::string findPlugin();

// The file that the user names, or else that one.
std::string pluginPath(const std::optional<std::string>& named);

// The module's entry points, from its loading on to CleanupJS. The module itself stays loaded.
class PluginModule {
 public:
  // A path without a slash is a file of the current directory, as other file names are, and not
  // one for the library search path. Throws Failure when the file is no module or lacks an entry
  // point.
  explicit PluginModule(const std::string& path);
  PluginModule(const PluginModule&) = delete;
  PluginModule& operator=(const PluginModule&) = delete;
  ~PluginModule() { cleanupJs_(); }

  const char* parse(const std::string& path, const std::string& defines) const {
    return parseJs_(path.c_str(), defines.c_str());
  }
  const char* info() const { return info_(); }

 private:
  decltype(&ParseJS) parseJs_;
  decltype(&CleanupJS) cleanupJs_;
  decltype(&Info) info_;
};

}  // namespace host
