#include "lsp/uri.h"

#include <charconv>

namespace host::lsp {
namespace {

constexpr std::string_view kFileScheme = "file:";
constexpr std::string_view kUnreserved =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";

std::optional<std::string> decoded(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      result += text[at];
      continue;
    }
    unsigned value = 0;
    const char* const digits = text.data() + at + 1;
    if (text.size() - at < 3 || std::from_chars(digits, digits + 2, value, 16).ptr != digits + 2) {
      return std::nullopt;
    }
    result += static_cast<char>(value);
    at += 2;
  }
  return result;
}

std::string_view withoutQuery(std::string_view uri) {
  return uri.substr(0, uri.find_first_of("?#"));
}

}  // namespace

std::optional<std::string> pathOfUri(std::string_view uri) {
  if (!uri.starts_with(kFileScheme)) return std::nullopt;
  std::string_view rest = withoutQuery(uri).substr(kFileScheme.size());
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    if (rest.starts_with("localhost/")) rest.remove_prefix(rest.find('/'));
  }
  if (!rest.starts_with('/')) return std::nullopt;
  std::optional<std::string> path = decoded(rest);
  if (path && path->find('\0') != std::string::npos) return std::nullopt;
  return path;
}

std::string uriOfPath(std::string_view path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string uri = "file://";
  for (const char byte : path) {
    if (kUnreserved.find(byte) != std::string_view::npos) {
      uri += byte;
    } else {
      const auto value = static_cast<unsigned char>(byte);
      uri.append(1, '%').append(1, kDigits[value / 16]).append(1, kDigits[value % 16]);
    }
  }
  return uri;
}

std::string extensionOfUri(std::string_view uri) {
  const std::string path = decoded(withoutQuery(uri)).value_or("");
  const std::string_view name = std::string_view(path).substr(path.rfind('/') + 1);
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? "" : std::string(name.substr(dot + 1));
}

}  // namespace host::lsp
