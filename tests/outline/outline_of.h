// The outline of a text as a file of the given name, from the module's records.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

#include "outline/outline.h"
#include "plugin/plugin_api.h"
#include "support/redirected.h"
#include "support/temp_dir.h"

struct Outlined {
  std::string answer;
  std::vector<host::outline::Item> items;
};

inline Outlined outlineOf(const std::string& name, std::string_view text) {
  const support::TempDir directory;
  const std::string path = directory.write(name, text);
  Outlined outlined;
  {
    const support::Redirected output(STDOUT_FILENO, "/dev/null", O_WRONLY);
    const support::Redirected errors(STDERR_FILENO, "/dev/null", O_WRONLY);
    outlined.answer = ParseJS(path.c_str(), nullptr);
  }
  outlined.items = host::outline::makeOutline(text, outlined.answer);
  return outlined;
}
