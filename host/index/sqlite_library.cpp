#include "index/sqlite_library.h"

#include "system/runtime_library.h"

namespace host::index {
namespace {

SqliteLibrary load() {
  const RuntimeLibrary library(QUORL_SQLITE3);
  SqliteLibrary functions{};
  library.find("sqlite3_bind_blob64", functions.bind_blob64);
  library.find("sqlite3_bind_int64", functions.bind_int64);
  library.find("sqlite3_bind_null", functions.bind_null);
  library.find("sqlite3_bind_text64", functions.bind_text64);
  library.find("sqlite3_close", functions.close);
  library.find("sqlite3_column_blob", functions.column_blob);
  library.find("sqlite3_column_bytes", functions.column_bytes);
  library.find("sqlite3_column_int64", functions.column_int64);
  library.find("sqlite3_column_type", functions.column_type);
  library.find("sqlite3_config", functions.config);
  library.find("sqlite3_db_config", functions.db_config);
  library.find("sqlite3_errmsg", functions.errmsg);
  library.find("sqlite3_exec", functions.exec);
  library.find("sqlite3_extended_errcode", functions.extended_errcode);
  library.find("sqlite3_finalize", functions.finalize);
  library.find("sqlite3_open_v2", functions.open_v2);
  library.find("sqlite3_prepare_v3", functions.prepare_v3);
  library.find("sqlite3_reset", functions.reset);
  library.find("sqlite3_step", functions.step);
  library.find("sqlite3_system_errno", functions.system_errno);

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
