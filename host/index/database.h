// An SQLite database and its statements. All functions throw Failure, which names the file.
//
// A text is bound as TEXT if it is UTF-8 without NUL, else as BLOB, so that other programs can read
// every TEXT; a column of either kind comes back as its bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace host::index {

enum class Opened {
  kToBuild,  // made if it is not there; nothing guards what is written
  kToRead,   // by the file alone: no lock, no file beside it; its contents are not trusted
};

class Database {
 public:
  // name stands for the file in messages.
  Database(const std::string& path, Opened how, std::string name);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database();

  void execute(const char* statements) const;

  [[noreturn]] void fail() const;
  sqlite3* handle() const { return handle_; }
  const std::string& name() const { return name_; }

 private:
  sqlite3* handle_ = nullptr;
  std::string name_;
};

// Whether the bytes are stored as TEXT.
bool isPlainText(std::string_view text);

// Columns and parameters count from 0. The database has to outlive it.
class Statement {
 public:
  Statement(const Database& database, std::string_view text);
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement();

  void bind(int parameter, std::int64_t number);
  void bind(int parameter, std::optional<std::int64_t> number);
  // The text has to stay until the next reset. The second names the type itself.
  void bind(int parameter, std::string_view text);
  void bind(int parameter, std::string_view text, bool isPlain);
  void bindNull(int parameter);

  // Whether there is a row. Without one the statement is as new, but for its parameters.
  bool step();
  void run();  // for a statement without rows
  void reset();

  bool isNull(int column) const;
  std::int64_t number(int column) const;
  std::string_view text(int column) const;  // until the next step; empty for null

 private:
  const Database& database_;
  sqlite3_stmt* handle_ = nullptr;
};

}  // namespace host::index
