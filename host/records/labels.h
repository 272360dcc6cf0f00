// The labels that records have.
#pragma once

#include <array>
#include <string_view>

namespace host {

inline constexpr std::string_view kFileLabel = "filepath";  // of a file's own record

// Stands for all labels that begin with it and a colon; the error follows.
inline constexpr std::string_view kErrorLabel = "error";

inline constexpr std::array<std::string_view, 14> kLabels = {
    kFileLabel, "namespace", "class",        "function",    "logic", "loop",      "classvar",
    "line",     "define",    "preprocessor", "htmlelement", "link",  "container", kErrorLabel};

constexpr bool isErrorLabel(std::string_view label) {
  return label.starts_with(kErrorLabel) && label.substr(kErrorLabel.size()).starts_with(':');
}

}  // namespace host
