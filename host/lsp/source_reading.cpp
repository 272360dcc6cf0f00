#include "lsp/source_reading.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "outline/record_tags.h"
#include "system/io.h"

namespace host::lsp {
namespace {

// A thread takes some 50 microseconds to start and to wait for, the scan of so many bytes 100.
constexpr off_t kLeastBytesAhead = off_t{16} * 1024;

bool isWorthThread(const std::string& path) {
  struct stat status {};
  return outline::routeOfName(path) == outline::Route::kScript &&
         ::stat(path.c_str(), &status) == 0 && status.st_size >= kLeastBytesAhead;
}

std::unique_ptr<ReadSource> readText(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return nullptr;
  auto source = std::make_unique<ReadSource>();
  source->text = readToEnd(file, path);
  ::close(file);
  return source;
}

std::unique_ptr<ReadSource> readScript(const std::string& path) {
  std::unique_ptr<ReadSource> source = readText(path);
  if (source) source->script = std::make_unique<outline::ScriptSource>(source->text, path);
  return source;
}

}  // namespace

SourceReading::SourceReading(const std::string& path, bool readsAhead) : path_(path) {
  if (readsAhead && isWorthThread(path)) {
    ahead_ = ThreadAhead<std::unique_ptr<ReadSource>>([path] { return readScript(path); });
  }
}

std::unique_ptr<ReadSource> SourceReading::finish() {
  return ahead_.finish([this] { return readText(path_); });
}

}  // namespace host::lsp
