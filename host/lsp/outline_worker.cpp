#include "lsp/outline_worker.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "lsp/file_outline.h"
#include "lsp/source_reading.h"
#include "outline/outline.h"
#include "sources/binary_files.h"
#include "sources/directory_walk.h"
#include "system/failure.h"
#include "system/io.h"
#include "system/platform.h"
#include "workers/plugin_module.h"
#include "workers/time_limit.h"
#include "workers/worker.h"
#include "workers/worker_frame.h"

namespace host::lsp {
namespace {

constexpr std::chrono::seconds kTimeToLoad{60};
constexpr std::size_t kPathBytesAtOnce = 16384;
// For what the module keeps of texts for good, which is 2.5 MB of one of 400 KB: taking it from the
// system page by page would be 1.5 ms of the module's 8. Some of it is fetched before it is needed,
// which leaves 7.
constexpr std::size_t kHeapAhead = std::size_t{48} << 20U;
constexpr std::size_t kHeapFetched = std::size_t{8} << 20U;
constexpr std::string_view kRecordsOpening = "[\n";

struct RequestHeader {
  std::uint32_t pathBytes = 0;
  RequestKind kind = RequestKind::kOutline;
  Encoding encoding = Encoding::kUtf16;
};

struct Request {
  RequestHeader header;
  std::string path;
};

bool readWhole(int descriptor, char* buffer, std::size_t bytes) {
  while (bytes > 0) {
    const ssize_t count = readSome(descriptor, buffer, bytes);
    if (count <= 0) return false;
    buffer += count;
    bytes -= static_cast<std::size_t>(count);
  }
  return true;
}

std::optional<Request> readRequest(int descriptor) {
  Request request;
  std::array<char, sizeof request.header> bytes{};
  if (!readWhole(descriptor, bytes.data(), bytes.size())) return std::nullopt;
  std::memcpy(&request.header, bytes.data(), bytes.size());
  request.path.resize(request.header.pathBytes);
  if (!readWhole(descriptor, request.path.data(), request.path.size())) return std::nullopt;
  return request;
}

bool isReadable(int descriptor) {
  pollfd end{descriptor, POLLIN, 0};
  return ::poll(&end, 1, 0) > 0;
}

// The module writes to standard output, and may write to standard error; neither is the client's
// affair.
void leadNowhere() {
  const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nowhere < 0) ::_exit(EXIT_FAILURE);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (nowhere != descriptor) ::dup2(nowhere, descriptor);
  }
  if (nowhere > STDERR_FILENO) ::close(nowhere);
}

class Worker {
 public:
  Worker(const OutlineTask& task, int results)
      : task_(task), results_(results), plugin_(task.plugin) {
    if (task.isUrgent) extendHeap(kHeapAhead);
  }

  void answer(const Request& request) {
    if (request.header.kind == RequestKind::kWalk) {
      listFiles(request.path);
    } else {
      sendOutline(request);
    }
  }

  // Before the next request.
  void prepareMemory() const {
    if (task_.isUrgent) fetchHeap(kHeapFetched);
  }

  // Whether it has said that it takes no further request.
  bool isWornOut() const { return isWornOut_; }

 private:
  void send(Frame& frame, std::string_view text) const {
    frame.kind = FrameKind::kFile;
    // Should it fail, there is no server any more.
    if (writeFrame(results_, frame, text) != 0) ::_exit(EXIT_FAILURE);
  }

  void sendOutline(const Request& request) {
    Frame frame;
    frame.hasAnswer = true;
    limitTime(task_.limits.time);
    SourceReading reading(request.path, readsAhead_);
    const char* const answer = plugin_.parse(request.path, "");
    if (answer == nullptr) ::_exit(kWorkerOutOfMemory);
    const std::string bytes = outlineOf(request, answer, reading);
    limitTime(std::chrono::microseconds(0));
    isWornOut_ = peakMemory() - memoryAtStart_ >= task_.maxGrowth;
    frame.isLast = isWornOut_;
    send(frame, bytes);
  }

  // An answer without records, as of a file that is gone by now, gives an outline without entries.
  std::string outlineOf(const Request& request, std::string_view answer, SourceReading& reading) {
    if (!answer.starts_with(kRecordsOpening)) return outlineBytes({});
    const std::unique_ptr<ReadSource> source = reading.finish();
    if (!source) return outlineBytes({});
    outline::ScriptSource* const script = source->script.get();
    std::vector<outline::CommentLines> comments;
    const std::vector<outline::Item> items = outline::makeOutline(
        source->text, answer, {.comments = &comments, .script = script, .isUnwanted = hasNoEntry});
    std::optional<outline::SourceLines> lines;
    if (script == nullptr) lines.emplace(source->text);
    return outlineBytes(placeItems(script != nullptr ? script->lines : *lines, items,
                                   std::move(comments), request.header.encoding));
  }

  void listFiles(const std::string& directory) const {
    std::string paths;
    const auto sendPaths = [&] {
      Frame frame;
      frame.hasAnswer = true;
      if (!paths.empty()) send(frame, std::exchange(paths, {}));
    };
    WalkActions actions;
    actions.entersDirectory = [](const std::string&) { return true; };
    actions.regularFile = [&](const std::string& path) {
      if (isBinary(path)) return;
      paths.append(path).append(1, '\0');
      if (paths.size() >= kPathBytesAtOnce) sendPaths();
    };
    actions.otherFile = [](const std::string&) {};
    actions.unreadableDirectory = [](const std::string&, const std::error_code&) {};
    actions.ignoredEntry = [] {};
    WalkRules rules;
    rules.recursive = true;
    walk(directory, rules, actions);
    sendPaths();
    Frame end;
    send(end, {});
  }

  const OutlineTask& task_;
  int results_;
  PluginModule plugin_;
  std::uint64_t memoryAtStart_ = peakMemory();  // with all that the server has
  bool readsAhead_ = task_.isUrgent && availableCores() > 1;
  bool isWornOut_ = false;
};

void sendFailure(int results, FrameKind kind, const char* text) {
  Frame frame;
  frame.kind = kind;
  frame.message = text;
  writeFrame(results, frame, {});
}

std::unique_ptr<Worker> load(const OutlineTask& task, int results) {
  limitTime(kTimeToLoad);
  try {
    auto worker = std::make_unique<Worker>(task, results);
    limitTime(std::chrono::microseconds(0));
    return worker;
  } catch (const Failure& failure) {
    sendFailure(results, FrameKind::kUnusable, failure.what());
    ::_exit(EXIT_FAILURE);
  }
}

// Ends without CleanupJS, which has nothing to do in a process that ends.
[[noreturn]] void answerRequests(const OutlineTask& task, int requests, int results) {
  const std::unique_ptr<Worker> worker = load(task, results);
  if (writeFrame(results, Frame{}, {}) != 0) ::_exit(EXIT_FAILURE);
  while (!worker->isWornOut()) {
    if (!isReadable(requests)) worker->prepareMemory();
    const std::optional<Request> request = readRequest(requests);
    if (!request) break;
    worker->answer(*request);
  }
  ::_exit(EXIT_SUCCESS);
}

}  // namespace

std::string requestBytes(RequestKind kind, Encoding encoding, std::string_view path) {
  RequestHeader header;
  header.pathBytes = static_cast<std::uint32_t>(path.size());
  header.kind = kind;
  header.encoding = encoding;
  std::string bytes(sizeof header, '\0');
  std::memcpy(bytes.data(), &header, sizeof header);
  return bytes.append(path);
}

void workOnOutlines(const OutlineTask& task, int requests, int results) noexcept {
  leadNowhere();
  for (const int descriptor : task.closed) ::close(descriptor);
  if (task.niceness != 0) [[maybe_unused]]
    const int niceness = ::nice(task.niceness);
  if (task.limits.memory != 0) limitMemory(task.limits.memory);
  std::set_new_handler([] { ::_exit(kWorkerOutOfMemory); });
  try {
    answerRequests(task, requests, results);
  } catch (const std::exception& exception) {
    sendFailure(results, FrameKind::kThrew, exception.what());
  } catch (...) {
    sendFailure(results, FrameKind::kThrew, "");
  }
  ::_exit(EXIT_FAILURE);
}

}  // namespace host::lsp
