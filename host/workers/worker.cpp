#include "workers/worker.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "outline/omissions.h"
#include "records/answer_path.h"
#include "records/error_answer.h"
#include "records/record_escapes.h"
#include "system/display_text.h"
#include "system/failure.h"
#include "system/file_times.h"
#include "system/io.h"
#include "system/platform.h"
#include "system/thread_ahead.h"
#include "workers/plugin_module.h"
#include "workers/time_limit.h"
#include "workers/worker_frame.h"

namespace host {
namespace {

// The module keeps its trees, so a worker is recycled after so many files or so much memory.
constexpr unsigned kMaxFiles = 1000;
constexpr std::uint64_t kMaxMemoryKept = std::uint64_t{256} << 20U;

// What the module keeps of a text, by its bytes; the heap that is taken without asking for large
// pages, which do not pay for a few small files; and how much is then prepared at once.
constexpr std::uint64_t kMemoryPerByte = 8;
constexpr std::uint64_t kHeapAtStart = std::uint64_t{1} << 20U;
constexpr std::uint64_t kHeapStep = std::uint64_t{8} << 20U;

// A thread takes some 50 microseconds to start and to wait for, so many bytes 200 to read and
// check.
constexpr std::uint64_t kLeastBytesAhead = std::uint64_t{128} << 10U;

constexpr std::size_t kRequestsAtOnce = 64;
constexpr std::string_view kRecordsOpening = "[\n";
constexpr const char* kEmptyMessage = "File is empty: ";
constexpr const char* kUnopenedMessage = "Could not open file: ";
// The module may run out of memory before the program does.
constexpr std::array<std::string_view, 2> kMemoryErrors = {
    "Parser exception: std::bad_alloc",
    "Parser exception: Memory allocation failed for ObjectBranch"};

constexpr std::chrono::microseconds kNoTimeLimit{0};

bool isMemoryError(std::string_view answer) {
  return std::ranges::any_of(
      kMemoryErrors, [answer](std::string_view error) { return answer == errorAnswer(error); });
}

// The text of an error answer, with the file's name unless it ends with that.
std::string errorMessage(const std::string& file, std::string_view answer) {
  if (!answer.starts_with(kErrorAnswerStart) || !answer.ends_with(kErrorAnswerEnd)) {
    return file + ": the answer is neither records nor an error";
  }
  answer.remove_prefix(kErrorAnswerStart.size());
  answer.remove_suffix(kErrorAnswerEnd.size());
  std::string message = unescaped(answer);
  return message.ends_with(file) ? message : file + ": " + message;
}

std::string errorAnswer(const std::string& message) {
  return std::string(kErrorAnswerStart).append(escaped(message)).append(kErrorAnswerEnd);
}

// The error number of opening the file; 0 if it can be opened by now.
int errorOfOpening(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return errno;
  ::close(file);
  return 0;
}

// Flushes C's stdout. The module ignores the results of its writes, but the stream remembers a
// failed one.
bool areDiagnosticsLost() { return std::fflush(stdout) != 0 || std::ferror(stdout) != 0; }

void silenceStandardError() {
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere != STDERR_FILENO) {
    ::dup2(nowhere, STDERR_FILENO);
    ::close(nowhere);
  }
}

// What a file looked like when it was read.
class FileState {
 public:
  explicit FileState(const std::string& path) : exists_(::stat(path.c_str(), &status_) == 0) {}
  explicit FileState(int file) : exists_(::fstat(file, &status_) == 0) {}

  bool exists() const { return exists_; }
  bool isRegular() const { return exists_ && S_ISREG(status_.st_mode); }
  bool isDirectory() const { return exists_ && S_ISDIR(status_.st_mode); }
  std::uint64_t bytes() const {
    return isRegular() ? static_cast<std::uint64_t>(status_.st_size) : 0;
  }

  FileTimes times() const { return timesOf(status_); }

  // Whether a file with this state may hold other bytes than one with the other.
  bool differsFrom(const FileState& other) const {
    if (!isRegular() || !other.isRegular()) return isRegular() != other.isRegular();
    return status_.st_size != other.status_.st_size || status_.st_ino != other.status_.st_ino ||
           status_.st_dev != other.status_.st_dev || times().modified != other.times().modified;
  }

 private:
  struct stat status_ {};
  bool exists_;
};

// The first so many bytes of the file, or as many as there are. A file that changes while it is
// read is noticed by its state afterwards, which after gets.
std::string bytesOf(const std::string& path, std::uint64_t size, std::optional<FileState>& after) {
  std::string bytes;
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return bytes;
  bytes.resize(size);
  std::size_t count = 0;
  while (count < bytes.size()) {
    const ssize_t more = readSome(file, bytes.data() + count, bytes.size() - count);
    if (more <= 0) break;
    count += static_cast<std::size_t>(more);
  }
  after.emplace(file);
  ::close(file);
  bytes.resize(count);
  return bytes;
}

struct Source {
  std::string bytes;
  std::optional<outline::EarlyOmissions> omissions;  // where they were looked for ahead
};

class Worker {
 public:
  // The output is the descriptor for texts that are not sent to the parent, or negative.
  Worker(const WorkerTask& task, const WorkerEnds& ends, int output)
      : task_(task), ends_(ends), output_(output), plugin_(task.plugin) {}

  void answer(std::uint64_t request) {
    if (request == kVersionRequest) {
      tellVersion();
    } else {
      ++files_;
      answerFile(request);
    }
  }

  bool isWornOut() const { return isWornOut_; }

 private:
  void send(Frame& frame, std::string_view text) {
    frame.diagnosticsLost = areDiagnosticsLost();
    // It fails only if the parent has ended.
    if (writeFrame(ends_.results, frame, text) != 0) ::_exit(EXIT_FAILURE);
  }

  // Announced before the first byte: the parent must not have a text written twice.
  void writeOutput(Frame& frame, std::string_view text) {
    Frame announcement;
    announcement.kind = FrameKind::kWriting;
    send(announcement, {});
    const int writeError = writeAll(output_, text);
    const int closeError = closeWritten(output_);
    frame.isWritten = true;
    frame.outputError = writeError != 0 ? writeError : closeError;
  }

  void tellVersion() {
    Frame frame;
    limitTime(task_.limits.time);
    const char* const info = plugin_.info();
    limitTime(kNoTimeLimit);
    frame.kind = info == nullptr ? FrameKind::kUnusable : FrameKind::kVersion;
    if (info == nullptr) frame.message = "no memory for the plug-in's version";
    send(frame, info == nullptr ? "" : info);
  }

  void answerFile(std::uint64_t index) {
    const Input& input = task_.inputs->all.at(index);
    FileReport report;
    report.index = input.place;
    report.path = input.path;
    Frame frame;
    frame.kind = FrameKind::kFile;
    frame.index = index;
    limitTime(task_.limits.time);
    frame.hasChanged = !readUnchanged(input, report, frame) && !readUnchanged(input, report, frame);
    report.message = frame.message;
    frame.status = report.status;
    std::vector<outline::Omission> omitted;
    if (task_.findsOmissions && report.status == FileStatus::kAnswered) {
      omitted = outline::findOmissions(report.source, report.answer, std::move(source_.omissions));
      report.omitted = &omitted;
      frame.omitted = outline::describe(omitted);
      frame.isOtherText = outline::isOtherText(omitted);
    }
    std::string fault;
    const bool isAnswer = task_.format->isAnswer() && frame.hasAnswer;
    text_.clear();
    if (!isAnswer) fault = appendText(report, task_, text_);
    std::string_view text = isAnswer ? report.answer : text_;
    limitTime(kNoTimeLimit);
    if (!fault.empty()) {
      frame.status = FileStatus::kFailed;
      frame.message = onOneLine(input.path + ": " + fault);
    }
    const std::uint64_t grownBy = peakMemory() - memoryAtStart_;
    const std::uint64_t halfOfLimit = task_.limits.memory / 2;
    isWornOut_ = files_ >= kMaxFiles || grownBy >= kMaxMemoryKept ||
                 (halfOfLimit != 0 && grownBy >= halfOfLimit);
    frame.isLast = isWornOut_;
    if (output_ >= 0) writeOutput(frame, std::exchange(text, {}));
    if (ends_.texts.put(text)) frame.sharedBytes = std::exchange(text, {}).size();
    send(frame, text);
  }

  // Has the module read the file. Returns false if the file changed meanwhile: then its size, which
  // is looked up before, may not be that of what was read.
  bool readUnchanged(const Input& input, FileReport& report, Frame& frame) {
    const FileState before(input.textPath());
    report.status = FileStatus::kAnswered;
    report.sourceBytes = before.bytes();
    report.answer = {};
    report.source = {};
    report.times.reset();
    frame.hasAnswer = false;
    frame.message.clear();
    if (!mayBeRead(input, before, report, frame)) return true;
    std::optional<FileState> after;
    ThreadAhead<Source> reading = readAhead(input.textPath(), before);
    ask(input, before, report, frame);
    if (task_.keepsSources && report.status == FileStatus::kAnswered) {
      source_ = reading.finish([&] {
        return Source{bytesOf(input.textPath(), before.bytes(), after), std::nullopt};
      });
      report.source = source_.bytes;
    }
    if (!after) after.emplace(input.textPath());
    if (after->differsFrom(before)) return false;
    if (before.isRegular()) report.times = before.times();
    return true;
  }

  // Begins to read the file and to look for what makes the module leave text out, if it is the only
  // one and large: with many, other workers have the cores.
  ThreadAhead<Source> readAhead(const std::string& path, const FileState& state) const {
    if (output_ < 0 || !task_.keepsSources || state.bytes() < kLeastBytesAhead ||
        availableCores() < 2) {
      return {};
    }
    return ThreadAhead<Source>([path, size = state.bytes(), finds = task_.findsOmissions] {
      std::optional<FileState> tooEarly;
      Source source{bytesOf(path, size, tooEarly), std::nullopt};
      if (finds) source.omissions = outline::findEarlyOmissions(source.bytes, path);
      return source;
    });
  }

  // The module reads a file whole, so its size is checked first. So is its kind, which may have
  // changed since the file was listed. What does not exist is left to the module to report.
  bool mayBeRead(const Input& input, const FileState& state, FileReport& report,
                 Frame& frame) const {
    const std::uint64_t limit = task_.limits.sourceBytes;
    if (state.exists() && !state.isRegular() && !state.isDirectory()) {
      report.status = FileStatus::kFailed;
      frame.message = onOneLine(input.path + ": " + kIrregular);
      return false;
    }
    if (limit != 0 && state.bytes() > limit) {
      report.status = FileStatus::kTooLarge;
      frame.message = onOneLine(input.path + ": larger than " + sizeText(limit) + " (--max-size)");
      return false;
    }
    return true;
  }

  // What the module keeps of a text is memory that nobody has used yet.
  void prepareMemory(std::uint64_t sourceBytes) {
    const std::uint64_t needed = kMemoryPerByte * sourceBytes;
    if (needed > heapLeft_) {
      heapLeft_ = std::max(needed, kHeapStep);
      extendHeap(heapLeft_);
    }
    heapLeft_ -= needed;
  }

  void ask(const Input& input, const FileState& state, FileReport& report, Frame& frame) {
    prepareMemory(state.bytes());
    const auto start = std::chrono::steady_clock::now();
    if (task_.countsWarnings) ends_.errors.begin();
    const char* const answer = plugin_.parse(input.textPath(), task_.defines);
    if (task_.countsWarnings) ends_.errors.end();
    if (task_.times) {
      report.microseconds =
          static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                         std::chrono::steady_clock::now() - start)
                                         .count());
    }
    frame.warnings = ends_.errors.take();
    if (answer == nullptr) {
      if (task_.isMemoryShared) ::_exit(kWorkerOutOfMemory);
      report.status = FileStatus::kFailed;
      frame.message = onOneLine(input.path + ": no memory for the answer");
      return;
    }
    report.answer = answer;
    frame.hasAnswer = true;
    const std::uint64_t limit = task_.limits.answerBytes;
    if (limit != 0 && report.answer.size() > limit) ::_exit(kWorkerTooLarge);
    if (isMemoryError(report.answer)) ::_exit(kWorkerOutOfMemory);
    if (!input.copy.empty()) {
      renamedAnswer_ = withPath(report.answer, input.copy, input.path);
      report.answer = renamedAnswer_;
    }
    if (state.isDirectory()) {
      report.status = FileStatus::kFailed;
      frame.message = onOneLine(input.path + ": is a directory (use -r to read it)");
    } else if (!report.answer.starts_with(kRecordsOpening)) {
      explain(input, report, frame);
    }
  }

  // What an answer without records says of the file. Where the module could not open it, the
  // system's reason says more than the module does.
  static void explain(const Input& input, FileReport& report, Frame& frame) {
    if (report.answer == errorAnswer(kEmptyMessage + input.path)) {
      report.status = FileStatus::kEmpty;
      return;
    }
    report.status = FileStatus::kFailed;
    int openError = 0;
    if (report.answer == errorAnswer(kUnopenedMessage + input.path)) {
      openError = errorOfOpening(input.textPath());
    }
    frame.message = onOneLine(openError != 0 ? systemFailure(input.path, openError).what()
                                             : errorMessage(input.path, report.answer));
  }

  const WorkerTask& task_;
  WorkerEnds ends_;
  int output_;
  PluginModule plugin_;
  std::uint64_t memoryAtStart_ = peakMemory();  // with all that the parent has
  std::string renamedAnswer_;                   // of a text that is kept in another file
  Source source_;
  std::string text_;  // for the output; the next one takes its memory
  std::uint64_t heapLeft_ = kHeapAtStart;
  unsigned files_ = 0;
  bool isWornOut_ = false;
};

void answerRequests(Worker& worker, int requests) {
  std::array<std::uint64_t, kRequestsAtOnce> indices;
  while (!worker.isWornOut()) {
    // Requests are written whole and are far from filling the pipe, so they come whole.
    const ssize_t count =
        readSome(requests, reinterpret_cast<char*>(indices.data()), sizeof indices);
    if (count <= 0) return;
    const auto* const end = indices.data() + static_cast<std::size_t>(count) / sizeof indices[0];
    for (const auto* next = indices.data(); next != end && !worker.isWornOut(); ++next) {
      worker.answer(*next);
    }
  }
}

// Tells the parent, and makes no further call of the module: its state is unknown.
[[noreturn]] void endByException(int results, const char* text) {
  Frame frame;
  frame.kind = FrameKind::kThrew;
  frame.message = text;
  writeFrame(results, frame, {});
  ::_exit(kWorkerThrew);
}

void answerRequestsOrEnd(Worker& worker, int requests, int results) {
  try {
    answerRequests(worker, requests);
  } catch (const std::bad_alloc&) {
    ::_exit(kWorkerOutOfMemory);
  } catch (const std::exception& exception) {
    endByException(results, exception.what());
  } catch (...) {
    endByException(results, "");
  }
}

void sendUnusable(int results, const std::string& message) {
  Frame frame;
  frame.kind = FrameKind::kUnusable;
  frame.message = message;
  writeFrame(results, frame, {});
}

void runWorker(const WorkerTask& task, const WorkerEnds& ends, int output) {
  const std::string thrown = task.plugin + ": threw an exception when it was loaded";
  try {
    limitTime(task.timeBesidesFiles);
    Worker worker(task, ends, output);
    limitTime(kNoTimeLimit);
    if (writeFrame(ends.results, Frame{}, {}) == 0) {
      answerRequestsOrEnd(worker, ends.requests, ends.results);
    }
    limitTime(task.timeBesidesFiles);  // to the very end
  } catch (const Failure& failure) {
    sendUnusable(ends.results, failure.what());
  } catch (const std::bad_alloc&) {
    ::_exit(kWorkerOutOfMemory);
  } catch (const std::exception& exception) {
    sendUnusable(ends.results, thrown + ": " + exception.what());
    ::_exit(kWorkerThrew);
  } catch (...) {
    sendUnusable(ends.results, thrown);
    ::_exit(kWorkerThrew);
  }
}

}  // namespace

std::string appendText(const FileReport& report, const WorkerTask& task, std::string& out) {
  if (!task.wholeDocuments) return task.format->file(report, task.settings, out);
  FormatSettings settings = task.settings;
  settings.fileCount = 1;
  FileReport alone = report;
  alone.index = 0;
  task.format->begin(settings, out);
  std::string fault = task.format->file(alone, settings, out);
  task.format->end(settings, out);
  return fault;
}

void work(const WorkerTask& task, const WorkerEnds& ends) noexcept {
  const int output =
      task.writesOutput ? ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, kFirstFreeDescriptor) : -1;
  if (task.writesOutput && output < 0) ::_exit(EXIT_FAILURE);
  if (::dup2(task.diagnostics, STDOUT_FILENO) < 0) ::_exit(EXIT_FAILURE);
  if (task.standardError >= 0) ::dup2(task.standardError, STDERR_FILENO);
  if (task.quiet) silenceStandardError();
  if (task.limits.memory != 0) limitMemory(task.limits.memory);
  std::set_new_handler([] { ::_exit(kWorkerOutOfMemory); });
  runWorker(task, ends, output);
  // Runs the destructors of the module's static objects and what it gave to atexit. The program has
  // no static object that minds. What is thrown there would end in a message of the C++ library.
  std::set_terminate([] { ::_exit(kWorkerThrew); });
  std::exit(areDiagnosticsLost() ? kWorkerLostDiagnostics : EXIT_SUCCESS);
}

}  // namespace host
