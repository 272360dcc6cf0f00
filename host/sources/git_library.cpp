#include "sources/git_library.h"

#include <array>
#include "system/runtime_library.h"

namespace host {
namespace {

// libgit2 refuses a repository with an extension that it does not know. None of these changes
// where rules are or what they mean.
constexpr std::array kExtensions = {
    "noop",       "objectformat",      "partialclone",  "preciousobjects",
    "refstorage", "relativeworktrees", "worktreeconfig"};

GitLibrary load() {
  const RuntimeLibrary library(QUORL_LIBGIT2);
  GitLibrary functions{};
  library.find("git_buf_dispose", functions.buf_dispose);
  library.find("git_config_free", functions.config_free);
  library.find("git_config_get_bool", functions.config_get_bool);
  library.find("git_config_get_path", functions.config_get_path);
  library.find("git_error_last", functions.error_last);
  library.find("git_libgit2_init", functions.libgit2_init);
  library.find("git_libgit2_opts", functions.libgit2_opts);
  library.find("git_repository_commondir", functions.repository_commondir);
  library.find("git_repository_config_snapshot", functions.repository_config_snapshot);
  library.find("git_repository_discover", functions.repository_discover);
  library.find("git_repository_free", functions.repository_free);
  library.find("git_repository_open_ext", functions.repository_open_ext);
  library.find("git_repository_workdir", functions.repository_workdir);

  functions.libgit2_init();
  functions.libgit2_opts(GIT_OPT_SET_OWNER_VALIDATION, 0);
  auto extensions = kExtensions;
  functions.libgit2_opts(GIT_OPT_SET_EXTENSIONS, extensions.data(), extensions.size());
  return functions;
}

}  // namespace

const GitLibrary& git() {
  static const GitLibrary library = load();
  return library;
}

}  // namespace host
