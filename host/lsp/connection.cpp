#include "lsp/connection.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>

#include "system/failure.h"
#include "system/io.h"
#include "system/platform.h"

namespace host::lsp {
namespace {

constexpr std::size_t kReadBytes = std::size_t{64} * 1024;

// "2026-11-20T12:00:00.123Z".
std::string timeText() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm time{};
  ::gmtime_r(&seconds, &time);
  std::array<char, 32> day{};
  const std::size_t bytes = std::strftime(day.data(), day.size(), "%Y-%m-%dT%H:%M:%S.", &time);
  const std::string digits = std::to_string(1000 + milliseconds).substr(1);
  return std::string(day.data(), bytes) + digits + "Z";
}

}  // namespace

Connection::Connection(const std::optional<std::string>& traceFile)
    : outputFlags_(::fcntl(STDOUT_FILENO, F_GETFL)) {
  if (traceFile) {
    trace_ = ::open(traceFile->c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (trace_ < 0) throw systemFailure(*traceFile, errno);
  }
  ::fcntl(STDOUT_FILENO, F_SETFL, outputFlags_ | O_NONBLOCK);
  widenPipe(STDOUT_FILENO);  // a large answer is written at once
}

Connection::~Connection() {
  ::fcntl(STDOUT_FILENO, F_SETFL, outputFlags_);
  if (trace_ >= 0) ::close(trace_);
}

bool Connection::receive() {
  std::array<char, kReadBytes> block;
  const ssize_t count = readSome(STDIN_FILENO, block.data(), block.size());
  if (count <= 0) return false;
  reader_.append({block.data(), static_cast<std::size_t>(count)});
  return true;
}

MessageReader::Result Connection::next(std::string_view& body) {
  const MessageReader::Result result = reader_.next(body);
  if (result == MessageReader::Result::kMessage) trace("from client", body);
  if (result == MessageReader::Result::kNone) reader_.compact();
  return result;
}

void Connection::respondError(std::string_view id, ErrorCode code, std::string_view message) {
  send("id", id, "", "error", [&](JsonWriter& out) {
    out.StartObject();
    writeMember(out, "code", static_cast<int>(code));
    writeMember(out, "message", message);
    out.EndObject();
  });
}

void Connection::log(MessageType type, std::string_view message) {
  notifyMessage("window/logMessage", type, message);
}

void Connection::show(MessageType type, std::string_view message) {
  notifyMessage("window/showMessage", type, message);
}

void Connection::notifyMessage(std::string_view method, MessageType type,
                               std::string_view message) {
  notify(method, [&](JsonWriter& out) {
    out.StartObject();
    writeMember(out, "type", static_cast<int>(type));
    writeMember(out, "message", message);
    out.EndObject();
  });
}

void Connection::queue(std::string_view body) {
  trace("to client", body);
  queue_.append(frameHeader(body.size())).append(body);
}

bool Connection::flush() {
  while (queuedBytes() > 0) {
    const ssize_t count = ::write(STDOUT_FILENO, queue_.data() + written_, queuedBytes());
    if (count >= 0) {
      written_ += static_cast<std::size_t>(count);
    } else if (errno == EAGAIN) {
      return true;
    } else if (errno != EINTR) {
      return false;
    }
  }
  queue_.clear();
  written_ = 0;
  return true;
}

void Connection::trace(std::string_view direction, std::string_view body) {
  if (trace_ < 0) return;
  std::string entry = timeText() + " " + std::string(direction) + ", ";
  entry += std::to_string(body.size()) + " bytes\n";
  writeAll(trace_, entry.append(body).append("\n\n"));
}

}  // namespace host::lsp
