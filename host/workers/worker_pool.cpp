#include "workers/worker_pool.h"

#include <poll.h>

#include <algorithm>
#include <utility>

#include "system/display_text.h"
#include "system/failure.h"
#include "system/platform.h"

namespace host {
namespace {

// Requests queued per worker: enough that it never idles, few enough that little waits behind a
// large file.
constexpr std::size_t kQueueDepth = 4;

// How far results may be ahead of the one that is to be written. Further ones wait in the workers.
constexpr std::uint64_t kMaxInputsAhead = 1024;
constexpr std::size_t kMaxBytesAhead = std::size_t{64} << 20U;
constexpr std::size_t kBytesOfAResult = 256;  // besides its texts

// The smallest share of memory, besides what a worker inherits from the program: the module and
// some room for files.
constexpr std::uint64_t kLeastShare = std::uint64_t{64} << 20U;

constexpr int kMillisecondsToEnd = 1;     // between checks for workers that have ended
constexpr int kMillisecondsToStart = 10;  // between attempts to start one

// The smallest of jobs, files, and workers that the limit on open files allows.
std::size_t workerCount(unsigned jobs, const Inputs& inputs) {
  constexpr std::uint64_t kDescriptorsBesides = 24;
  constexpr std::uint64_t kDescriptorsOfAWorker = 3;
  const std::uint64_t all = openFileLimit();
  const std::uint64_t room = all - std::min(all, kDescriptorsBesides);
  const std::uint64_t count =
      std::min({std::uint64_t{jobs}, inputs.fileCount, room / kDescriptorsOfAWorker});
  return static_cast<std::size_t>(std::max(count, std::uint64_t{1}));
}

std::size_t bytesOf(const FileResult& result) {
  return kBytesOfAResult + result.text.size() + result.message.size();
}

}  // namespace

FileResult unansweredResult(const WorkerTask& task, const Input& input, FileStatus status,
                            std::string_view message) {
  FileResult result;
  result.status = status;
  result.message = onOneLine(message);
  FileReport report;
  report.index = input.place;
  report.path = input.path;
  report.status = status;
  report.message = result.message;
  report.sourceBytes = regularFileBytes(input.textPath());
  appendText(report, task, result.text);
  return result;
}

WorkerPool::WorkerPool(const WorkerTask& task, unsigned jobs, bool lockstep)
    : task_(task), lockstep_(lockstep) {
  keepFreedMemory();  // for the next text, which needs about as much; workers inherit it
  slots_.resize((lockstep ? 1 : workerCount(jobs, *task.inputs)) + 1);
}

FileResult WorkerPool::waitFor(std::uint64_t index, const Idle& idle) {
  while (true) {
    dispatch(index);
    const bool isFinished = finished_.contains(index);
    const bool gotAny = receive(index, idle, isFinished ? 0 : pollTimeout(idle));
    const auto found = finished_.find(index);
    if (found != finished_.end()) {
      FileResult result = std::move(found->second);
      finished_.erase(found);
      finishedBytes_ -= bytesOf(result);
      return result;
    }
    handleEnds(!gotAny);
    enforceDeadlines(index);
    if (!gotAny) idle.action();
  }
}

bool WorkerPool::finish(const Idle& idle) {
  for (Slot& slot : slots_) {
    if (slot.process) retire(slot);
  }
  EndPause pause;
  while (true) {
    retired_.reap(clock_.now());
    // A retired worker may be blocked on a full stderr pipe: keep draining it.
    idle.action();
    if (retired_.isEmpty()) return !retired_.areDiagnosticsLost();
    pause.sleep();
  }
}

// ---- Memory

bool WorkerPool::isMemoryShared() const {
  return task_.limits.memoryBudget != 0 && slots_.size() > 2;
}

std::uint64_t WorkerPool::memoryFor(const Slot& slot) const {
  const std::uint64_t budget = task_.limits.memoryBudget;
  if (budget == 0) return task_.limits.memory;
  if (&slot == &slots_.back()) return budget;
  const std::uint64_t share = budget / (slots_.size() - 1);
  return std::min(std::max(share, peakMemory() + kLeastShare), budget);
}

// ---- Handing files out

void WorkerPool::dispatch(std::uint64_t wanted) {
  Slot& whole = slots_.back();
  // Not before the output waits for it: until then the others have more to do.
  if (needsWhole_.erase(wanted) != 0) {
    whole.files.push_back(wanted);
    isRoomKept_ = true;
  }
  if (!whole.files.empty()) {
    dispatchAlone(wanted);
    return;
  }
  if ((lockstep_ || isRoomKept_) && !retired_.isEmpty()) return;
  isRoomKept_ = false;
  for (Slot& slot : slots_) {
    const bool isWaiting = !slot.process && !slot.files.empty();
    if (isWaiting && slot.retry.isDue(clock_.now())) start(slot);
  }
  handOut(wanted);
}

// Starts the worker that gets all memory once there is no other. They finish what they have.
void WorkerPool::dispatchAlone(std::uint64_t wanted) {
  Slot& whole = slots_.back();
  if (whole.process) return;
  bool areOthers = !retired_.isEmpty();
  for (Slot& slot : slots_) {
    if (!slot.process) continue;
    areOthers = true;
    if (slot.files.empty()) {
      retire(slot);
    } else if (!slot.hasClosed && !mayBeRead(slot, wanted)) {
      // Its results would have to wait for the file that waits for it.
      requeue(slot);
      retired_.addAndKill(std::move(slot.process), clock_.now());
    }
  }
  if (!areOthers && whole.retry.isDue(clock_.now())) start(whole);
}

bool WorkerPool::isAllowed(std::uint64_t index, std::uint64_t wanted) const {
  if (index <= wanted) return true;
  return !lockstep_ && index - wanted < kMaxInputsAhead && finishedBytes_ < kMaxBytesAhead;
}

void WorkerPool::handOut(std::uint64_t wanted) {
  const auto& inputs = task_.inputs->all;
  while (true) {
    while (nextFile_ < inputs.size() && inputs[nextFile_].kind != InputKind::kFile) ++nextFile_;
    const bool isRequeued = !requeued_.empty();
    const std::uint64_t index = isRequeued ? *requeued_.begin() : nextFile_;
    if (index >= inputs.size() || !isAllowed(index, wanted)) return;
    // A file the output is blocked on is queued even if every worker is full.
    Slot* const slot = slotFor(isRequeued || index == wanted);
    if (slot == nullptr) return;
    if (!slot->process && !start(*slot)) continue;
    if (isRequeued) {
      requeued_.erase(index);
    } else {
      ++nextFile_;
    }
    send(*slot, index);
  }
}

// The slot with the fewest files, of those that take any; null if each has enough.
WorkerPool::Slot* WorkerPool::slotFor(bool mustBe) {
  Slot* best = nullptr;
  for (Slot& slot : slots_) {
    if (&slot == &slots_.back() || slot.isIsolated || slot.hasClosed) continue;
    if (!slot.process && !slot.retry.isDue(clock_.now())) continue;
    if (best == nullptr || slot.files.size() < best->files.size()) best = &slot;
  }
  const bool hasRoom = best != nullptr && (mustBe || best->files.size() < kQueueDepth);
  return hasRoom ? best : nullptr;
}

// Starts a worker and sends it the files of the slot. Returns false if the system has none to give.
bool WorkerPool::start(Slot& slot) {
  std::vector<const WorkerProcess*> others;
  for (const Slot& other : slots_) others.push_back(other.process.get());
  retired_.appendTo(others);
  WorkerTask task = task_;
  task.limits.memory = memoryFor(slot);
  task.isMemoryShared = isMemoryShared() && &slot != &slots_.back();
  try {
    slot.process = std::make_unique<WorkerProcess>(task, others);
  } catch (const Failure& failure) {
    handleFailedStart(slot, failure.what());
    return false;
  }
  slot.isReady = false;
  slot.isWriting = false;
  slot.hasClosed = false;
  slot.exception.reset();
  renewDeadline(slot);
  for (const std::uint64_t index : slot.files) slot.process->request(index);
  return true;
}

// The others carry on. The run ends only when there are none and no new one can be had.
void WorkerPool::handleFailedStart(Slot& slot, const std::string& what) {
  slot.retry.noteFailure(clock_.now());
  const bool areOthers = std::any_of(slots_.begin(), slots_.end(),
                                     [](const Slot& other) { return other.process != nullptr; });
  if (slot.retry.isExhausted() && !areOthers) throw Failure("cannot start a worker: " + what);
  const bool isForOne = slot.isIsolated || &slot == &slots_.back();
  if (!isForOne || (slot.retry.isExhausted() && areOthers)) requeue(slot);
}

void WorkerPool::send(Slot& slot, std::uint64_t index) {
  if (slot.files.empty() && slot.isReady) renewDeadline(slot);
  slot.files.push_back(index);
  slot.process->request(index);
}

// ---- Receiving results

void WorkerPool::keep(std::uint64_t index, FileResult result) {
  finishedBytes_ += bytesOf(result);
  finished_.emplace(index, std::move(result));
}

int WorkerPool::pollTimeout(const Idle& idle) const {
  const bool isEndAwaited =
      !retired_.isEmpty() && (lockstep_ || isRoomKept_ || !slots_.back().files.empty());
  if (isEndAwaited ||
      std::any_of(slots_.begin(), slots_.end(), [](const Slot& slot) { return slot.hasClosed; })) {
    return std::min(idle.milliseconds, kMillisecondsToEnd);
  }
  const bool isStartAwaited = std::any_of(slots_.begin(), slots_.end(), [](const Slot& slot) {
    return !slot.process && slot.retry.isPending();
  });
  return isStartAwaited ? std::min(idle.milliseconds, kMillisecondsToStart) : idle.milliseconds;
}

// Results that are far ahead stay with their workers, which wait, but for the one that is wanted.
bool WorkerPool::mayBeRead(const Slot& slot, std::uint64_t wanted) const {
  if (!slot.process || slot.hasClosed) return false;
  const auto& files = slot.files;
  const bool isWanted = std::find(files.begin(), files.end(), wanted) != files.end();
  // The wanted file may wait for an isolated one's slot.
  if (!slot.isReady || slot.isIsolated || isWanted) return true;
  std::size_t bytes = finishedBytes_ + slot.process->frames().missingBytes();
  for (const Slot& other : slots_) {
    if (other.process) bytes += other.process->frames().heldBytes();
  }
  return bytes < kMaxBytesAhead;
}

// Returns false if nothing came from workers: the time is over, or what idle watches is readable.
bool WorkerPool::receive(std::uint64_t wanted, const Idle& idle, int timeout) {
  std::vector<pollfd> ends;
  std::vector<Slot*> slots;
  for (Slot& slot : slots_) {
    if (!mayBeRead(slot, wanted)) continue;
    ends.push_back({slot.process->results(), POLLIN, 0});
    slots.push_back(&slot);
  }
  ends.push_back({idle.watched, POLLIN, 0});  // which poll skips if it is negative
  if (::poll(ends.data(), static_cast<nfds_t>(ends.size()), timeout) <= 0) return false;
  bool gotAny = false;
  for (std::size_t number = 0; number < slots.size(); ++number) {
    if (ends[number].revents == 0) continue;
    receiveFrom(*slots[number]);
    gotAny = true;
  }
  return gotAny;
}

void WorkerPool::receiveFrom(Slot& slot) {
  if (slot.process->frames().read(slot.process->results()) == FrameReader::State::kEnded) {
    slot.hasClosed = true;
    slot.deadline = clock_.now() + kTimeToDie;
    return;
  }
  while (slot.process) {
    Frame frame;
    const FrameReader::State state = slot.process->frames().next(frame);
    if (state == FrameReader::State::kOpen) break;
    const bool isExpected = state == FrameReader::State::kWhole &&
                            (frame.kind != FrameKind::kFile ||
                             (!slot.files.empty() && frame.index == slot.files.front())) &&
                            takeSharedText(slot, frame);
    if (!isExpected) {
      kill(slot, failureByGarbage());
      return;
    }
    accept(slot, std::move(frame));
  }
  if (slot.process) renewDeadline(slot);
}

// Returns false if there cannot be such a text.
bool WorkerPool::takeSharedText(Slot& slot, Frame& frame) {
  if (frame.sharedBytes == 0) return true;
  std::optional<std::string> text = slot.process->texts().take(frame.sharedBytes);
  if (!text) return false;
  frame.text = std::move(*text);
  return true;
}

void WorkerPool::accept(Slot& slot, Frame frame) {
  if (frame.kind == FrameKind::kUnusable) {
    if (!isProven_) {
      letUnreadyEnd();
      throw Failure(frame.message);
    }
    abandon(slot);
    handleFailedStart(slot, frame.message);
    return;
  }
  if (frame.kind == FrameKind::kThrew) {
    slot.exception = std::move(frame.message);
    return;
  }
  slot.isWriting = frame.kind == FrameKind::kWriting;
  if (frame.kind == FrameKind::kFile) {
    acceptFile(slot, std::move(frame));
  } else if (!slot.isReady) {
    slot.isReady = true;
    isProven_ = true;
    for (Slot& other : slots_) other.retry.noteSuccess();
  }
}

void WorkerPool::acceptFile(Slot& slot, Frame frame) {
  slot.files.pop_front();
  slot.isIsolated = false;
  FileResult result;
  result.status = frame.status;
  result.hasAnswer = frame.hasAnswer;
  result.diagnosticsLost = frame.diagnosticsLost;
  result.hasChanged = frame.hasChanged;
  result.message = std::move(frame.message);
  result.warnings = std::move(frame.warnings);
  result.omitted = std::move(frame.omitted);
  result.isOtherText = frame.isOtherText;
  result.text = std::move(frame.text);
  result.isWritten = frame.isWritten;
  result.outputError = frame.outputError;
  if (const auto failure = firstFailures_.extract(frame.index)) {
    if (failure.mapped().isTold) result.firstFailure = failure.mapped().what;
  }
  keep(frame.index, std::move(result));
  if (frame.isLast || &slot == &slots_.back()) retire(slot);
}

}  // namespace host
