#include "formats/omitted_json.h"

#include <cstdint>
#include <string_view>
#include <utility>

#include "formats/json_text.h"

namespace host {
namespace {

void appendOmission(std::string& out, const outline::Omission& omission) {
  out.append("{\"reason\":\"").append(outline::reasonWord(omission.reason)).append("\"");
  const auto append = [&out](std::string_view key, std::int64_t number) {
    out.append(",\"").append(key).append("\":");
    appendNumber(out, number);
  };
  append("line", omission.line);
  append("lines", omission.lines);
  append("lineCount", omission.lineCount);
  append("bytes", omission.bytes);
  append("byteCount", omission.byteCount);
  out += "}";
}

}  // namespace

void appendOmitted(std::string& out, const std::vector<outline::Omission>& omitted) {
  char before = '[';
  for (const outline::Omission& omission : omitted) {
    out += std::exchange(before, ',');
    appendOmission(out, omission);
  }
  out += "]";
}

}  // namespace host
