#include "lsp/outline_lane.h"

#include <algorithm>
#include <csignal>
#include <utility>

#include "system/failure.h"

namespace host::lsp {
namespace {

// A worker limits its own time; this is for one that is stopped or waits in the kernel.
constexpr std::chrono::seconds kGrace{1};

// For a worker that has closed its pipe, or sent what none sends; then it is killed.
constexpr std::chrono::milliseconds kTimeToExit{50};

std::vector<std::string> pathsOf(std::string_view text) {
  std::vector<std::string> paths;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\0'), text.size());
    paths.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return paths;
}

}  // namespace

OutlineLane::OutlineLane(OutlineTask task, Siblings& siblings)
    : task_(std::move(task)), siblings_(siblings) {}

void OutlineLane::begin(RequestKind kind, Encoding encoding, const std::string& path) {
  request_ = requestBytes(kind, encoding, path);
  isRetried_ = false;
  isWalk_ = kind == RequestKind::kWalk;
  send();
}

void OutlineLane::start() {
  worker_ = std::make_unique<WorkerProcess>(
      [this](const WorkerEnds& ends) { workOnOutlines(task_, ends.requests, ends.results); },
      siblings_);
  siblings_.push_back(worker_.get());
}

void OutlineLane::prepare() {
  if (worker_) return;
  try {
    start();
  } catch (const Failure& failure) {
    startFailure_ = failure.what();
  }
}

void OutlineLane::send() {
  prepare();
  if (!worker_) {
    deadline_ = Clock::now();
    return;
  }
  worker_->request(request_);
  if (!isWalk_ && task_.limits.time.count() != 0) {
    deadline_ = Clock::now() + task_.limits.time + kGrace;
  }
}

std::unique_ptr<WorkerProcess> OutlineLane::releaseWorker() {
  siblings_.erase(std::remove(siblings_.begin(), siblings_.end(), worker_.get()), siblings_.end());
  return std::move(worker_);
}

void OutlineLane::stop() {
  if (worker_) releaseWorker();
  retired_.reset();
  request_.clear();
  deadline_.reset();
}

void OutlineLane::read(std::vector<LaneReply>& replies) {
  const auto add = [&replies](std::optional<LaneReply> reply) {
    if (reply) replies.push_back(std::move(*reply));
  };
  if (worker_->frames().read(worker_->results()) == FrameReader::State::kEnded) {
    add(handleDeath());
    return;
  }
  // The worker may be another, or none, once a frame was taken.
  for (const WorkerProcess* const worker = worker_.get(); worker_.get() == worker;) {
    Frame frame;
    const FrameReader::State state = worker_->frames().next(frame);
    if (state == FrameReader::State::kOpen) return;
    add(state == FrameReader::State::kWhole ? take(frame) : handleDeath());
  }
}

std::optional<LaneReply> OutlineLane::take(Frame& frame) {
  LaneReply reply;
  switch (frame.kind) {
    case FrameKind::kReady:
      return std::nullopt;
    case FrameKind::kUnusable:
      reply.kind = LaneReply::Kind::kUnusable;
      reply.failure = frame.message;
      releaseWorker();
      return finish(std::move(reply));
    case FrameKind::kThrew:
      return handleDeath();
    default:
      break;
  }
  if (!isBusy()) return handleDeath();  // a frame that nobody asked for
  if (isWalk_) {
    reply.kind = frame.hasAnswer ? LaneReply::Kind::kPaths : LaneReply::Kind::kWalked;
    reply.paths = pathsOf(frame.text);
    return frame.hasAnswer ? std::move(reply) : finish(std::move(reply));
  }
  if (!readOutline(frame.text, reply.outline)) return handleDeath();
  if (frame.isLast) retired_ = releaseWorker();
  return finish(std::move(reply));
}

LaneReply OutlineLane::finish(LaneReply reply) {
  request_.clear();
  deadline_.reset();
  return reply;
}

std::optional<LaneReply> OutlineLane::handleDeath() {
  const std::optional<ProcessEnd> end = worker_->waitForEnd(kTimeToExit);
  releaseWorker();
  if (!isBusy()) return std::nullopt;
  const bool isTimeUp = end && end->isBySignal(SIGALRM);
  if (!isTimeUp && !isWalk_ && !std::exchange(isRetried_, true)) {
    send();
    if (worker_) return std::nullopt;
  }
  return fail(isTimeUp ? timeUp() : "the plug-in crashed or ran out of memory");
}

std::optional<LaneReply> OutlineLane::checkTime(Clock::time_point now) {
  if (!deadline_ || now < *deadline_) return std::nullopt;
  if (!worker_) return fail(startFailure_);
  releaseWorker();
  return fail(timeUp());
}

LaneReply OutlineLane::fail(std::string reason) {
  LaneReply reply;
  reply.kind = LaneReply::Kind::kFailed;
  reply.failure = std::move(reason);
  return finish(std::move(reply));
}

std::string OutlineLane::timeUp() const {
  return "it took longer than " + timeText(task_.limits.time) + " (--timeout)";
}

}  // namespace host::lsp
