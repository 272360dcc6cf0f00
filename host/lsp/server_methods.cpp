// The methods of the protocol that the server knows.

#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

#include "lsp/folding.h"
#include "lsp/server.h"
#include "lsp/symbols.h"
#include "lsp/uri.h"
#include "system/platform.h"

namespace host::lsp {
namespace {

constexpr int kIncrementalSync = 2;

void writeFlag(JsonWriter& out, std::string_view key) {
  writeKey(out, key);
  out.Bool(true);
}

// Writes what is between the braces of an object.
template <typename Write>
void writeObject(JsonWriter& out, Write write) {
  out.StartObject();
  write();
  out.EndObject();
}

template <typename Write>
void writeObject(JsonWriter& out, std::string_view key, Write write) {
  writeKey(out, key);
  writeObject(out, write);
}

void writeCapabilities(JsonWriter& out, Encoding encoding) {
  writeMember(out, "positionEncoding", encoding == Encoding::kUtf8 ? "utf-8" : "utf-16");
  writeObject(out, "textDocumentSync", [&] {
    writeFlag(out, "openClose");
    writeMember(out, "change", kIncrementalSync);
    writeFlag(out, "save");
  });
  for (const std::string_view provider : {"documentSymbolProvider", "foldingRangeProvider",
                                          "selectionRangeProvider", "workspaceSymbolProvider"}) {
    writeFlag(out, provider);
  }
  writeObject(out, "workspace", [&] {
    writeObject(out, "workspaceFolders", [&] {
      writeFlag(out, "supported");
      writeFlag(out, "changeNotifications");
    });
  });
}

// The paths of workspace folders, as {"uri": ..., "name": ...}.
std::vector<std::string> pathsOf(const Json* folders) {
  std::vector<std::string> paths;
  if (folders == nullptr) return paths;
  for (const Json& folder : folders->GetArray()) {
    if (const auto path = pathOfUri(findText(folder, {"uri"}).value_or(""))) paths.push_back(*path);
  }
  return paths;
}

}  // namespace

const Server::Method* Server::findMethod(std::string_view name) {
  static constexpr std::array kMethods = {
      Method{"initialize", true, &Server::initialize},
      Method{"shutdown", true, &Server::shutDown},
      Method{"textDocument/documentSymbol", true, &Server::documentSymbol},
      Method{"textDocument/foldingRange", true, &Server::foldingRange},
      Method{"textDocument/selectionRange", true, &Server::selectionRange},
      Method{"workspace/symbol", true, &Server::workspaceSymbol},
      Method{"initialized", false, &Server::startScan},
      Method{"$/cancelRequest", false, &Server::cancelRequest},
      Method{"window/workDoneProgress/cancel", false, &Server::cancelProgress},
      Method{"textDocument/didOpen", false, &Server::openDocument},
      Method{"textDocument/didChange", false, &Server::changeDocument},
      Method{"textDocument/didClose", false, &Server::closeDocument},
      Method{"workspace/didChangeWorkspaceFolders", false, &Server::changeFolders},
      Method{"workspace/didChangeWatchedFiles", false, &Server::changeFiles}};
  const auto* const found =
      std::find_if(kMethods.begin(), kMethods.end(),
                   [name](const Method& method) { return method.name == name; });
  return found == kMethods.end() ? nullptr : found;
}

void Server::initialize(const Request& request) {
  features_ = readFeatures(request.parameters);
  scan_.setFeatures(features_);
  readFolders(request.parameters);
  watchClient(request.parameters);
  life_ = Life::kInitialized;
  wantsWorker_ = true;
  connection_.respond(request.id, [this](JsonWriter& out) {
    writeObject(out, [&] {
      writeObject(out, "capabilities", [&] { writeCapabilities(out, features_.encoding); });
      writeObject(out, "serverInfo", [&] {
        writeMember(out, "name", "quorl-js");
        writeMember(out, "version", QUORL_VERSION);
      });
    });
  });
}

void Server::readFolders(const Json& parameters) {
  folders_ = pathsOf(findArray(parameters, {"workspaceFolders"}));
  if (!folders_.empty()) return;
  std::optional<std::string> root = pathOfUri(findText(parameters, {"rootUri"}).value_or(""));
  if (!root) {
    if (const auto path = findText(parameters, {"rootPath"})) root = *path;
  }
  if (root && root->starts_with('/')) folders_.push_back(*root);
}

// A client that is killed closes our standard input, unless another process has its end too.
void Server::watchClient(const Json& parameters) {
  const std::optional<std::uint32_t> process = findNumber(parameters, {"processId"});
  if (process) client_ = watchProcess(static_cast<pid_t>(*process));
}

void Server::startScan(const Request&) {
  if (indexSymbols_) return;
  if (features_.watchesFiles) registerForChanges();
  for (const std::string& folder : folders_) scan_.addFolder(folder);
  folders_.clear();
}

void Server::registerForChanges() {
  constexpr std::string_view kMethod = "workspace/didChangeWatchedFiles";
  connection_.request("\"quorl-js-watch\"", "client/registerCapability", [&](JsonWriter& out) {
    writeObject(out, [&] {
      writeKey(out, "registrations");
      out.StartArray();
      writeObject(out, [&] {
        writeMember(out, "id", kMethod);
        writeMember(out, "method", kMethod);
        writeObject(out, "registerOptions", [&] {
          writeKey(out, "watchers");
          out.StartArray();
          writeObject(out, [&] { writeMember(out, "globPattern", "**/*"); });
          out.EndArray();
        });
      });
      out.EndArray();
    });
  });
}

void Server::shutDown(const Request& request) {
  life_ = Life::kShutDown;
  connection_.respond(request.id, [](JsonWriter& out) { out.Null(); });
}

void Server::exit() {
  status_ = life_ == Life::kShutDown ? 0 : 1;
  life_ = Life::kOver;
}

void Server::cancelRequest(const Request& request) {
  const Json* const id = find(request.parameters, {"id"});
  if (id == nullptr) return;
  const std::string idText = jsonText(*id);
  const auto found = std::find_if(pending_.begin(), pending_.end(),
                                  [&](const Pending& each) { return each.id == idText; });
  if (found == pending_.end()) return;
  connection_.respondError(idText, ErrorCode::kRequestCancelled, "cancelled");
  pending_.erase(found);
}

void Server::cancelProgress(const Request& request) {
  if (findText(request.parameters, {"token"}) == WorkspaceScan::kProgressToken) scan_.cancel();
}

void Server::openDocument(const Request& request) {
  const auto uri = findText(request.parameters, {"textDocument", "uri"});
  const auto text = findText(request.parameters, {"textDocument", "text"});
  const auto language = findText(request.parameters, {"textDocument", "languageId"});
  if (uri && text) documents_.open(*uri, language.value_or(""), std::string(*text));
}

void Server::changeDocument(const Request& request) {
  const auto uri = findText(request.parameters, {"textDocument", "uri"});
  const Json* const changes = findArray(request.parameters, {"contentChanges"});
  Document* const document = uri ? documents_.find(*uri) : nullptr;
  if (document != nullptr && changes != nullptr) {
    documents_.change(*document, *changes, features_.encoding);
  }
}

// The file counts again, which may have been written meanwhile.
void Server::closeDocument(const Request& request) {
  const auto uri = findText(request.parameters, {"textDocument", "uri"});
  if (!uri) return;
  documents_.close(*uri);
  if (const auto path = pathOfUri(*uri)) scan_.refresh(*path);
}

void Server::changeFolders(const Request& request) {
  if (indexSymbols_) return;
  for (const std::string& path : pathsOf(findArray(request.parameters, {"event", "removed"}))) {
    scan_.removeFolder(path);
  }
  for (const std::string& path : pathsOf(findArray(request.parameters, {"event", "added"}))) {
    scan_.addFolder(path);
  }
}

void Server::changeFiles(const Request& request) {
  constexpr std::uint32_t kChanged = 2;  // else made or removed
  const Json* const changes = findArray(request.parameters, {"changes"});
  if (changes == nullptr) return;
  bool isWalkDue = false;
  for (const Json& change : changes->GetArray()) {
    const auto path = pathOfUri(findText(change, {"uri"}).value_or(""));
    if (!path) continue;
    isWalkDue = isWalkDue || findNumber(change, {"type"}) != kChanged;
    scan_.refresh(*path);
  }
  if (isWalkDue) scan_.walkAgain();
}

// The text that the request is about. Without one it is answered with an error.
Document* Server::documentOf(const Request& request) {
  const auto uri = findText(request.parameters, {"textDocument", "uri"});
  if (!uri) {
    connection_.respondError(request.id, ErrorCode::kInvalidParams, "no textDocument.uri");
    return nullptr;
  }
  Document* document = documents_.find(*uri);
  if (document == nullptr) document = documents_.read(std::string(*uri), limits_.sourceBytes);
  if (document == nullptr) {
    connection_.respondError(request.id, ErrorCode::kInvalidParams,
                             std::string(*uri) + ": neither open nor a file to read");
  }
  return document;
}

void Server::addPending(const Request& request, Wanted wanted, std::vector<Position> positions) {
  const Document* const document = documentOf(request);
  if (document == nullptr) return;
  pending_.push_back({.id = std::string(request.id),
                      .wanted = wanted,
                      .uri = document->uri,
                      .revision = document->revision,
                      .positions = std::move(positions)});
}

void Server::documentSymbol(const Request& request) { addPending(request, Wanted::kSymbols, {}); }

void Server::foldingRange(const Request& request) { addPending(request, Wanted::kFolds, {}); }

void Server::selectionRange(const Request& request) {
  const Json* const values = findArray(request.parameters, {"positions"});
  std::vector<Position> positions;
  if (values != nullptr) {
    for (const Json& value : values->GetArray()) {
      if (const auto position = readPosition(value)) positions.push_back(*position);
    }
  }
  if (values == nullptr || positions.size() != values->Size()) {
    connection_.respondError(request.id, ErrorCode::kInvalidParams, "no positions");
    return;
  }
  addPending(request, Wanted::kSelections, std::move(positions));
}

void Server::workspaceSymbol(const Request& request) {
  const auto query = findText(request.parameters, {"query"});
  if (!query) {
    connection_.respondError(request.id, ErrorCode::kInvalidParams, "no query");
    return;
  }
  pending_.push_back({.id = std::string(request.id),
                      .wanted = Wanted::kWorkspaceSymbols,
                      .uri = {},
                      .revision = documents_.lastRevision(),
                      .query = std::string(*query)});
}

// Answers the requests that wait for no outline, and closes texts that were read for them.
void Server::answerReady() {
  for (auto next = pending_.begin(); next != pending_.end();) {
    if (neededBy(*next) != nullptr) {
      ++next;
      continue;
    }
    answer(*next);
    next = pending_.erase(next);
  }
  dropUnneeded();
}

void Server::dropUnneeded() {
  std::erase_if(documents_.all(), [this](const auto& entry) {
    const Document& document = entry.second;
    return !document.isOpen &&
           std::none_of(pending_.begin(), pending_.end(),
                        [&](const Pending& each) { return each.uri == document.uri; });
  });
}

// A text that was closed meanwhile has no outline any more.
void Server::answer(const Pending& pending) {
  if (pending.wanted == Wanted::kWorkspaceSymbols) {
    answerSymbols(pending);
    return;
  }
  const Document* const document = documents_.find(pending.uri);
  connection_.respond(pending.id, [&](JsonWriter& out) {
    if (document == nullptr) {
      out.Null();
    } else if (pending.wanted == Wanted::kSymbols) {
      writeDocumentSymbols(out, document->outline, document->uri, features_);
    } else if (pending.wanted == Wanted::kFolds) {
      writeFolds(out, document->outline, document->text, features_);
    } else {
      writeSelections(out, document->outline, document->text, pending.positions,
                      features_.encoding);
    }
  });
}

// Texts that are open count before their files.
void Server::answerSymbols(const Pending& pending) {
  SymbolSearch search(pending.query);
  std::list<FileSymbols> symbols;
  std::vector<std::string> openPaths;
  for (const auto& [uri, document] : documents_.all()) {
    if (!document.isOpen) continue;
    symbols.emplace_back(document.outline);
    search.add(document.uri, symbols.back());
    openPaths.push_back(pathOfUri(uri).value_or(""));
  }
  std::sort(openPaths.begin(), openPaths.end());
  for (const auto& [path, file] : index_.files()) {
    if (!std::binary_search(openPaths.begin(), openPaths.end(), path)) {
      search.add(file.uri, file.symbols);
    }
  }
  std::list<std::string> uris;
  if (indexSymbols_) {
    const std::size_t most = SymbolSearch::kMaxResults;
    for (const IndexSymbols::File& file : indexSymbols_->find(pending.query, most)) {
      if (std::binary_search(openPaths.begin(), openPaths.end(), file.path)) continue;
      symbols.emplace_back(file.outline);
      search.add(uris.emplace_back(uriOfPath(file.path)), symbols.back());
    }
  }
  connection_.respond(pending.id,
                      [&](JsonWriter& out) { search.write(out, features_.workspaceKinds); });
}

}  // namespace host::lsp
