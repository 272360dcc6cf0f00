// The options and exit statuses as tables for the documentation.
#pragma once

#include <string>

namespace host {

// In Markdown.
std::string markdownTables();

}  // namespace host
