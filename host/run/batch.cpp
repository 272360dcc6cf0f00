#include "run/batch.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "run/progress.h"
#include "run/stderr_relay.h"
#include "system/io.h"
#include "system/messages.h"
#include "system/platform.h"
#include "system/text_parts.h"
#include "workers/plugin_module.h"
#include "workers/worker_pool.h"

namespace host {
namespace {

// How often to check what sends no event: a reader that has gone, a worker that is stopped.
constexpr int kIdleMilliseconds = 500;
constexpr int kProgressMilliseconds = 100;

// Writes the lines in the order of their bytes, each once.
void writeSorted(std::string_view text, Output& output) {
  constexpr std::size_t kWriteBytes = std::size_t{256} * 1024;
  std::vector<std::string_view> lines = partsOf(text, '\n');
  if (!lines.empty() && lines.back().empty()) lines.pop_back();
  std::sort(lines.begin(), lines.end());
  lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
  std::string block;
  for (const std::string_view line : lines) {
    block.append(line).append("\n");
    if (block.size() < kWriteBytes) continue;
    output.write(block);
    block.clear();
  }
  output.write(block);
}

class Batch {
 public:
  Batch(const WorkerTask& task, const RunOptions& options, const Diagnostics& diagnostics,
        const Destination& destination)
      : task_(task),
        options_(options),
        diagnostics_(diagnostics),
        output_(destination.output),
        answerDirectory_(destination.directory),
        taker_(destination.take),
        progress_(isProgressWanted(), task.inputs->reportCount),
        errors_(progress_.isShown()),
        pool_(task_, options.jobs, diagnostics.areKept()) {
    task_.standardError = errors_.writeEnd();
  }

  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;
  ~Batch() { passErrorsOn(true); }

  bool run() {
    const auto& inputs = task_.inputs->all;
    for (std::uint64_t index = 0; index < inputs.size(); ++index) take(index, inputs[index]);
    if (!pool_.finish(idleUntilTheEnd())) throw diagnostics_.failure();
    if (output_ != nullptr) finishOutput();
    if (options_.strict && task_.inputs->reportCount + task_.inputs->unchangedCount == 0) {
      printMessage("nothing to read");  // not about a single file, so --quiet keeps it
      warned_ = true;
    }
    if (isSummaryWanted()) sumUp();
    return failed_ == 0 && !(options_.strict && warned_);
  }

 private:
  // Other output on the terminal would run into the progress line.
  bool isProgressWanted() const {
    const bool isOutputSeen = output_ != nullptr && terminalWidth(STDOUT_FILENO) != 0;
    return options_.progress && !options_.quiet && !isOutputSeen &&
           diagnostics_.where() != "stderr";
  }

  bool isSummaryWanted() const {
    const bool isOverSeveral = options_.walkRules.recursive || task_.inputs->reportCount > 1;
    return !options_.quiet && isOverSeveral && terminalWidth(STDERR_FILENO) != 0;
  }

  void sumUp() {
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start_;
    std::array<char, 32> seconds;
    std::snprintf(seconds.data(), seconds.size(), "%.1f s", time.count());
    const std::uint64_t count = task_.inputs->reportCount;
    std::string text = std::to_string(count) + (count == 1 ? " file, " : " files, ");
    const auto append = [&text](std::uint64_t some, std::string_view what) {
      if (some > 0) text.append(std::to_string(some)).append(what).append(", ");
    };
    append(task_.inputs->unchangedCount, " unchanged");
    append(empty_, " empty");
    append(task_.inputs->skippedCount, " binary or ignored");
    append(failed_, " failed");
    progress_.erase();
    printMessage(text + seconds.data());
  }

  void take(std::uint64_t index, const Input& input) {
    if (input.kind == InputKind::kFile) {
      takeResult(input, pool_.waitFor(index, idleOver(input)));
      return;
    }
    const std::string message = input.path + ": " + input.reason;
    if (input.kind == InputKind::kPassedOver) {
      warn(message);
    } else {
      takeResult(input, unansweredResult(task_, input, FileStatus::kFailed, message));
    }
  }

  Idle idleUntilTheEnd() {
    return {kProgressMilliseconds, errors_.readEnd(), [this] { passErrorsOn(false); }};
  }

  Idle idleOver(const Input& input) {
    return {progress_.isShown() ? kProgressMilliseconds : kIdleMilliseconds, errors_.readEnd(),
            [this, &input] {
              passErrorsOn(false);
              progress_.show(done_, failed_, input.path);
              if (output_ != nullptr) output_->checkReader();
            }};
  }

  void takeResult(const Input& input, const FileResult& result) {
    passErrorsOn(false);
    const bool isDelivered = deliver(input, result);
    ++done_;
    if (result.diagnosticsLost) throw diagnostics_.failure();
    if (!result.firstFailure.empty()) {
      warn(input.path + ": succeeded on the second attempt; first failure: " + result.firstFailure);
    }
    if (result.hasChanged) warn(input.path + ": changed while it was read");
    if (!result.omitted.empty()) reportOmitted(input, result);
    if (!result.warnings.empty()) warn(input.path + ": " + result.warnings);
    if (result.status == FileStatus::kEmpty) ++empty_;
    if (!isGood(result.status)) tell(result.message);
    if (!isGood(result.status) || !isDelivered) ++failed_;
    progress_.show(done_, failed_, input.path);
  }

  // An unpaired apostrophe ends the reading of prose, and a tree of scripts holds much of it: for
  // such files of a walk the omitted key has to do.
  void reportOmitted(const Input& input, const FileResult& result) {
    if (!input.isFound || !result.isOtherText) warn(input.path + ": " + result.omitted);
  }

  // Returns false, with a message, if the answer cannot be written.
  bool deliver(const Input& input, const FileResult& result) {
    if (answerDirectory_ != nullptr) return deliverToFile(input, result);
    if (taker_) {
      taker_(input, result);
    } else {
      deliverToOutput(result);
    }
    return true;
  }

  bool deliverToFile(const Input& input, const FileResult& result) {
    if (const std::optional<std::string> other = answerDirectory_->otherOwner(input.path)) {
      tell(input.path + ": not written: its answer file would overwrite that of " + *other +
           ", since the file system ignores case");
      return false;
    }
    if (result.hasAnswer || !result.text.empty()) {
      answerDirectory_->write(input.path, result.text);
    } else {
      answerDirectory_->remove(input.path);
    }
    return true;
  }

  void deliverToOutput(const FileResult& result) {
    if (result.isWritten) {
      output_->check(result.outputError);
      return;
    }
    if (!isBegun_) {
      begin();
    } else {
      output_->write(task_.format->separator);
    }
    if (task_.format->isSorted) {
      lines_ += result.text;
    } else {
      output_->write(result.text);
    }
  }

  void begin() {
    isBegun_ = true;
    if (task_.wholeDocuments) return;
    std::string text;
    task_.format->begin(task_.settings, text);
    output_->write(text);
  }

  void finishOutput() {
    if (task_.wholeDocuments) return;
    if (!isBegun_) begin();
    if (task_.format->isSorted) writeSorted(lines_, *output_);
    std::string text;
    task_.format->end(task_.settings, text);
    output_->write(text);
  }

  // Prints what the module wrote to standard error: whole lines, or all of it.
  void passErrorsOn(bool all) {
    const std::string text = errors_.take(all);
    if (text.empty()) return;
    progress_.erase();
    writeAll(STDERR_FILENO, text);
  }

  void tell(std::string_view message) {
    if (options_.quiet) return;
    progress_.erase();
    printMessage(message);
  }

  void warn(std::string_view message) {
    tell(message);
    warned_ = true;
  }

  WorkerTask task_;
  const RunOptions& options_;
  const Diagnostics& diagnostics_;
  Output* output_;
  AnswerDirectory* answerDirectory_;
  std::function<void(const Input&, const FileResult&)> taker_;
  Progress progress_;
  StderrRelay errors_;
  WorkerPool pool_;
  std::uint64_t done_ = 0;
  std::uint64_t failed_ = 0;
  std::uint64_t empty_ = 0;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::string lines_;  // of a format whose lines are sorted
  bool warned_ = false;
  bool isBegun_ = false;
};

}  // namespace

WorkerTask commonTask(const RunOptions& options, const Diagnostics& diagnostics) {
  WorkerTask task;
  task.plugin = pluginPath(options.plugin);
  task.defines = options.defines;
  task.limits = options.limits;
  task.diagnostics = diagnostics.descriptor();
  task.quiet = options.quiet;
  task.countsWarnings = options.strict || !options.quiet;
  return task;
}

bool answerFiles(const WorkerTask& task, const RunOptions& options, const Diagnostics& diagnostics,
                 const Destination& destination) {
  return Batch(task, options, diagnostics, destination).run();
}

}  // namespace host
