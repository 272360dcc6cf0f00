#include "lsp/source_reading.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <exception>
#include <future>
#include <system_error>
#include <thread>

#include "system/io.h"

namespace host::lsp {
namespace {

// A thread takes some 50 microseconds to start and to wait for, the scan of so many bytes 100.
constexpr off_t kLeastBytesAhead = off_t{16} * 1024;

bool isWorthThread(const std::string& path) {
  struct stat status {};
  return outline::isScriptName(path) && ::stat(path.c_str(), &status) == 0 &&
         status.st_size >= kLeastBytesAhead;
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

struct SourceReading::Ahead {
  explicit Ahead(const std::string& file) : path(file) {}

  std::string path;
  std::atomic<bool> isTaken = false;  // by the thread, or by finish where the thread is late
  std::promise<std::unique_ptr<ReadSource>> source;
};

SourceReading::SourceReading(const std::string& path, bool readsAhead) : path_(path) {
  if (!readsAhead || !isWorthThread(path)) return;
  const auto ahead = std::make_shared<Ahead>(path);
  try {
    std::thread([ahead] {
      if (ahead->isTaken.exchange(true)) return;
      try {
        ahead->source.set_value(readScript(ahead->path));
      } catch (...) {
        ahead->source.set_exception(std::current_exception());
      }
    }).detach();
    ahead_ = ahead;
  } catch (const std::system_error&) {
    // There is no thread to be had, so finish reads the file.
  }
}

std::unique_ptr<ReadSource> SourceReading::finish() {
  // On a busy machine the module may be done before the thread has begun.
  if (!ahead_ || !ahead_->isTaken.exchange(true)) return readText(path_);
  return ahead_->source.get_future().get();
}

}  // namespace host::lsp
