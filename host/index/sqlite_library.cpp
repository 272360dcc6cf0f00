#include "index/sqlite_library.h"

#include <dlfcn.h>

#include <string>

#include "system/failure.h"

namespace host::index {
namespace {

[[noreturn]] void failWithReason() {
  throw Failure(std::string("cannot load ") + QUORL_SQLITE3 + ": " + ::dlerror());
}

template <typename Function>
void find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(library, name));
  if (function == nullptr) failWithReason();
}

SqliteLibrary load() {
  void* const library = ::dlopen(QUORL_SQLITE3, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) failWithReason();
  SqliteLibrary functions{};
  find(library, "sqlite3_bind_blob64", functions.bind_blob64);
  find(library, "sqlite3_bind_int64", functions.bind_int64);
  find(library, "sqlite3_bind_null", functions.bind_null);
  find(library, "sqlite3_bind_text64", functions.bind_text64);
  find(library, "sqlite3_close", functions.close);
  find(library, "sqlite3_column_blob", functions.column_blob);
  find(library, "sqlite3_column_bytes", functions.column_bytes);
  find(library, "sqlite3_column_int64", functions.column_int64);
  find(library, "sqlite3_column_type", functions.column_type);
  find(library, "sqlite3_config", functions.config);
  find(library, "sqlite3_db_config", functions.db_config);
  find(library, "sqlite3_errmsg", functions.errmsg);
  find(library, "sqlite3_exec", functions.exec);
  find(library, "sqlite3_extended_errcode", functions.extended_errcode);
  find(library, "sqlite3_finalize", functions.finalize);
  find(library, "sqlite3_open_v2", functions.open_v2);
  find(library, "sqlite3_prepare_v3", functions.prepare_v3);
  find(library, "sqlite3_reset", functions.reset);
  find(library, "sqlite3_step", functions.step);
  find(library, "sqlite3_system_errno", functions.system_errno);

  // No locks and no counting of memory, which take a tenth of the time to insert.
  functions.config(SQLITE_CONFIG_SINGLETHREAD);
  functions.config(SQLITE_CONFIG_MEMSTATUS, 0);
  return functions;
}

}  // namespace

const SqliteLibrary& sqlite() {
  static const SqliteLibrary library = load();
  return library;
}

}  // namespace host::index
