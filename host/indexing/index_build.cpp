#include "indexing/index_build.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <utility>

#include "index/content_hash.h"
#include "index/index_writer.h"
#include "index/item_frame.h"
#include "indexing/ndjson_source.h"
#include "run/batch.h"
#include "run/diagnostics.h"
#include "system/failure.h"
#include "system/io.h"
#include "workers/plugin_module.h"
#include "workers/worker.h"

namespace host::indexing {
namespace {

using index::FileRow;
using index::IndexWriter;
using index::ItemFrameReader;
using index::ItemRow;

constexpr std::string_view kTool = "quorl-js " QUORL_VERSION;

// With more changes than one file in so many, the index over names is made anew.
constexpr std::size_t kFewChanges = 16;

std::string hashOfFile(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0)
    throw Failure("cannot load the plug-in: " + std::string(systemFailure(path, errno).what()));
  const std::string bytes = readToEnd(file, path);
  ::close(file);
  return index::contentHash(bytes);
}

std::string firstOf(const std::vector<std::string>& values) {
  return values.empty() ? std::string() : values.front();
}

// Puts what a worker sent into the index; a frame that breaks off is a failure of its file.
void putFrame(IndexWriter& writer, std::int64_t id, const Input& input, std::string_view frame) {
  ItemFrameReader reader(frame);
  FileRow row;
  bool isSound = reader.takeFile(row);
  const auto next = [&](ItemRow& item) {
    const ItemFrameReader::State state =
        isSound ? reader.takeItem(item) : ItemFrameReader::State::kMalformed;
    isSound = state != ItemFrameReader::State::kMalformed;
    return state == ItemFrameReader::State::kItem;
  };
  writer.putFile(id, input.path, row, next);
  if (isSound) return;
  writer.removeFile(id);
  writer.putFile(id, input.path, index::rowOfBadFrame(input.path), [](ItemRow&) { return false; });
}

WorkerTask taskFor(const RunOptions& options, const Diagnostics& diagnostics) {
  WorkerTask task = commonTask(options, diagnostics);
  task.format = &index::kFrameFormat;
  task.findsOmissions = true;
  task.keepsSources = true;
  return task;
}

// Has the files parsed and puts them into the index, or only reports on the inputs.
bool readFiles(const FileChanges& changes, const RunOptions& options, IndexWriter* writer) {
  if (changes.inputs.all.empty() && changes.inputs.unchangedCount > 0) return true;
  Diagnostics diagnostics(options.diagnostics);
  diagnostics.begin();
  WorkerTask task = taskFor(options, diagnostics);
  task.inputs = &changes.inputs;
  const auto take = [&](const Input& input, const FileResult& result) {
    const auto known = changes.ids.find(input.path);
    putFrame(*writer, known == changes.ids.end() ? writer->newFile() : known->second, input,
             result.text);
  };
  return answerFiles(task, options, diagnostics, {.take = take});
}

void putMeta(IndexWriter& writer, std::int64_t startedAt, const Origin& origin) {
  writer.setMeta("tool", {origin.tool});
  writer.setMeta("written", {std::to_string(startedAt)});
}

}  // namespace

Origin originOf(const RunOptions& options) {
  return {.tool = std::string(kTool),
          .module = hashOfFile(pluginPath(options.plugin)),
          .defines = options.defines};
}

std::string reasonToReadAll(const index::IndexReader& known, const Origin& origin) {
  const std::string tool = firstOf(known.meta("tool"));
  if (tool != origin.tool) return "made by " + tool;
  if (known.meta("argument").empty()) return "not built from files";
  if (firstOf(known.meta("module")) != origin.module) return "made with another plug-in";
  if (firstOf(known.meta("defines")) != origin.defines) return "made with other defines";
  return {};
}

std::int64_t wallClock() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

std::int64_t writtenAt(const index::IndexReader& known) {
  const std::string text = firstOf(known.meta("written"));
  std::int64_t time = 0;
  std::from_chars(text.data(), text.data() + text.size(), time);
  return time;
}

bool updateIndex(index::IndexFile& file, const Sources& sources, const Origin& origin,
                 KnownFiles known, bool isSameRecord) {
  const std::int64_t startedAt = wallClock();
  const bool isNew = known.files.empty();
  const std::size_t knownCount = known.files.size();
  Inputs found = inputsFor(sources.names, sources.options.walkRules, file.path());
  const FileChanges changes = findChanges(std::move(known), std::move(found), sources.options);
  const bool isSame = changes.inputs.reportCount == 0 && changes.gone.empty() &&
                      changes.touched.empty() && isSameRecord && !isNew;
  if (isSame) return readFiles(changes, sources.options, nullptr);

  const bool isCopy = changes.inputs.unchangedCount > 0;
  file.begin(isCopy);
  bool isGood = true;
  {
    IndexWriter writer(file.temporaryPath(), file.name());
    const std::size_t changeCount = changes.inputs.reportCount + changes.gone.size();
    if (isCopy && changeCount > knownCount / kFewChanges) writer.dropNameIndex();
    if (isCopy) {
      for (const index::KnownFile& gone : changes.gone) writer.removeFile(gone.id);
      for (const auto& [id, times] : changes.touched) writer.setTimes(id, times);
    }
    isGood = readFiles(changes, sources.options, &writer);
    putMeta(writer, startedAt, origin);
    writer.setMeta("module", {origin.module});
    writer.setMeta("defines", {origin.defines});
    writer.setMeta("folder", {sources.folder});
    writer.setMeta("argument", sources.arguments);
    writer.setMeta("read", {std::to_string(changes.inputs.reportCount)});
    writer.setMeta("kept", {std::to_string(changes.inputs.unchangedCount)});
    writer.setMeta("removed", {std::to_string(changes.gone.size())});
    writer.finish();
  }
  file.replace();
  return isGood;
}

bool buildFromShards(index::IndexFile& file, const std::vector<std::string>& shards) {
  const std::int64_t startedAt = wallClock();
  file.begin(false);
  bool areGood = true;
  {
    IndexWriter writer(file.temporaryPath(), file.name());
    NdjsonSource source(shards);
    areGood = source.write(writer);
    putMeta(writer, startedAt,
            {.tool = "quorl-js " + source.version(), .module = {}, .defines = {}});
    writer.finish();
  }
  file.replace();
  return areGood;
}

}  // namespace host::indexing
