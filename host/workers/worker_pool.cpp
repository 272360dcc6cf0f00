#include "workers/worker_pool.h"

#include <poll.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <thread>
#include <utility>

#include "system/display_text.h"
#include "system/failure.h"
#include "system/platform.h"

namespace host {
namespace {

// A worker has the next request at hand when it ends one, and no long queue behind a long file.
constexpr std::size_t kFilesAhead = 4;

// How far results may be ahead of the one that is to be written. Further ones wait in the workers.
constexpr std::uint64_t kMaxInputsAhead = 1024;
constexpr std::size_t kMaxBytesAhead = std::size_t{64} << 20U;
constexpr std::size_t kBytesOfAResult = 256;  // besides its texts

constexpr int kMillisecondsToEnd = 2;           // between looks at whether workers have ended
constexpr std::chrono::seconds kTimeToEnd{10};  // for workers whose module is of no use

struct KnownEnd {
  bool (*isIt)(const ProcessEnd& end);
  FileStatus status;
  std::string_view what;
};

constexpr std::array kKnownEnds = {
    KnownEnd{[](const ProcessEnd& end) { return end.isBySignal(SIGALRM); }, FileStatus::kTimedOut,
             "not answered in time; see --timeout"},
    KnownEnd{[](const ProcessEnd& end) { return end.isWithStatus(kWorkerOutOfMemory); },
             FileStatus::kOutOfMemory, "not enough memory; see --max-memory"},
    KnownEnd{[](const ProcessEnd& end) { return end.isWithStatus(kWorkerTooLarge); },
             FileStatus::kTooLarge, "the answer is too long; see --max-output"},
};

// As many as are asked for and of use, and for which there are descriptors.
std::size_t workerCount(unsigned jobs, const Inputs& inputs) {
  constexpr std::uint64_t kDescriptorsBesides = 24;
  constexpr std::uint64_t kDescriptorsOfAWorker = 3;
  const std::uint64_t all = openFileLimit();
  const std::uint64_t room = all - std::min(all, kDescriptorsBesides);
  const std::uint64_t count =
      std::min({std::uint64_t{jobs}, inputs.fileCount, room / kDescriptorsOfAWorker});
  return static_cast<std::size_t>(std::max(count, std::uint64_t{1}));
}

std::string crashText(const ProcessEnd& end) {
  if (WIFSIGNALED(end.state)) {
    return std::string("crashed the plug-in: ") + ::strsignal(WTERMSIG(end.state));
  }
  return "ended its process with status " + std::to_string(WEXITSTATUS(end.state));
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
  slots_.resize(lockstep ? 1 : workerCount(jobs, *task.inputs));
}

FileResult WorkerPool::take(std::uint64_t index, const Idle& idle) {
  while (true) {
    handOut(index);
    const bool isFinished = finished_.contains(index);
    const bool gotAny = receive(index, idle, isFinished ? 0 : idle.milliseconds);
    const auto found = finished_.find(index);
    if (found != finished_.end()) {
      FileResult result = std::move(found->second);
      finished_.erase(found);
      finishedBytes_ -= bytesOf(result);
      return result;
    }
    if (gotAny) continue;
    loseEnded();
    idle.action();
  }
}

bool WorkerPool::finish(const Idle& idle) {
  for (Slot& slot : slots_) {
    if (slot.process) retire(slot);
  }
  // One may wait until what it writes is taken away.
  while (idle.watched >= 0 && !retired_.empty()) {
    pollfd end{idle.watched, POLLIN, 0};
    ::poll(&end, 1, kMillisecondsToEnd);
    idle.action();
    reapRetired(false);
  }
  reapRetired(true);
  return !diagnosticsLost_;
}

// ---- Handing files out

bool WorkerPool::isAllowed(std::uint64_t index, std::uint64_t wanted) const {
  if (index <= wanted) return true;
  return !lockstep_ && index - wanted < kMaxInputsAhead && finishedBytes_ < kMaxBytesAhead;
}

void WorkerPool::handOut(std::uint64_t wanted) {
  const auto& inputs = task_.inputs->all;
  while (true) {
    while (nextFile_ < inputs.size() && inputs[nextFile_].kind != InputKind::kFile) ++nextFile_;
    const bool isReturned = !givenBack_.empty();
    const std::uint64_t index = isReturned ? *givenBack_.begin() : nextFile_;
    if (index >= inputs.size() || !isAllowed(index, wanted)) return;
    // What others wait for finds a place, however many files are before it there.
    Slot* const slot = slotFor(isReturned || index == wanted);
    if (slot == nullptr) return;
    if (!slot->process && !tryStart(*slot)) continue;
    if (isReturned) {
      givenBack_.erase(index);
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
    if (slot.isAlone || slot.isBarred) continue;
    if (best == nullptr || slot.files.size() < best->files.size()) best = &slot;
  }
  const bool hasRoom = best != nullptr && (mustBe || best->files.size() < kFilesAhead);
  return hasRoom ? best : nullptr;
}

void WorkerPool::start(Slot& slot) {
  if (lockstep_) reapRetired(true);
  std::vector<const WorkerProcess*> others;
  for (const Slot& other : slots_) others.push_back(other.process.get());
  for (const auto& other : retired_) others.push_back(other.get());
  slot.process = std::make_unique<WorkerProcess>(task_, others);
  slot.isReady = false;
}

// Gives false when the system has no process to give and the others have to do.
bool WorkerPool::tryStart(Slot& slot) {
  try {
    start(slot);
  } catch (const Failure&) {
    slot.isBarred = true;
    const bool areOthers = std::any_of(slots_.begin(), slots_.end(),
                                       [](const Slot& other) { return other.process != nullptr; });
    if (!areOthers) throw;
  }
  return !slot.isBarred;
}

void WorkerPool::send(Slot& slot, std::uint64_t index) {
  slot.files.push_back(index);
  slot.process->request(index);
}

// ---- Receiving results

// Results that are far ahead stay with their workers, which wait, but for the one that is wanted.
bool WorkerPool::mayBeRead(const Slot& slot, std::uint64_t wanted) const {
  if (!slot.process) return false;
  const auto& files = slot.files;
  const bool isWanted = std::find(files.begin(), files.end(), wanted) != files.end();
  // A slot for one file may be the one that the wanted file waits for.
  if (!slot.isReady || slot.isAlone || isWanted) return true;
  std::size_t bytes = finishedBytes_ + slot.process->frames().missingBytes();
  for (const Slot& other : slots_) {
    if (other.process) bytes += other.process->frames().heldBytes();
  }
  return bytes < kMaxBytesAhead;
}

// A process that the module has begun may keep the pipe of a worker open that has ended.
void WorkerPool::loseEnded() {
  for (Slot& slot : slots_) {
    if (!slot.process || !slot.process->hasEnded()) continue;
    pollfd end{slot.process->results(), POLLIN, 0};
    const bool isReadOut = ::poll(&end, 1, 0) <= 0;
    if (isReadOut) lose(slot, false);
  }
}

// Gives false if the time passed without anything from workers, or what idle watches came first.
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
  reapRetired(false);
  return gotAny;
}

void WorkerPool::receiveFrom(Slot& slot) {
  if (slot.process->frames().read(slot.process->results()) == FrameReader::State::kEnded) {
    lose(slot, false);
    return;
  }
  while (slot.process) {
    Frame frame;
    const FrameReader::State state = slot.process->frames().next(frame);
    if (state == FrameReader::State::kOpen) return;
    const bool isExpected = state == FrameReader::State::kWhole &&
                            (frame.kind != FrameKind::kFile ||
                             (!slot.files.empty() && frame.index == slot.files.front()));
    if (!isExpected) {
      lose(slot, true);
      return;
    }
    accept(slot, std::move(frame));
  }
}

void WorkerPool::accept(Slot& slot, Frame frame) {
  if (frame.kind == FrameKind::kUnusable) {
    letUnreadyEnd();
    throw Failure(frame.message);
  }
  slot.isReady = true;
  slot.isWriting = frame.kind == FrameKind::kWriting;
  if (frame.kind != FrameKind::kFile) return;
  slot.files.pop_front();
  slot.isAlone = false;
  FileResult result;
  result.status = frame.status;
  result.hasAnswer = frame.hasAnswer;
  result.diagnosticsLost = frame.diagnosticsLost;
  result.message = std::move(frame.message);
  result.warnings = std::move(frame.warnings);
  result.text = std::move(frame.text);
  result.isWritten = frame.isWritten;
  result.outputError = frame.outputError;
  if (const auto failure = firstFailures_.extract(frame.index)) {
    result.firstFailure = failure.mapped();
  }
  finishedBytes_ += bytesOf(result);
  finished_.emplace(frame.index, std::move(result));
  if (frame.isLast) retire(slot);
}

// ---- The ends of workers

// Not killed: a module that was loaded has something to end, too, even if it is of no use.
void WorkerPool::letUnreadyEnd() {
  const auto latest = std::chrono::steady_clock::now() + kTimeToEnd;
  for (const Slot& slot : slots_) {
    if (slot.process && !slot.isReady) slot.process->abandon();
  }
  for (const Slot& slot : slots_) {
    if (!slot.process || slot.isReady) continue;
    while (!slot.process->hasEnded() && std::chrono::steady_clock::now() < latest) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
}

void WorkerPool::giveBack(Slot& slot) {
  givenBack_.insert(slot.files.begin(), slot.files.end());
  slot.files.clear();
  slot.isAlone = false;
}

void WorkerPool::retire(Slot& slot) {
  giveBack(slot);
  slot.process->endRequests();
  retired_.push_back(std::move(slot.process));
}

// The worker died over the first of its files, or wrote what none writes. The file is tried once
// more, in a worker that has no other.
void WorkerPool::lose(Slot& slot, bool isSpoilt) {
  if (isSpoilt) slot.process->kill();
  const ProcessEnd end = slot.process->waitForEnd();
  const bool wasReady = slot.isReady;
  std::string warnings = slot.process->errors().take();
  slot.process.reset();

  const auto* const known = std::find_if(kKnownEnds.begin(), kKnownEnds.end(),
                                         [&](const KnownEnd& row) { return row.isIt(end); });
  const bool isKnown = known != kKnownEnds.end() && !isSpoilt;
  const std::string what = isSpoilt  ? "spoilt the answers of its worker"
                           : isKnown ? std::string(known->what)
                                     : crashText(end);
  if (!wasReady) throw Failure("the plug-in could not be loaded: " + what);
  if (slot.files.empty()) return;

  const std::uint64_t index = slot.files.front();
  if (slot.isWriting) {
    throw Failure(task_.inputs->all[index].path + ": its text is cut in the output: " + what);
  }
  slot.files.pop_front();
  giveBack(slot);
  if (firstFailures_.emplace(index, what).second) {
    start(slot);
    slot.isAlone = true;
    send(slot, index);
  } else {
    firstFailures_.erase(index);
    fail(index, isKnown ? known->status : FileStatus::kCrashed, what, std::move(warnings));
  }
}

void WorkerPool::fail(std::uint64_t index, FileStatus status, const std::string& what,
                      std::string warnings) {
  const Input& input = task_.inputs->all[index];
  FileResult result = unansweredResult(task_, input, status, input.path + ": " + what);
  result.warnings = std::move(warnings);
  finishedBytes_ += bytesOf(result);
  finished_.emplace(index, std::move(result));
}

void WorkerPool::reapRetired(bool wait) {
  std::erase_if(retired_, [&](const auto& process) {
    std::optional<ProcessEnd> end;
    if (wait) {
      end = process->waitForEnd();
    } else {
      end = process->endIfEnded();
    }
    if (end && end->isWithStatus(kWorkerLostDiagnostics)) diagnosticsLost_ = true;
    return end.has_value();
  });
}

}  // namespace host
