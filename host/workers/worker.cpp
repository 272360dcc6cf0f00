#include "workers/worker.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

#include "records/answer_path.h"
#include "records/record_escapes.h"
#include "system/display_text.h"
#include "system/failure.h"
#include "system/io.h"
#include "system/platform.h"
#include "workers/plugin_module.h"
#include "workers/worker_frame.h"

namespace host {
namespace {

// The module keeps its trees, so a worker is replaced after so many files or so much memory.
constexpr unsigned kMaxFiles = 1000;
constexpr std::uint64_t kMaxMemoryKept = std::uint64_t{256} << 20U;

// To load the module, and to end with it.
constexpr std::chrono::seconds kTimeBesidesFiles{60};

constexpr std::size_t kRequestsAtOnce = 64;
constexpr std::string_view kRecordsOpening = "[\n";
constexpr std::string_view kErrorOpening = R"([{"error": ")";
constexpr std::string_view kErrorClosing = R"("}])";
constexpr const char* kEmptyMessage = "File is empty: ";
constexpr const char* kUnopenedMessage = "Could not open file: ";
// The module may find that its memory is at an end before the program does.
constexpr std::string_view kMemoryAnswer = R"([{"error": "Parser exception: std::bad_alloc"}])";

// From now on the process has so long; then SIGALRM kills it, whatever it is at. 0 takes that back.
void limitTime(std::chrono::microseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  itimerval timer{};
  timer.it_value.tv_sec = static_cast<decltype(timer.it_value.tv_sec)>(seconds.count());
  timer.it_value.tv_usec = static_cast<decltype(timer.it_value.tv_usec)>((time - seconds).count());
  ::setitimer(ITIMER_REAL, &timer, nullptr);
}

constexpr std::chrono::microseconds kNoTimeLimit{0};

// What an error answer tells is wrong with the file, and of which file if it does not say so.
std::string errorMessage(const std::string& file, std::string_view answer) {
  if (!answer.starts_with(kErrorOpening) || !answer.ends_with(kErrorClosing)) {
    return file + ": the answer is neither records nor an error";
  }
  answer.remove_prefix(kErrorOpening.size());
  answer.remove_suffix(kErrorClosing.size());
  std::string message = unescaped(answer);
  return message.ends_with(file) ? message : file + ": " + message;
}

std::string errorAnswer(const std::string& message) {
  return std::string(kErrorOpening).append(escaped(message)).append(kErrorClosing);
}

// 0 if the file can be opened by now.
int errorOfOpening(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return errno;
  ::close(file);
  return 0;
}

// What C's stdout still holds goes out. The module does not look at the result of its writes, but
// the stream remembers a failed one.
bool areDiagnosticsLost() { return std::fflush(stdout) != 0 || std::ferror(stdout) != 0; }

void silenceStandardError() {
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere != STDERR_FILENO) {
    ::dup2(nowhere, STDERR_FILENO);
    ::close(nowhere);
  }
}

class Worker {
 public:
  // The output is the descriptor for texts that are not sent to the parent, or negative.
  Worker(const WorkerTask& task, int results, int output, CapturedErrors& errors)
      : task_(task), results_(results), output_(output), errors_(errors), plugin_(task.plugin) {}

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
    // Should it fail, there is no parent any more.
    if (writeFrame(results_, frame, text) != 0) ::_exit(EXIT_FAILURE);
  }

  // The parent hears of it before the first byte: a text that was begun must not be written again.
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
    if (mayBeRead(input, report, frame)) ask(input, report, frame);
    report.message = frame.message;
    frame.status = report.status;
    std::string fault;
    const bool isAnswer = task_.format->isAnswer && frame.hasAnswer;
    if (!isAnswer) fault = appendText(report, task_, frame.text);
    std::string_view text = isAnswer ? report.answer : frame.text;
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
    send(frame, text);
  }

  // The size of a file is compared before the module reads it whole. So is its kind, which may have
  // changed since it was named.
  bool mayBeRead(const Input& input, FileReport& report, Frame& frame) {
    struct stat status {};
    isDirectory_ = false;
    if (::stat(input.textPath().c_str(), &status) != 0) return true;  // explain tells why
    report.sourceBytes = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
    isDirectory_ = S_ISDIR(status.st_mode);
    if (!S_ISREG(status.st_mode) && !isDirectory_) {
      report.status = FileStatus::kFailed;
      frame.message = onOneLine(input.path + ": " + kIrregular);
      return false;
    }
    if (task_.limits.sourceBytes != 0 && report.sourceBytes > task_.limits.sourceBytes) {
      report.status = FileStatus::kTooLarge;
      frame.message = onOneLine(input.path + ": too large; see --max-size");
      return false;
    }
    return true;
  }

  void ask(const Input& input, FileReport& report, Frame& frame) {
    const auto start = std::chrono::steady_clock::now();
    if (!task_.quiet) errors_.begin();
    const char* const answer = plugin_.parse(input.textPath(), task_.defines);
    if (!task_.quiet) errors_.end();
    if (task_.times) {
      report.microseconds =
          static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                         std::chrono::steady_clock::now() - start)
                                         .count());
    }
    frame.warnings = errors_.take();
    if (answer == nullptr) {
      report.status = FileStatus::kFailed;
      frame.message = onOneLine(input.path + ": no memory for the answer");
      return;
    }
    report.answer = answer;
    frame.hasAnswer = true;
    const std::uint64_t limit = task_.limits.answerBytes;
    if (limit != 0 && report.answer.size() > limit) ::_exit(kWorkerTooLarge);
    if (report.answer == kMemoryAnswer) ::_exit(kWorkerOutOfMemory);
    if (!input.copy.empty()) {
      renamedAnswer_ = withPath(report.answer, input.copy, input.path);
      report.answer = renamedAnswer_;
    }
    if (isDirectory_) {
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
  int results_;
  int output_;
  CapturedErrors& errors_;
  PluginModule plugin_;
  std::uint64_t memoryAtStart_ = peakMemory();  // with all that the parent has
  std::string renamedAnswer_;                   // of a text that is kept in another file
  bool isDirectory_ = false;                    // the file at hand
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

void work(const WorkerTask& task, int requests, int results, CapturedErrors& errors) {
  const int output =
      task.writesOutput ? ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, kFirstFreeDescriptor) : -1;
  if (task.writesOutput && output < 0) ::_exit(EXIT_FAILURE);
  if (::dup2(task.diagnostics, STDOUT_FILENO) < 0) ::_exit(EXIT_FAILURE);
  if (task.standardError >= 0) ::dup2(task.standardError, STDERR_FILENO);
  if (task.quiet) silenceStandardError();
  if (task.limits.memory != 0) limitMemory(task.limits.memory);
  std::set_new_handler([] { ::_exit(kWorkerOutOfMemory); });
  try {
    limitTime(kTimeBesidesFiles);
    Worker worker(task, results, output, errors);
    limitTime(kNoTimeLimit);
    if (writeFrame(results, Frame{}, {}) == 0) answerRequests(worker, requests);
    limitTime(kTimeBesidesFiles);  // to the very end
  } catch (const Failure& failure) {
    Frame unusable;
    unusable.kind = FrameKind::kUnusable;
    unusable.message = failure.what();
    writeFrame(results, unusable, {});
  }
  // The module's own ends of life, such as those of its static objects, are in this.
  std::exit(areDiagnosticsLost() ? kWorkerLostDiagnostics : EXIT_SUCCESS);
}

}  // namespace host
