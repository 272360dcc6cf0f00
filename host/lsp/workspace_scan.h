// Reads the workspace in the background: walks the folders, then makes the outlines of their files
// one by one, with a worker of its own, and tells the client how far it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "lsp/connection.h"
#include "lsp/outline_lane.h"
#include "lsp/workspace_index.h"

namespace host::lsp {

class WorkspaceScan {
 public:
  static constexpr std::string_view kProgressToken = "quorl-js-scan";

  // Files that are larger are not read, unless that is 0.
  WorkspaceScan(OutlineLane& lane, WorkspaceIndex& index, Connection& connection,
                std::uint64_t largestFile);

  void setFeatures(const ClientFeatures& features) { features_ = features; }

  void addFolder(const std::string& folder);
  void removeFolder(const std::string& folder);
  const std::vector<std::string>& folders() const { return folders_; }

  // A file was written, made or removed.
  void refresh(const std::string& path);

  // Files were made or removed somewhere below the folders.
  void walkAgain();

  void handle(LaneReply reply);

  // Makes the next request if the lane is idle. Ends the worker when all is done: it may have
  // grown.
  void proceed();

  // The client's answer to the request to show progress, and its wish to end that.
  void acceptProgress(bool isAccepted);
  void cancel();

 private:
  enum class Progress { kNone, kAsked, kShown };

  bool isIndexed(const std::string& path) const;
  void enqueue(const std::string& path);
  void noteWalked();
  void beginProgress();
  void reportProgress();
  void endProgress();

  OutlineLane& lane_;
  WorkspaceIndex& index_;
  Connection& connection_;
  std::uint64_t largestFile_;
  ClientFeatures features_;
  std::vector<std::string> folders_;
  std::deque<std::string> walks_;  // folders that are still to be walked
  std::deque<std::string> files_;  // and files to be read
  std::set<std::string> waiting_;  // those in files_
  std::set<std::string> found_;    // by the walk that is going on
  std::string current_;            // what the lane works on
  bool isWalking_ = false;
  std::size_t done_ = 0;  // files since the progress began
  int reported_ = -1;     // the percentage
  Progress progress_ = Progress::kNone;
};

}  // namespace host::lsp
