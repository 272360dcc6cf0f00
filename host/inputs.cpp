#include "inputs.h"

#include <filesystem>
#include <utility>

#include "directory_walk.h"

namespace host {
namespace {

void add(Inputs& inputs, std::string path, InputKind kind, const std::error_code& reason = {}) {
  inputs.all.push_back({std::move(path), kind, reason, inputs.reportCount});
  if (kind != InputKind::kPassedOver) ++inputs.reportCount;
  if (kind == InputKind::kFile) ++inputs.fileCount;
}

bool isSameDirectory(const std::string& path, const std::string& other) {
  std::error_code unseen;
  return !other.empty() && std::filesystem::equivalent(path, other, unseen);
}

}  // namespace

std::string irregularFileMessage(const std::string& path) {
  return path + ": not a regular file, skipped";
}

Inputs findInputs(const std::vector<std::string>& names, const CommandLine& commandLine,
                  const std::string& passedOver) {
  Inputs inputs;
  const WalkActions actions = {
      [&](const std::string& path) { return !isSameDirectory(path, passedOver); },
      [&](const std::string& path) { add(inputs, path, InputKind::kFile); },
      [&](const std::string& path) { add(inputs, path, InputKind::kPassedOver); },
      [&](const std::string& path, const std::error_code& reason) {
        add(inputs, path, InputKind::kUnreadableDirectory, reason);
      }};
  for (const std::string& name : names) {
    const FileKind kind = kindOf(name);
    if (kind == FileKind::kDirectory && commandLine.recursive) {
      walk(name, commandLine.walkRules, actions);
    } else {
      add(inputs, name, kind == FileKind::kOther ? InputKind::kIrregular : InputKind::kFile);
    }
  }
  return inputs;
}

}  // namespace host
