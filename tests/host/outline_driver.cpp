// Prints the outlines of files and what their answers leave out as JSON, a line a file:
//
//   outline_driver MODULE FILE...
//
// A worker process of its own for each file would be of no use here: the module is loaded once.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "formats/json_text.h"
#include "outline/omissions.h"
#include "outline/outline.h"
#include "plugin/plugin_api.h"

namespace {

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void appendItem(const host::outline::Item& item, std::string& out) {
  out += "{\"kind\":\"";
  out += host::outline::kindWord(item.kind);
  out += "\",";
  host::appendJsonMember(out, "name", item.name);
  const auto append = [&out](std::string_view key, std::int32_t value) {
    out.append(",\"").append(key).append("\":");
    host::appendNumber(out, value);
  };
  append("record", item.record);
  append("line", item.firstLine);
  append("endLine", item.lastLine);
  append("parent", item.parent);
  append("depth", item.depth);
  out += '}';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return EXIT_FAILURE;
  void* const module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    std::cerr << dlerror() << "\n";
    return EXIT_FAILURE;
  }
  const auto parse = reinterpret_cast<decltype(&ParseJS)>(dlsym(module, "ParseJS"));
  if (parse == nullptr) return EXIT_FAILURE;
  // The module reports every node on standard output, which is kept for the outlines.
  std::FILE* const out = fdopen(dup(STDOUT_FILENO), "w");
  if (out == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) return EXIT_FAILURE;
  for (int i = 2; i < argc; ++i) {
    const std::string path = argv[i];
    const std::string_view answer = parse(path.c_str(), "");
    const std::string source = bytesOf(path);
    std::string line = "{";
    host::appendJsonMember(line, "path", path);
    line += ",\"items\":[";
    bool isFirst = true;
    for (const host::outline::Item& item : host::outline::makeOutline(source, answer)) {
      if (!isFirst) line += ',';
      isFirst = false;
      appendItem(item, line);
    }
    line += "],\"omitted\":[";
    isFirst = true;
    for (const host::outline::Omission& each : host::outline::findOmissions(source, answer)) {
      if (!isFirst) line += ',';
      isFirst = false;
      host::appendJsonString(line, host::outline::describe(each));
    }
    line += "]}\n";
    std::fwrite(line.data(), 1, line.size(), out);
  }
  return std::fclose(out) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
