// Messages to and from the client, over standard input and output.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "lsp/json.h"
#include "lsp/message_reader.h"

namespace host::lsp {

// Of JSON-RPC and of the protocol.
enum class ErrorCode : int {
  kParseError = -32700,
  kInvalidRequest = -32600,
  kMethodNotFound = -32601,
  kInvalidParams = -32602,
  kServerNotInitialized = -32002,
  kRequestFailed = -32803,
  kRequestCancelled = -32800,
};

enum class MessageType : int { kError = 1, kWarning = 2, kInfo = 3, kLog = 4 };

// Output is queued and written as the client takes it: a client that writes a long message does not
// read meanwhile.
class Connection {
 public:
  // Frames are logged to the file, if there is one. Throws Failure if it cannot be written.
  explicit Connection(const std::optional<std::string>& traceFile);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  // Makes one read of standard input; false at its end.
  bool receive();
  MessageReader::Result next(std::string_view& body);

  // ids are JSON texts. write writes the result or the parameters.
  template <typename Write>
  void respond(std::string_view id, Write write) {
    send("id", id, "", "result", write);
  }
  template <typename Write>
  void notify(std::string_view method, Write write) {
    send("", "", method, "params", write);
  }
  template <typename Write>
  void request(std::string_view id, std::string_view method, Write write) {
    send("id", id, method, "params", write);
  }
  void respondError(std::string_view id, ErrorCode code, std::string_view message);
  void log(MessageType type, std::string_view message);
  void show(MessageType type, std::string_view message);

  // Writes what the client takes now; false if it has gone.
  bool flush();
  std::size_t queuedBytes() const { return queue_.size() - written_; }

  int traceDescriptor() const { return trace_; }

 private:
  template <typename Write>
  void send(std::string_view idKey, std::string_view id, std::string_view method,
            std::string_view contentKey, Write write) {
    buffer_.Clear();
    JsonWriter out(buffer_);
    out.StartObject();
    writeMember(out, "jsonrpc", "2.0");
    if (!idKey.empty()) {
      writeKey(out, idKey);
      out.RawValue(id.data(), id.size(), rapidjson::kStringType);
    }
    if (!method.empty()) writeMember(out, "method", method);
    writeKey(out, contentKey);
    write(out);
    out.EndObject();
    queue({buffer_.GetString(), buffer_.GetSize()});
  }
  void queue(std::string_view body);
  void notifyMessage(std::string_view method, MessageType type, std::string_view message);
  void trace(std::string_view direction, std::string_view body);

  MessageReader reader_;
  rapidjson::StringBuffer buffer_;  // of the last message; the next one may be as long
  std::string queue_;
  std::size_t written_ = 0;  // of queue_
  int outputFlags_;          // of standard output, which does not block meanwhile
  int trace_ = -1;
};

}  // namespace host::lsp
