#include "view/page.h"

#include "formats/json_text.h"
#include "view/gzip.h"
#include "view/page_template.h"

namespace host::view {
namespace {

constexpr std::string_view kPlace = "@DATA@";

}  // namespace

std::string makePage(std::string_view data) {
  const std::string_view page = pageTemplate();
  const std::size_t place = page.find(kPlace);
  std::string whole(page.substr(0, place));
  appendBase64(whole, gzip(data));
  whole += page.substr(place + kPlace.size());
  return whole;
}

}  // namespace host::view
