// The items that answer a query, as bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "formats/format.h"
#include "index/index_reader.h"

namespace host::indexing {

struct Answer {
  std::string_view path;
  index::FoundItem found;
  std::optional<outline::Item> around;  // the innermost named item that contains it
  std::optional<outline::Item> tag;     // the innermost that can be a tag
  std::size_t level = 0;                // of a chain of items, each inside of the one before
};

// Takes answers one by one and appends bytes to a text, which its user writes and clears.
class AnswerFormat {
 public:
  virtual ~AnswerFormat() = default;
  virtual void begin(std::string& /*out*/) {}
  virtual void add(const Answer& answer, std::string& out) = 0;
  virtual void end(std::string& /*out*/) {}
};

// The format with that name; null for another name. The settings have to outlive it.
std::unique_ptr<AnswerFormat> makeAnswerFormat(std::string_view name,
                                               const FormatSettings& settings);

}  // namespace host::indexing
