// libgit2, loaded when it is first asked for: a run that meets no git repository has no need of it,
// and loading it, with the twenty libraries that it needs in turn, takes longer than all else that
// the program does before its first file.
#pragma once

#include <git2.h>

namespace host {

// The functions in use, under their names in libgit2 without "git_".
struct GitLibrary {
  decltype(&git_buf_dispose) buf_dispose;
  decltype(&git_config_free) config_free;
  decltype(&git_config_get_bool) config_get_bool;
  decltype(&git_config_get_path) config_get_path;
  decltype(&git_error_last) error_last;
  decltype(&git_libgit2_init) libgit2_init;
  decltype(&git_libgit2_opts) libgit2_opts;
  decltype(&git_repository_commondir) repository_commondir;
  decltype(&git_repository_config_snapshot) repository_config_snapshot;
  decltype(&git_repository_discover) repository_discover;
  decltype(&git_repository_free) repository_free;
  decltype(&git_repository_open_ext) repository_open_ext;
  decltype(&git_repository_workdir) repository_workdir;
};

// Loads and starts the library at the first call; it stays for the life of the process, since each
// start reads the system's certificates, which takes longer than a walk over thousands of files.
// Throws Failure if it cannot be loaded.
const GitLibrary& git();

}  // namespace host
