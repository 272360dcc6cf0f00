// URIs of files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace host::lsp {

// The path of a file URI; nothing for other schemes, for other machines and for bad escapes.
std::optional<std::string> pathOfUri(std::string_view uri);

// The URI of an absolute path.
std::string uriOfPath(std::string_view path);

// What stands behind the last dot of the URI's last segment, decoded; empty if it has none.
std::string extensionOfUri(std::string_view uri);

}  // namespace host::lsp
