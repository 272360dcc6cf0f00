// The language server: one thread that waits for the client and for two workers, one for what the
// client waits for and one for the workspace.
//
// Requests about a text wait until its outline is made; one outline answers all that wait for the
// same text. All input that has come is taken before the next outline is begun, so a batch of edits
// costs one.
#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lsp/client_features.h"
#include "lsp/connection.h"
#include "lsp/documents.h"
#include "lsp/index_symbols.h"
#include "lsp/outline_lane.h"
#include "lsp/private_directory.h"
#include "lsp/workspace_index.h"
#include "lsp/workspace_scan.h"
#include "workers/file_limits.h"

namespace host::lsp {

struct ServerOptions {
  std::string plugin;  // the module's path
  FileLimits limits;
  std::optional<std::string> traceFile;
  std::optional<std::string> indexFile;  // that has the symbols of the workspace
};

class Server {
 public:
  explicit Server(const ServerOptions& options);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server();

  // Serves until the client asks for the end, or is gone. Returns the exit status: 0 if the client
  // has asked for the shutdown before, else 1.
  int run();

 private:
  enum class Life { kNew, kInitialized, kShutDown, kOver };
  enum class Wanted { kSymbols, kFolds, kSelections, kWorkspaceSymbols };

  // A request that waits for outlines.
  struct Pending {
    std::string id;  // as JSON text
    Wanted wanted;
    std::string uri;                    // of the text, but for kWorkspaceSymbols
    std::uint64_t revision = 0;         // that it is about, or that all texts have
    std::vector<Position> positions{};  // for kSelections
    std::string query{};                // for kWorkspaceSymbols
  };

  struct Request {
    std::string_view id;  // empty for a notification
    const Json& parameters;
  };
  struct Method {
    std::string_view name;
    bool isRequest;
    void (Server::*handle)(const Request& request);
  };
  static const Method* findMethod(std::string_view name);

  // What comes in.
  void wait();
  void takeInput();
  void handle(std::string_view body);
  void handleReply(const Json& message);
  void dispatch(std::string_view id, std::string_view method, const Json& parameters);

  // The methods.
  void initialize(const Request& request);
  void startScan(const Request& request);
  void shutDown(const Request& request);
  void exit();
  void cancelRequest(const Request& request);
  void cancelProgress(const Request& request);
  void openDocument(const Request& request);
  void changeDocument(const Request& request);
  void closeDocument(const Request& request);
  void documentSymbol(const Request& request);
  void foldingRange(const Request& request);
  void selectionRange(const Request& request);
  void workspaceSymbol(const Request& request);
  void changeFolders(const Request& request);
  void changeFiles(const Request& request);

  // Requests that wait.
  Document* documentOf(const Request& request);
  void addPending(const Request& request, Wanted wanted, std::vector<Position> positions);
  Document* neededBy(const Pending& pending);
  void answer(const Pending& pending);
  void answerSymbols(const Pending& pending);
  void answerReady();
  void dropUnneeded();

  // Outlines.
  void beginOutline();
  void beginOutlineOf(Document& document);
  void takeOutline(LaneReply reply);
  void takeReplies(OutlineLane& lane, bool isReadable);

  void watchClient(const Json& parameters);
  void readFolders(const Json& parameters);
  void registerForChanges();

  FileLimits limits_;
  Connection connection_;
  PrivateDirectory directory_;
  Siblings siblings_;
  OutlineLane editorLane_;
  OutlineLane scanLane_;
  WorkspaceIndex index_;
  std::optional<IndexSymbols> indexSymbols_;  // instead of what a scan finds
  WorkspaceScan scan_;
  Documents documents_;
  ClientFeatures features_;
  std::list<Pending> pending_;
  std::string outlinedUri_;  // of the text that editorLane_ works on
  std::uint64_t outlinedRevision_ = 0;
  std::vector<std::string> folders_;  // of the initialize request
  bool hasReportedPlugin_ = false;    // that it cannot be used
  bool wantsWorker_ = false;          // before the next request
  int client_ = -1;                   // becomes readable when the client's process ends
  bool isInputReady_ = false;
  bool isEditorReady_ = false;
  bool isScanReady_ = false;
  Life life_ = Life::kNew;
  int status_ = 1;
};

}  // namespace host::lsp
