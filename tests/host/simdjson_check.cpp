// Reads JSON from standard input with simdjson, one document, or with --lines one a line, touches
// every value, and prints how many strings there are, keys included, and their bytes.

#include <simdjson.h>

#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

namespace {

struct Count {
  std::size_t strings = 0;
  std::size_t bytes = 0;

  void add(std::string_view text) {
    ++strings;
    bytes += text.size();
  }
};

void visit(simdjson::dom::element element, Count& count) {
  switch (element.type()) {
    case simdjson::dom::element_type::ARRAY:
      for (const auto child : element.get_array()) visit(child, count);
      break;
    case simdjson::dom::element_type::OBJECT:
      for (const auto member : element.get_object()) {
        count.add(member.key);
        visit(member.value, count);
      }
      break;
    case simdjson::dom::element_type::STRING:
      count.add(element.get_string());
      break;
    default:
      break;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string text(std::istreambuf_iterator<char>(std::cin), {});
  Count count;
  try {
    simdjson::dom::parser parser;
    if (argc > 1 && std::string_view(argv[1]) == "--lines") {
      simdjson::dom::document_stream lines = parser.parse_many(text, text.size() + 1);
      for (auto line : lines) visit(line.value(), count);
      if (lines.truncated_bytes() != 0) return EXIT_FAILURE;
    } else {
      visit(parser.parse(text), count);
    }
  } catch (const simdjson::simdjson_error& error) {
    std::cerr << error.what() << "\n";
    return EXIT_FAILURE;
  }
  std::cout << count.strings << " " << count.bytes << "\n";
  return EXIT_SUCCESS;
}
