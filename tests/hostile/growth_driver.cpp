// Parses hostile texts, for a counter of instructions to watch from outside.
//
//   growth_driver --list                      prints the names of the texts
//   growth_driver NAMES BYTES ...             parses the text at the first size, for what is done
//                                             once in a process, then an empty line,
//                                             then the text at each of the sizes
//   growth_driver --baseline NAMES BYTES ...  makes each text, but parses the empty line
//   growth_driver --outline NAMES BYTES ...   makes the outline of each, the empty line's too
//   growth_driver --answers NAMES BYTES ...   the same without the outlines
//   growth_driver --write-answer FILE ANSWER  parses a file and writes the answer to the other
//
// The answers that outlines are made from come from processes started with --write-answer: a
// counter that simulates the processor does not follow them there, and the parse runs at full
// speed.
//
// NAMES are separated by commas. Each text has a process of its own, whose number is printed behind
// the name: starting the counter takes longer than most texts.
//
// The empty line costs what a program and a run cost whatever the text is.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "hostile/generators.h"
#include "outline/outline.h"
#include "plugin/plugin_api.h"
#include "support/redirected.h"
#include "support/temp_dir.h"

namespace {

const hostile::Generator& generatorNamed(std::string_view name) {
  const auto list = hostile::generators();
  const auto found = std::find_if(list.begin(), list.end(),
                                  [name](const auto& each) { return each.name == name; });
  if (found == list.end()) throw std::runtime_error("no text of the name " + std::string(name));
  return *found;
}

std::size_t parseSize(std::string_view digits) {
  std::size_t size = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, size);
  if (error != std::errc() || stop != end || size == 0) {
    throw std::runtime_error("no number of bytes: " + std::string(digits));
  }
  return size;
}

// A plain name, so that a counter can be told to watch this function alone.
extern "C" void outlineText(std::string_view source, std::string_view answer) {
  host::outline::makeOutline(source, answer);
}

std::string_view parse(const char* path) {
  const char* answer = nullptr;
  {
    const support::Redirected output(STDOUT_FILENO, "/dev/null", O_WRONLY);
    const support::Redirected errors(STDERR_FILENO, "/dev/null", O_WRONLY);
    answer = ParseJS(path, nullptr);
  }
  // For an error answer the count would be meaningless.
  if (answer == nullptr || !std::string_view(answer).starts_with("[\n")) {
    throw std::runtime_error(answer == nullptr ? "no answer" : answer);
  }
  return answer;
}

void writeAnswer(const char* path, const char* answerPath) {
  std::ofstream file(answerPath, std::ios::binary);
  const std::string_view answer = parse(path);
  file.write(answer.data(), static_cast<std::streamsize>(answer.size()));
  file.close();
  if (!file) throw std::runtime_error(std::string("cannot write ") + answerPath);
}

void waitForSuccess(pid_t child, std::string_view name) {
  int status = 0;
  if (waitpid(child, &status, 0) != child || status != 0) {
    throw std::runtime_error("failed: " + std::string(name));
  }
}

const char* program = nullptr;

// The answer for a file, from another process.
std::string answerFor(std::string path) {
  std::string answerPath = path + ".answer";
  std::string word = "--write-answer";
  std::string name = program;
  char* const words[] = {name.data(), word.data(), path.data(), answerPath.data(), nullptr};
  pid_t child = 0;
  if (posix_spawn(&child, program, nullptr, nullptr, words, environ) != 0) {
    throw std::runtime_error("cannot start " + name);
  }
  waitForSuccess(child, path);
  std::string answer(std::filesystem::file_size(answerPath), '\0');
  std::ifstream file(answerPath, std::ios::binary);
  if (!file.read(answer.data(), static_cast<std::streamsize>(answer.size()))) {
    throw std::runtime_error("cannot read " + answerPath);
  }
  return answer;
}

enum class Work { kText, kEmptyLine, kOutline, kAnswer };

void run(std::string_view name, std::span<char* const> sizes, Work work) {
  const hostile::Generator& generator = generatorNamed(name);
  const support::TempDir directory;
  const std::string extension = generator.extension;
  const std::string emptyLine = directory.write("line" + extension, "\n");
  const auto runOver = [&](std::string_view source, const std::string& path) {
    if (work == Work::kText || work == Work::kEmptyLine) {
      parse((work == Work::kText ? path : emptyLine).c_str());
      return;
    }
    const std::string answer = answerFor(path);
    if (work == Work::kOutline) outlineText(source, answer);
  };
  const auto runAt = [&](const char* size) {
    // Written in either case, so that the counts differ by the parsing alone.
    const std::string source = generator.generate(parseSize(size));
    runOver(source, directory.write("text" + extension, source));
  };
  runAt(sizes.front());
  runOver("\n", emptyLine);
  for (const char* size : sizes) runAt(size);
}

// Runs one text in a child process and prints "NAME PROCESS".
void runApart(std::string_view name, std::span<char* const> sizes, Work work) {
  const pid_t child = fork();
  if (child == 0) {
    try {
      run(name, sizes, work);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "growth_driver: %s\n", error.what());
      std::_Exit(1);
    }
    std::_Exit(0);
  }
  if (child < 0) throw std::runtime_error("cannot start a process");
  waitForSuccess(child, name);
  std::printf("%.*s %d\n", static_cast<int>(name.size()), name.data(), static_cast<int>(child));
  std::fflush(stdout);  // or the next child writes it too
}

void runAll(std::string_view names, std::span<char* const> sizes, Work work) {
  while (!names.empty()) {
    const std::size_t end = std::min(names.find(','), names.size());
    runApart(names.substr(0, end), sizes, work);
    names.remove_prefix(std::min(end + 1, names.size()));
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    program = argv[0];
    const std::span<char* const> words(argv + 1, argv + argc);
    if (argc == 2 && std::string_view(argv[1]) == "--list") {
      for (const hostile::Generator& each : hostile::generators()) std::puts(each.name);
    } else if (argc >= 4 && std::string_view(argv[1]) == "--baseline") {
      runAll(argv[2], words.subspan(2), Work::kEmptyLine);
    } else if (argc >= 4 && std::string_view(argv[1]) == "--outline") {
      runAll(argv[2], words.subspan(2), Work::kOutline);
    } else if (argc >= 4 && std::string_view(argv[1]) == "--answers") {
      runAll(argv[2], words.subspan(2), Work::kAnswer);
    } else if (argc == 4 && std::string_view(argv[1]) == "--write-answer") {
      writeAnswer(argv[2], argv[3]);
    } else if (argc >= 3) {
      runAll(argv[1], words.subspan(1), Work::kText);
    } else {
      std::fputs(
          "usage: growth_driver --list\n"
          "       growth_driver [--baseline | --outline | --answers] NAMES BYTES ...\n"
          "       growth_driver --write-answer FILE ANSWER\n",
          stderr);
      return 2;
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "growth_driver: %s\n", error.what());
    return 1;
  }
  return 0;
}
