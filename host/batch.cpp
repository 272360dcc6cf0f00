#include "batch.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "directory_walk.h"

namespace host {
namespace {

constexpr std::string_view kRecordsOpening = "[\n";

// What is wrong with a file whose answer holds no records: the text of its error answer.
std::string errorMessage(const std::string& file, std::string_view answer) {
  constexpr std::string_view kOpening = R"([{"error": ")";
  constexpr std::string_view kClosing = R"("}])";
  if (!answer.starts_with(kOpening) || !answer.ends_with(kClosing)) {
    return file + ": the answer is neither records nor an error";
  }
  answer.remove_prefix(kOpening.size());
  answer.remove_suffix(kClosing.size());
  return std::string(answer);
}

class Batch {
 public:
  Batch(const CommandLine& commandLine, const PluginModule& plugin, Output& output,
        const AnswerDirectory* answerDirectory)
      : commandLine_(commandLine),
        plugin_(plugin),
        output_(output),
        answerDirectory_(answerDirectory) {}

  void take(const std::string& name) {
    const FileKind kind = kindOf(name);
    if (kind == FileKind::kOther) {
      skip(name);
      allGood_ = false;
    } else if (kind == FileKind::kDirectory && commandLine_.recursive) {
      walk(name, commandLine_.walkRules,
           {[this](const std::string& path) { return !isAnswerDirectory(path); },
            [this](const std::string& path) { answer(path); },
            [](const std::string& path) { skip(path); },
            [this](const std::string& path, const std::error_code& reason) {
              fail(path + ": " + reason.message());
            }});
    } else {
      answer(name);
    }
  }

  bool allGood() const { return allGood_; }

 private:
  // Answers are not read as sources, should their directory lie in the one that is walked.
  bool isAnswerDirectory(const std::string& path) const {
    std::error_code unseen;
    return answerDirectory_ != nullptr &&
           std::filesystem::equivalent(path, answerDirectory_->path(), unseen);
  }

  static void skip(const std::string& path) { complain(path + ": not a regular file, skipped"); }

  void fail(const std::string& message) {
    complain(message);
    allGood_ = false;
  }

  void answer(const std::string& file) {
    const char* const text = plugin_.parse(file, commandLine_.defines);
    if (text != nullptr) deliver(file, text);
    output_.checkDiagnostics();
    if (text == nullptr) {
      fail(file + ": no memory for the answer");
    } else if (!std::string_view(text).starts_with(kRecordsOpening)) {
      fail(errorMessage(file, text));
    }
  }

  void deliver(const std::string& file, std::string_view text) {
    if (answerDirectory_ != nullptr) {
      answerDirectory_->write(file, text);
    } else {
      output_.write(text);
    }
  }

  const CommandLine& commandLine_;
  const PluginModule& plugin_;
  Output& output_;
  const AnswerDirectory* answerDirectory_;
  bool allGood_ = true;
};

}  // namespace

bool answerFiles(const std::vector<std::string>& names, const CommandLine& commandLine,
                 const PluginModule& plugin, Output& output,
                 const AnswerDirectory* answerDirectory) {
  Batch batch(commandLine, plugin, output, answerDirectory);
  for (const std::string& name : names) batch.take(name);
  return batch.allGood();
}

}  // namespace host
