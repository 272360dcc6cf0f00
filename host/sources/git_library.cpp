#include "sources/git_library.h"

#include <dlfcn.h>

#include <array>
#include <string>

#include "system/failure.h"

namespace host {
namespace {

// libgit2 refuses a repository with an extension that it does not know. None of these changes
// where rules are or what they mean.
constexpr std::array kExtensions = {
    "noop",       "objectformat",      "partialclone",  "preciousobjects",
    "refstorage", "relativeworktrees", "worktreeconfig"};

[[noreturn]] void failWithReason() {
  throw Failure(std::string("cannot load ") + QUORL_LIBGIT2 + ": " + ::dlerror());
}

template <typename Function>
void find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(library, name));
  if (function == nullptr) failWithReason();
}

GitLibrary load() {
  void* const library = ::dlopen(QUORL_LIBGIT2, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) failWithReason();
  GitLibrary functions{};
  find(library, "git_buf_dispose", functions.buf_dispose);
  find(library, "git_config_free", functions.config_free);
  find(library, "git_config_get_bool", functions.config_get_bool);
  find(library, "git_config_get_path", functions.config_get_path);
  find(library, "git_error_last", functions.error_last);
  find(library, "git_libgit2_init", functions.libgit2_init);
  find(library, "git_libgit2_opts", functions.libgit2_opts);
  find(library, "git_repository_commondir", functions.repository_commondir);
  find(library, "git_repository_config_snapshot", functions.repository_config_snapshot);
  find(library, "git_repository_discover", functions.repository_discover);
  find(library, "git_repository_free", functions.repository_free);
  find(library, "git_repository_open_ext", functions.repository_open_ext);
  find(library, "git_repository_workdir", functions.repository_workdir);

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
