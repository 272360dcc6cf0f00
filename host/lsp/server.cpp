#include "lsp/server.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <utility>

#include "system/failure.h"
#include "system/platform.h"

namespace host::lsp {
namespace {

constexpr int kBackgroundNiceness = 10;

// More output than that waits for the client to read before more input is taken.
constexpr std::size_t kMaxQueuedBytes = std::size_t{64} << 20U;

OutlineTask taskOf(const ServerOptions& options, int niceness) {
  OutlineTask task;
  task.plugin = options.plugin;
  task.limits = options.limits;
  task.niceness = niceness;
  task.isUrgent = niceness == 0;
  return task;
}

}  // namespace

Server::Server(const ServerOptions& options)
    : limits_(options.limits),
      connection_(options.traceFile),
      editorLane_(taskOf(options, 0), siblings_),
      scanLane_(taskOf(options, kBackgroundNiceness), siblings_),
      scan_(scanLane_, index_, connection_, options.limits.sourceBytes) {
  keepFreedMemory();  // for the next answer, which needs as much; workers inherit it
  if (options.indexFile) indexSymbols_.emplace(*options.indexFile);
  for (OutlineLane* const lane : {&editorLane_, &scanLane_}) {
    lane->closeInWorkers({directory_.lock(), connection_.traceDescriptor()});
  }
}

Server::~Server() {
  if (client_ >= 0) ::close(client_);
}

int Server::run() {
  while (life_ != Life::kOver) {
    wait();
    if (isInputReady_) takeInput();
    takeReplies(editorLane_, isEditorReady_);
    takeReplies(scanLane_, isScanReady_);
    answerReady();
    if (!connection_.flush()) break;
    beginOutline();
    if (life_ == Life::kInitialized) scan_.proceed();
    if (!connection_.flush()) break;
  }
  connection_.flush();
  return status_;
}

// Waits until there is something to do.
void Server::wait() {
  const bool isFull = connection_.queuedBytes() > kMaxQueuedBytes;
  std::array<pollfd, 5> ends = {
      pollfd{isFull ? -1 : STDIN_FILENO, POLLIN, 0},
      pollfd{connection_.queuedBytes() > 0 ? STDOUT_FILENO : -1, POLLOUT, 0},
      pollfd{editorLane_.descriptor(), POLLIN, 0}, pollfd{scanLane_.descriptor(), POLLIN, 0},
      pollfd{client_, POLLIN, 0}};
  int milliseconds = -1;
  for (const OutlineLane* const lane : {&editorLane_, &scanLane_}) {
    if (!lane->deadline()) continue;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*lane->deadline() - OutlineLane::Clock::now());
    const int bounded = static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60'000));
    milliseconds = milliseconds < 0 ? bounded : std::min(milliseconds, bounded);
  }
  if (::poll(ends.data(), ends.size(), milliseconds) < 0 && errno != EINTR) {
    throw systemFailure("poll", errno);
  }
  isInputReady_ = ends[0].revents != 0;
  isEditorReady_ = ends[2].revents != 0;
  isScanReady_ = ends[3].revents != 0;
  if (ends[4].revents != 0) life_ = Life::kOver;
}

// Takes all that has come by now, so that of a batch of edits only the last text is parsed.
void Server::takeInput() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  do {
    if (!connection_.receive()) {
      if (life_ == Life::kShutDown) status_ = 0;
      life_ = Life::kOver;
      return;
    }
    std::string_view body;
    for (auto result = connection_.next(body); result != MessageReader::Result::kNone;
         result = connection_.next(body)) {
      if (result == MessageReader::Result::kBroken) {
        connection_.respondError("null", ErrorCode::kParseError,
                                 "a header without a usable Content-Length");
      } else {
        handle(body);
      }
      if (life_ == Life::kOver) return;
    }
  } while (connection_.queuedBytes() <= kMaxQueuedBytes && ::poll(&input, 1, 0) > 0);
}

void Server::handle(std::string_view body) {
  rapidjson::Document message;
  if (!parseJson(body, message)) {
    connection_.respondError("null", ErrorCode::kParseError, "not JSON");
    return;
  }
  const Json* const id = find(message, {"id"});
  const bool isId = id != nullptr && (id->IsString() || id->IsNumber());
  const std::string idText = isId ? jsonText(*id) : "null";
  const std::optional<std::string_view> method = findText(message, {"method"});
  if (!method) {
    if (isId && (find(message, {"result"}) != nullptr || find(message, {"error"}) != nullptr)) {
      handleReply(message);
    } else {
      connection_.respondError(idText, ErrorCode::kInvalidRequest, "no method");
    }
    return;
  }
  if (id != nullptr && !isId) {
    connection_.respondError("null", ErrorCode::kInvalidRequest, "id: not a string or a number");
    return;
  }
  const Json none;
  const Json* const parameters = find(message, {"params"});
  dispatch(isId ? std::string_view(idText) : "", *method, parameters ? *parameters : none);
}

// Of our requests only the one for progress needs its answer.
void Server::handleReply(const Json& message) {
  if (findText(message, {"id"}) == WorkspaceScan::kProgressToken) {
    scan_.acceptProgress(find(message, {"error"}) == nullptr);
  }
}

void Server::dispatch(std::string_view id, std::string_view name, const Json& parameters) {
  const bool isRequest = !id.empty();
  if (!isRequest && name == "exit") {
    exit();
    return;
  }
  const Method* const method = findMethod(name);
  if (method != nullptr && method->isRequest == isRequest) {
    const bool isFirst = method->handle == &Server::initialize;
    if (life_ == Life::kInitialized ? !isFirst : life_ == Life::kNew && isFirst) {
      (this->*method->handle)({id, parameters});
      return;
    }
  }
  if (!isRequest) return;
  if (life_ == Life::kNew) {
    connection_.respondError(id, ErrorCode::kServerNotInitialized, "not initialized");
  } else if (life_ == Life::kShutDown) {
    connection_.respondError(id, ErrorCode::kInvalidRequest, "shut down");
  } else if (method != nullptr && method->isRequest) {
    connection_.respondError(id, ErrorCode::kInvalidRequest, "initialized already");
  } else {
    connection_.respondError(id, ErrorCode::kMethodNotFound, "unknown method " + std::string(name));
  }
}

void Server::takeReplies(OutlineLane& lane, bool isReadable) {
  std::vector<LaneReply> replies;
  if (isReadable) lane.read(replies);
  if (replies.empty()) {
    if (std::optional<LaneReply> reply = lane.checkTime(OutlineLane::Clock::now())) {
      replies.push_back(std::move(*reply));
    }
  }
  for (LaneReply& reply : replies) {
    if (reply.kind == LaneReply::Kind::kUnusable && !hasReportedPlugin_) {
      hasReportedPlugin_ = true;
      connection_.show(MessageType::kError, reply.failure);
    }
    if (&lane == &scanLane_) {
      scan_.handle(std::move(reply));
    } else {
      takeOutline(std::move(reply));
    }
  }
}

Document* Server::neededBy(const Pending& pending) {
  if (pending.wanted != Wanted::kWorkspaceSymbols) {
    Document* const document = documents_.find(pending.uri);
    const bool isNeeded = document != nullptr && document->parsedRevision < pending.revision;
    return isNeeded ? document : nullptr;
  }
  for (auto& [uri, document] : documents_.all()) {
    const bool isNeeded =
        document.isOpen && !document.isParsed() && document.parsedRevision < pending.revision;
    if (isNeeded) return &document;
  }
  return nullptr;
}

// Begins the outline that the oldest request waits for.
void Server::beginOutline() {
  while (!editorLane_.isBusy()) {
    Document* document = nullptr;
    for (const Pending& pending : pending_) {
      document = neededBy(pending);
      if (document != nullptr) break;
    }
    if (document == nullptr) break;
    beginOutlineOf(*document);
    answerReady();
  }
  if (!editorLane_.isBusy()) {
    directory_.removeFile();  // once the client has its answer
    if (wantsWorker_) editorLane_.prepare();
  }
  wantsWorker_ = false;
}

void Server::beginOutlineOf(Document& document) {
  outlinedUri_ = document.uri;
  outlinedRevision_ = document.revision;
  if (document.text.empty()) {
    takeOutline({});
    return;
  }
  std::string fault;
  if (limits_.sourceBytes != 0 && document.text.size() > limits_.sourceBytes) {
    fault = "larger than " + sizeText(limits_.sourceBytes) + " (--max-size)";
  } else {
    try {
      const std::string path = directory_.write(document.text, document.extension);
      editorLane_.begin(RequestKind::kOutline, features_.encoding, path);
    } catch (const Failure& failure) {
      fault = failure.what();
    }
  }
  if (fault.empty()) return;
  LaneReply reply;
  reply.kind = LaneReply::Kind::kFailed;
  reply.failure = fault;
  takeOutline(std::move(reply));
}

void Server::takeOutline(LaneReply reply) {
  wantsWorker_ = reply.kind == LaneReply::Kind::kOutline;
  if (!wantsWorker_) {
    connection_.log(MessageType::kError, outlinedUri_ + ": " + reply.failure);
  }
  Document* const document = documents_.find(outlinedUri_);
  if (document == nullptr || document->revision < outlinedRevision_) return;  // closed meanwhile
  document->parsedRevision = outlinedRevision_;
  document->outline = std::move(reply.outline);
}

}  // namespace host::lsp
