#include "index/database.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <utility>

#include "index/sqlite_library.h"
#include "system/failure.h"
#include "system/utf8.h"

namespace host::index {
namespace {

constexpr int kCodeMask = 0xff;  // without the details of an extended code

// The path as a URI; SQLite takes options from one only.
std::string uriOf(std::string_view path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char byte : path) {
    const bool isPlain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                         (byte >= '0' && byte <= '9') || byte == '_' || byte == '.';
    const auto value = static_cast<unsigned char>(byte);
    if (isPlain) {
      uri += byte;
    } else {
      uri.append("%").append(1, kDigits[value >> 4U]).append(1, kDigits[value & 15U]);
    }
  }
  return uri + "?immutable=1";
}

}  // namespace

bool isPlainText(std::string_view text) {
  // Without a branch, so that the compiler takes many bytes at a time.
  unsigned bits = 0;
  unsigned nuls = 0;
  for (const char byte : text) {
    bits |= static_cast<unsigned char>(byte);
    nuls |= byte == '\0' ? 1U : 0U;
  }
  return nuls == 0 && (bits < 0x80 || isUtf8(text));
}

Database::Database(const std::string& path, Opened how, std::string name) : name_(std::move(name)) {
  const SqliteLibrary& library = sqlite();
  const int flags = how == Opened::kToBuild ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE
                                            : SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
  const std::string file = how == Opened::kToBuild ? path : uriOf(path);
  const int status = library.open_v2(file.c_str(), &handle_, flags, nullptr);
  try {
    if (status != SQLITE_OK) fail();
    // Also what is built upon may be a file that somebody else has made.
    library.db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    library.db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    execute("PRAGMA cell_size_check = ON");
  } catch (const Failure&) {
    library.close(handle_);
    throw;
  }
}

Database::~Database() {
  if (handle_ != nullptr) sqlite().close(handle_);
}

void Database::execute(const char* statements) const {
  if (sqlite().exec(handle_, statements, nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

void Database::fail() const {
  const int lastError = errno;
  const SqliteLibrary& library = sqlite();
  if (handle_ == nullptr) throw std::bad_alloc();
  // SQLite does not note it for a COMMIT.
  const int noted = library.system_errno(handle_);
  const int errorNumber = noted != 0 ? noted : lastError;
  const int code = library.extended_errcode(handle_) & kCodeMask;
  switch (code) {
    case SQLITE_NOMEM:
      throw std::bad_alloc();
    case SQLITE_FULL:
      throw systemFailure(name_, ENOSPC);
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
      if (errorNumber != 0) throw systemFailure(name_, errorNumber);
      break;
    case SQLITE_NOTADB:
      throw Failure(name_ + ": not an index of quorl-js");
    case SQLITE_CORRUPT:
      throw Failure(name_ + ": damaged index; move it away and build it again");
    default:
      break;
  }
  throw Failure(name_ + ": " + library.errmsg(handle_));
}

Statement::Statement(const Database& database, std::string_view text) : database_(database) {
  const int status =
      sqlite().prepare_v3(database.handle(), text.data(), static_cast<int>(text.size()),
                          SQLITE_PREPARE_PERSISTENT, &handle_, nullptr);
  if (status != SQLITE_OK) database.fail();
}

Statement::~Statement() { sqlite().finalize(handle_); }

void Statement::bind(int parameter, std::int64_t number) {
  sqlite().bind_int64(handle_, parameter + 1, number);
}

void Statement::bind(int parameter, std::optional<std::int64_t> number) {
  if (number) {
    bind(parameter, *number);
  } else {
    bindNull(parameter);
  }
}

void Statement::bind(int parameter, std::string_view text) {
  bind(parameter, text, isPlainText(text));
}

void Statement::bind(int parameter, std::string_view text, bool isPlain) {
  // A null pointer would bind NULL.
  const char* const bytes = text.data() == nullptr ? "" : text.data();
  if (isPlain) {
    sqlite().bind_text64(handle_, parameter + 1, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8);
  } else {
    sqlite().bind_blob64(handle_, parameter + 1, bytes, text.size(), SQLITE_STATIC);
  }
}

void Statement::bindNull(int parameter) { sqlite().bind_null(handle_, parameter + 1); }

bool Statement::step() {
  const int status = sqlite().step(handle_);
  if (status == SQLITE_ROW) return true;
  if (status != SQLITE_DONE) {
    try {
      database_.fail();
    } catch (...) {
      reset();
      throw;
    }
  }
  reset();
  return false;
}

void Statement::run() {
  while (step()) {
  }
}

void Statement::reset() { sqlite().reset(handle_); }

bool Statement::isNull(int column) const {
  return sqlite().column_type(handle_, column) == SQLITE_NULL;
}

std::int64_t Statement::number(int column) const { return sqlite().column_int64(handle_, column); }

std::string_view Statement::text(int column) const {
  const auto* const bytes = static_cast<const char*>(sqlite().column_blob(handle_, column));
  return {bytes, static_cast<std::size_t>(sqlite().column_bytes(handle_, column))};
}

}  // namespace host::index
