// The elements of a page as its source has them: where each begins and ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace host::outline {

struct PageElement {
  std::string_view name;
  std::size_t begin = 0;  // of its <
  std::size_t end = 0;    // behind its closing tag, or where the element that holds it ends
  std::int32_t line = 0;
  std::int32_t lastLine = 0;
  std::size_t textBegin = 0;  // behind its opening tag
  std::size_t textEnd = 0;    // of a script, style or other element without elements inside
  std::int32_t textLine = 0;
};

// In the order of the source.
std::vector<PageElement> findElements(std::string_view source);

}  // namespace host::outline
