#include "lsp/workspace_scan.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <utility>

namespace host::lsp {
namespace {

constexpr std::uint64_t kMaxFileBytes = std::uint64_t{4} << 20U;

// Data and prose: what an outline finds there is nothing that one searches by name.
constexpr std::array<std::string_view, 17> kNoSources = {
    "csv", "geojson", "ipynb", "json", "json5", "jsonc", "lock", "log", "map",
    "md",  "rst",     "snap",  "svg",  "toml",  "txt",   "yaml", "yml"};

bool isSource(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  if (name.find(".min.") != std::string_view::npos) return false;
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos ||
         std::find(kNoSources.begin(), kNoSources.end(), name.substr(dot + 1)) == kNoSources.end();
}

std::string countOf(std::size_t files) {
  return std::to_string(files) + (files == 1 ? " file" : " files");
}

template <typename Write>
void notifyProgress(Connection& connection, std::string_view kind, Write write) {
  connection.notify("$/progress", [&](JsonWriter& out) {
    out.StartObject();
    writeMember(out, "token", WorkspaceScan::kProgressToken);
    writeKey(out, "value");
    out.StartObject();
    writeMember(out, "kind", kind);
    write(out);
    out.EndObject();
    out.EndObject();
  });
}

}  // namespace

WorkspaceScan::WorkspaceScan(OutlineLane& lane, WorkspaceIndex& index, Connection& connection,
                             std::uint64_t largestFile)
    : lane_(lane),
      index_(index),
      connection_(connection),
      largestFile_(largestFile == 0 ? kMaxFileBytes : std::min(largestFile, kMaxFileBytes)) {}

void WorkspaceScan::addFolder(const std::string& folder) {
  if (std::find(folders_.begin(), folders_.end(), folder) != folders_.end()) return;
  folders_.push_back(folder);
  walks_.push_back(folder);
  if (progress_ == Progress::kNone) beginProgress();
}

void WorkspaceScan::removeFolder(const std::string& folder) {
  const auto gone = std::find(folders_.begin(), folders_.end(), folder);
  if (gone == folders_.end()) return;
  folders_.erase(gone);
  walks_.erase(std::remove(walks_.begin(), walks_.end(), folder), walks_.end());
  for (const std::string& path : index_.pathsBelow(folder)) {
    if (!isIndexed(path)) index_.erase(path);
  }
}

bool WorkspaceScan::isIndexed(const std::string& path) const {
  return std::any_of(folders_.begin(), folders_.end(),
                     [&path](const std::string& folder) { return isBelow(path, folder); });
}

void WorkspaceScan::enqueue(const std::string& path) {
  if (isSource(path) && waiting_.insert(path).second) files_.push_back(path);
}

void WorkspaceScan::refresh(const std::string& path) {
  if (index_.holds(path)) enqueue(path);
}

void WorkspaceScan::walkAgain() {
  for (const std::string& folder : folders_) {
    if (std::find(walks_.begin(), walks_.end(), folder) == walks_.end()) walks_.push_back(folder);
  }
}

void WorkspaceScan::handle(LaneReply reply) {
  switch (reply.kind) {
    case LaneReply::Kind::kPaths:
      for (std::string& path : reply.paths) {
        if (!index_.holds(path)) enqueue(path);
        found_.insert(std::move(path));
      }
      return;
    case LaneReply::Kind::kWalked:
      noteWalked();
      return;
    case LaneReply::Kind::kOutline:
      if (isIndexed(current_)) index_.set(current_, reply.outline);
      break;
    case LaneReply::Kind::kFailed:
    case LaneReply::Kind::kUnusable:
      connection_.log(MessageType::kWarning, current_ + ": " + reply.failure);
      found_.clear();
      if (!std::exchange(isWalking_, false)) index_.erase(current_);
      if (reply.kind == LaneReply::Kind::kUnusable) cancel();  // it would be so for each file
      break;
  }
  ++done_;
  reportProgress();
}

// Files that the walk has not met are gone, or are ignored by now.
void WorkspaceScan::noteWalked() {
  isWalking_ = false;
  for (const std::string& path : index_.pathsBelow(current_)) {
    if (found_.count(path) == 0) index_.erase(path);
  }
  found_.clear();
}

void WorkspaceScan::proceed() {
  while (!lane_.isBusy()) {
    if (!walks_.empty()) {
      current_ = std::move(walks_.front());
      walks_.pop_front();
      isWalking_ = true;
      lane_.begin(RequestKind::kWalk, features_.encoding, current_);
    } else if (!files_.empty()) {
      current_ = std::move(files_.front());
      files_.pop_front();
      waiting_.erase(current_);
      struct stat status {};
      const bool isThere = ::stat(current_.c_str(), &status) == 0 && S_ISREG(status.st_mode);
      if (!isThere || !isIndexed(current_)) {
        index_.erase(current_);
      } else if (static_cast<std::uint64_t>(status.st_size) <= largestFile_) {
        lane_.begin(RequestKind::kOutline, features_.encoding, current_);
      }
    } else {
      lane_.stop();
      if (progress_ != Progress::kNone) endProgress();
      return;
    }
  }
}

void WorkspaceScan::beginProgress() {
  done_ = 0;
  reported_ = -1;
  if (!features_.showsProgress) return;
  progress_ = Progress::kAsked;
  connection_.request("\"" + std::string(kProgressToken) + "\"", "window/workDoneProgress/create",
                      [](JsonWriter& out) {
                        out.StartObject();
                        writeMember(out, "token", WorkspaceScan::kProgressToken);
                        out.EndObject();
                      });
}

void WorkspaceScan::acceptProgress(bool isAccepted) {
  if (progress_ != Progress::kAsked) return;
  progress_ = isAccepted ? Progress::kShown : Progress::kNone;
  if (!isAccepted) return;
  notifyProgress(connection_, "begin", [](JsonWriter& out) {
    writeMember(out, "title", "Reading the workspace");
    writeKey(out, "cancellable");
    out.Bool(true);
    writeMember(out, "percentage", 0);
  });
  if (!lane_.isBusy() && walks_.empty() && files_.empty()) endProgress();
}

void WorkspaceScan::reportProgress() {
  if (progress_ != Progress::kShown || isWalking_ || !walks_.empty()) return;
  const int percentage = static_cast<int>(done_ * 100 / (done_ + files_.size()));
  if (percentage <= reported_) return;
  reported_ = percentage;
  notifyProgress(connection_, "report", [&](JsonWriter& out) {
    writeMember(out, "message", countOf(done_));
    writeMember(out, "percentage", percentage);
  });
}

// Waits for the client's answer: nothing ends that has not begun.
void WorkspaceScan::endProgress() {
  if (progress_ != Progress::kShown) return;
  progress_ = Progress::kNone;
  notifyProgress(connection_, "end",
                 [&](JsonWriter& out) { writeMember(out, "message", countOf(done_)); });
}

void WorkspaceScan::cancel() {
  walks_.clear();
  files_.clear();
  waiting_.clear();
}

}  // namespace host::lsp
