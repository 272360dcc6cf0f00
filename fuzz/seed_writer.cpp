// Writes the seed inputs of each target: the inputs of the whole-file cases and short hostile
// texts, in the form that the target reads.
//
//   seed_writer FOLDER
//
// A target's seeds go into the folder named after it.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "defines.h"
#include "hostile/generators.h"
#include "outline_target.h"
#include "routes.h"
#include "whole_file/case_files.h"
#include "written_tree.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kHostileBytes = 600;

struct Text {
  std::string name;
  std::string extension;  // including the dot
  std::string bytes;
};

std::vector<Text> allTexts() {
  std::vector<Text> texts;
  for (const whole_file::CaseFile& file : whole_file::loadCases()) {
    std::string name = file.name;
    std::replace(name.begin(), name.end(), '/', '_');
    texts.push_back({name, fs::path(file.input).extension().string(),
                     whole_file::readFile(file.folder / file.input)});
  }
  for (const hostile::Generator& generator : hostile::generators()) {
    texts.push_back({std::string("hostile_") + generator.name, generator.extension,
                     generator.generate(kHostileBytes)});
  }
  return texts;
}

void write(const fs::path& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

std::size_t nameWith(std::string_view extension, std::span<const std::string_view> names) {
  const auto found = std::find_if(names.begin(), names.end(), [extension](std::string_view name) {
    return name.ends_with(extension);
  });
  return found == names.end() ? 0 : static_cast<std::size_t>(found - names.begin());
}

// Every text becomes a file for every route, each with one setting; the settings rotate.
struct RouteSeeds {
  const char* target;
  std::span<const std::string_view> names;
};
constexpr std::array<RouteSeeds, 3> kRoutes{
    {{"script", fuzz::kScriptNames}, {"page", fuzz::kPageNames}, {"scanner", fuzz::kScannerNames}}};

void writeRouteSeeds(const fs::path& folder, const RouteSeeds& route,
                     const std::vector<Text>& texts) {
  fs::create_directories(folder / route.target);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::size_t name = nameWith(texts[i].extension, route.names);
    const unsigned char pick = fuzz::byteFor(name, i % fuzz::kSettings.size(), route.names);
    write(folder / route.target / texts[i].name, static_cast<char>(pick) + texts[i].bytes);
  }
}

void writeCleanerSeeds(const fs::path& folder, const std::vector<Text>& texts) {
  fs::create_directories(folder / "cleaner");
  for (std::size_t i = 0; i < texts.size(); ++i) {
    write(folder / "cleaner" / texts[i].name, static_cast<char>(i % 9) + texts[i].bytes);
  }
}

// Every text under the name that fits it, or the first.
void writeOutlineSeeds(const fs::path& folder, const std::vector<Text>& texts) {
  fs::create_directories(folder / "outline");
  for (const Text& text : texts) {
    const std::size_t name = nameWith(text.extension, fuzz::kOutlineNames);
    write(folder / "outline" / text.name, static_cast<char>(name) + text.bytes);
  }
}

// Each text as messages, which are edits too.
void writeLspSeeds(const fs::path& folder, const std::vector<Text>& texts) {
  fs::create_directories(folder / "lsp");
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string size = std::to_string(texts[i].bytes.size());
    write(folder / "lsp" / texts[i].name,
          static_cast<char>(i % 2) + ("Content-Length: " + size) + "\r\n\r\n" + texts[i].bytes);
    write(folder / "lsp" / (texts[i].name + "_as_edits"),
          static_cast<char>(i % 2) + texts[i].bytes);
  }
}

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (end > 0) lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

// Each line is a statement, and so is the text as a whole.
void writeTokeniserSeeds(const fs::path& folder, const std::vector<Text>& texts) {
  fs::create_directories(folder / "tokeniser");
  for (const Text& text : texts) {
    write(folder / "tokeniser" / text.name, text.bytes);
    if (text.name.starts_with("hostile_")) continue;
    const std::vector<std::string_view> lines = linesOf(text.bytes);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      write(folder / "tokeniser" / (text.name + "_" + std::to_string(i)), lines[i]);
    }
  }
}

// A function that its parent does not list.
constexpr std::string_view kHiding = "function f(TTTTT) {";

// One node per line. Everything but its text follows from the line's number, so that each value
// meets many values of the others.
void writeRecordSeeds(const fs::path& folder, const std::vector<Text>& texts) {
  fs::create_directories(folder / "record_writer");
  for (std::size_t i = 0; i < texts.size(); ++i) {
    std::string tree(1, i % 4 == 0 ? fuzz::kFreeNumbers : '0');
    const std::vector<std::string_view> lines = linesOf(texts[i].bytes);
    for (std::size_t line = 0; line < lines.size(); ++line) {
      const std::size_t mixed = line * 7 + i;
      for (const std::size_t part : {mixed % 3, mixed % 19, mixed % 45, mixed % 251}) {
        tree.push_back(static_cast<char>(part));
      }
      const bool isMiddle = line == lines.size() / 2;
      tree.append(isMiddle ? kHiding : lines[line]).push_back(fuzz::kTextEnd);
    }
    write(folder / "record_writer" / texts[i].name, tree);
  }
}

// The most bytes of an answer: what a fuzzer takes of a file is not much longer.
constexpr std::size_t kAnswerBytes = 3'900;

// An answer with as many of its first records as fit.
std::string shortAnswer(const std::string& answer) {
  constexpr std::string_view kBetween = "\n  },\n";
  if (answer.size() <= kAnswerBytes) return answer;
  const std::size_t end = answer.rfind(kBetween, kAnswerBytes);
  if (end == std::string::npos) throw std::runtime_error("a record longer than a seed");
  return answer.substr(0, end) + "\n  }\n]\n";
}

void writeAnswerSeeds(const fs::path& folder) {
  fs::create_directories(folder / "record_reader");
  for (const whole_file::CaseFile& file : whole_file::loadCases()) {
    std::string name = file.name;
    std::replace(name.begin(), name.end(), '/', '_');
    write(folder / "record_reader" / name, shortAnswer(file.records));
  }
  write(folder / "record_reader" / "no_records", "[\n]\n");
  write(folder / "record_reader" / "error", "[{\"error\": \"File is empty: a.js\"}]");
}

// Each text is a file with a few defines, and its lines are defines.
void writeDefinesSeeds(const fs::path& folder, const std::vector<Text>& texts) {
  constexpr std::array<std::string_view, 5> kDefines{"", "A", "A\n\nDEBUG", "(B)\r\n A \nA\n",
                                                     "class x {\nimport\nif (a) {"};
  fs::create_directories(folder / "defines");
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string pick(1, static_cast<char>(i % fuzz::kDefinesNames.size()));
    std::string file = pick + std::string(kDefines[i % kDefines.size()]);
    file.append(1, '\0').append(texts[i].bytes);
    write(folder / "defines" / texts[i].name, file);
    write(folder / "defines" / (texts[i].name + "_as_defines"), pick + texts[i].bytes);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 2) throw std::runtime_error("usage: seed_writer FOLDER");
    const fs::path folder = argv[1];
    const std::vector<Text> texts = allTexts();
    for (const RouteSeeds& route : kRoutes) writeRouteSeeds(folder, route, texts);
    writeCleanerSeeds(folder, texts);
    writeOutlineSeeds(folder, texts);
    writeLspSeeds(folder, texts);
    writeTokeniserSeeds(folder, texts);
    writeRecordSeeds(folder, texts);
    writeAnswerSeeds(folder);
    writeDefinesSeeds(folder, texts);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "seed_writer: %s\n", error.what());
    return 1;
  }
  return 0;
}
