// Writes what each target begins with: the inputs of the cases and short hostile texts, in the form
// that the target reads.
//
//   seed_writer FOLDER
//
// The seeds of a target go into the folder of its name.
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
  std::string extension;  // with the dot
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

// Every text is a file of every route. One setting each: the settings take turns.
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

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (end > 0) lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

// Lines are statements, and so is a text as a whole.
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

// A node a line. What a node is besides its text follows from the line's number: each value comes
// with many values of the others.
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

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 2) throw std::runtime_error("usage: seed_writer FOLDER");
    const fs::path folder = argv[1];
    const std::vector<Text> texts = allTexts();
    for (const RouteSeeds& route : kRoutes) writeRouteSeeds(folder, route, texts);
    writeCleanerSeeds(folder, texts);
    writeOutlineSeeds(folder, texts);
    writeTokeniserSeeds(folder, texts);
    writeRecordSeeds(folder, texts);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "seed_writer: %s\n", error.what());
    return 1;
  }
  return 0;
}
