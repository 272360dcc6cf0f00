// SQLite, loaded when it is first asked for: only the commands of the index need it, and loading it
// would add a tenth to the start of all others.
#pragma once

#include <sqlite3.h>

namespace host::index {

// The functions in use, under their names in SQLite without "sqlite3_".
struct SqliteLibrary {
  decltype(&sqlite3_bind_blob64) bind_blob64;
  decltype(&sqlite3_bind_int64) bind_int64;
  decltype(&sqlite3_bind_null) bind_null;
  decltype(&sqlite3_bind_text64) bind_text64;
  decltype(&sqlite3_close) close;
  decltype(&sqlite3_column_blob) column_blob;
  decltype(&sqlite3_column_bytes) column_bytes;
  decltype(&sqlite3_column_int64) column_int64;
  decltype(&sqlite3_column_type) column_type;
  decltype(&sqlite3_config) config;
  decltype(&sqlite3_db_config) db_config;
  decltype(&sqlite3_errmsg) errmsg;
  decltype(&sqlite3_exec) exec;
  decltype(&sqlite3_extended_errcode) extended_errcode;
  decltype(&sqlite3_finalize) finalize;
  decltype(&sqlite3_open_v2) open_v2;
  decltype(&sqlite3_prepare_v3) prepare_v3;
  decltype(&sqlite3_reset) reset;
  decltype(&sqlite3_step) step;
  decltype(&sqlite3_system_errno) system_errno;
};

// Loads and configures the library at the first call; it stays for the life of the process. Throws
// Failure if it cannot be loaded. The program has one thread that uses it.
const SqliteLibrary& sqlite();

}  // namespace host::index
