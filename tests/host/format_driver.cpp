// Writes reports in one of the program's formats, without the module:
//
//   format_driver FORMAT [PATH STATUS MESSAGE ANSWER_FILE]...
//
// STATUS is the number of a FileStatus; of an ANSWER_FILE that is empty there is no answer.

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "formats/format.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const host::Format* const format = host::findFormat(arguments.at(0));
  if (format == nullptr) return EXIT_FAILURE;
  host::FormatSettings settings;
  settings.fileCount = arguments.size() / 4;
  std::string out;
  format->begin(settings, out);
  for (std::size_t at = 1; at < arguments.size(); at += 4) {
    std::string answer;
    if (const std::string& name = arguments.at(at + 3); !name.empty()) {
      std::ifstream file(name, std::ios::binary);
      answer.assign(std::istreambuf_iterator<char>(file), {});
    }
    host::FileReport report;
    report.index = at / 4;
    report.path = arguments[at];
    report.status = static_cast<host::FileStatus>(std::stoi(arguments.at(at + 1)));
    report.message = arguments.at(at + 2);
    report.answer = answer;
    report.sourceBytes = answer.size();
    if (at > 1) out += format->separator;
    format->file(report, settings, out);
  }
  format->end(settings, out);
  std::cout.write(out.data(), static_cast<std::streamsize>(out.size()));
  return std::cout.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}
