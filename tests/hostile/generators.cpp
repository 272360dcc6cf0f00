// A directive longer than 50 bytes, and a line with more than 50 blanks before its first other
// byte, is reported once for every byte beyond, each time with the whole line so far: by contract
// the output grows with the square of the line. So none of these texts has such a line, and bytes
// that become blanks come after an "x".
#include "hostile/generators.h"

#include <algorithm>
#include <string_view>

namespace hostile {
namespace {

// Repeats unit as often as it fits into that many bytes.
std::string repeat(std::string_view unit, std::size_t bytes) {
  std::string text;
  text.reserve(bytes);
  while (bytes - text.size() >= unit.size()) text.append(unit);
  return text;
}

// Repeats unit up to exactly that many bytes; the last one is cut off.
std::string fill(std::string_view unit, std::size_t bytes) {
  return repeat(unit, bytes).append(unit.substr(0, bytes % unit.size()));
}

// The size of a piece of a text: a fraction of it, up to a limit. So short and long texts have the
// same structure, and work repeated for every remaining byte grows with the text.
std::size_t pieceSize(std::size_t limit, std::size_t bytes, std::size_t fraction) {
  return std::min(limit, bytes / fraction);
}

template <typename... Pieces>
std::string join(const Pieces&... pieces) {
  std::string text;
  (text.append(pieces), ...);
  return text;
}

// Script lines of repeated units, just below the limit for a line. The leading "=" makes each a
// possible variable or function, so that its content is examined.
std::string longLines(std::string_view unit, std::size_t bytes) {
  return fill(join("x= ", repeat(unit, pieceSize(9'996, bytes, 8)), "\n"), bytes);
}

// Lines that begin with an "x" followed by repeated units.
std::string longTails(std::string_view unit, std::size_t bytes) {
  return fill(join("x", repeat(unit, pieceSize(9'990, bytes, 8)), "y\n"), bytes);
}

// Ten heads, each a fiftieth of the text up to limit, with repeated units inside them.
std::string underTenHeads(std::string_view before, std::size_t limit, std::string_view behind,
                          std::string_view unit, std::size_t bytes) {
  const std::string head = join(before, std::string(pieceSize(limit, bytes, 50), 'h'), behind);
  const std::string heads = repeat(head, 10 * head.size());
  return join(heads, repeat(unit, bytes - std::min(heads.size(), bytes)));
}

std::string conditionalsWithNewNames(std::size_t bytes) {
  std::string text;
  for (int i = 0; text.size() < bytes; ++i) {
    text.append("#ifdef N").append(std::to_string(i)).append("\n#endif\n");
  }
  return text;
}

// A backslash and a backtick in a string: to the scanner the next quote ends the string, to the
// splitter of parts it is still inside. So they disagree on everything that follows: the blocks are
// in a string when statements are scanned, hence in one leaf of the tree, but outside strings when
// that leaf is split.
std::string inOneLeaf(std::string_view blocks, std::size_t bytes) {
  return join("x = '\\`' '", repeat(blocks, bytes), "';\n");
}

std::string highBytes() {
  std::string bytes;
  for (int byte = 0x80; byte <= 0xFF; ++byte) bytes.push_back(static_cast<char>(byte));
  return bytes;
}

constexpr Generator kGenerators[] = {
    {"page_script_openers", ".html", [](std::size_t n) { return repeat("<script>", n); }},
    {"page_inline_scripts", ".html", [](std::size_t n) { return repeat("<script>x</script>", n); }},
    {"page_text_under_a_long_tag", ".html",
     [](std::size_t n) {
       const std::string name(pieceSize(9'999, n, 20), ':');
       return join("<", name, ">", repeat("<br>x", n - name.size()));
     }},
    {"page_open_tags", ".html", [](std::size_t n) { return repeat("<a>", n); }},
    {"page_tags_over_the_limit", ".html",
     [](std::size_t n) {
       return fill(join("<", std::string(pieceSize(10'001, n, 8), 't'), ">"), n);
     }},
    {"page_sibling_braces", ".html", [](std::size_t n) { return repeat("<{/>", n); }},
    {"page_paragraphs_never_closed", ".html", [](std::size_t n) { return repeat("<p>x\n", n); }},
    {"page_stray_closing_tags", ".html", [](std::size_t n) { return repeat("</p>", n); }},
    {"page_comment_openers", ".html", [](std::size_t n) { return repeat("<!--", n); }},
    {"page_comments", ".html", [](std::size_t n) { return repeat("<!--x-->x", n); }},
    {"page_without_tags", ".html", [](std::size_t n) { return repeat("text ", n); }},

    {"text_continued_lines", ".txt", [](std::size_t n) { return repeat("\\\n", n); }},
    // The blank that decides whether a line continues is ever further back.
    {"text_continued_by_an_early_blank", ".txt",
     [](std::size_t n) { return join("x\\ ", repeat("y\n", n)); }},
    {"text_closers_then_semicolons", ".txt",
     [](std::size_t n) { return join(repeat(")", n / 2), repeat(";", n / 2)); }},
    {"text_blanks_and_semicolons", ".txt", [](std::size_t n) { return repeat(" ;", n); }},
    {"text_closers_and_semicolons", ".txt", [](std::size_t n) { return repeat(");", n); }},
    {"text_closers_before_a_statement", ".txt",
     [](std::size_t n) { return join(repeat(")", n), "x;\n"); }},
    {"text_conditionals_with_new_names", ".txt", conditionalsWithNewNames},
    {"text_conditionals_never_closed", ".txt", [](std::size_t n) { return repeat("#if x\n", n); }},
    {"text_alternatives", ".txt",
     [](std::size_t n) { return join("#if x\n", repeat("#else\n#elif x\n", n)); }},
    {"text_continued_directives", ".txt",
     [](std::size_t n) { return fill(join("#x \\\n", repeat(" \n", 90), "y\n"), n); }},
    {"text_directive_over_empty_lines", ".txt",
     [](std::size_t n) { return join("#x \\\n", repeat("\n", n)); }},
    {"text_one_statement_of_assignments", ".txt",
     [](std::size_t n) { return join("x= ", repeat("=()", n), ";\n"); }},
    {"text_one_statement_of_calls", ".txt",
     [](std::size_t n) { return join("x= ", repeat("f() ", n), ";\n"); }},
    {"text_long_header_over_small_children", ".txt",
     [](std::size_t n) { return join(repeat("h", n / 2), " {", repeat("b;", n / 2)); }},
    // The two closing braces leave the scope that every text starts in: its title contains "class",
    // and the search for classes stops there.
    {"text_classes_under_long_headers", ".txt",
     [](std::size_t n) { return join("}}", underTenHeads("", 10'000, " {", "class c;", n)); }},
    {"text_opening_braces", ".txt", [](std::size_t n) { return repeat("{", n); }},
    {"text_closing_braces", ".txt", [](std::size_t n) { return repeat("}", n); }},
    {"text_blocks_never_closed", ".txt", [](std::size_t n) { return repeat("a{", n); }},
    {"text_blocks_closed_at_the_end", ".txt",
     [](std::size_t n) { return join(repeat("a{", n / 3 * 2), repeat("}", n / 3)); }},
    {"text_blocks_in_one_leaf", ".txt", [](std::size_t n) { return inOneLeaf("a { b; c; } ", n); }},
    {"text_nested_blocks_in_one_leaf", ".txt",
     [](std::size_t n) { return inOneLeaf("a { b; ", n); }},
    {"text_template_never_closed", ".txt",
     [](std::size_t n) { return join("x = `", repeat("y;\n", n)); }},
    {"text_string_never_closed", ".txt",
     [](std::size_t n) { return join("x = '", repeat("y;\n", n)); }},

    {"script_open_functions", ".js", [](std::size_t n) { return repeat("function f() {\n", n); }},
    {"script_closing_braces", ".js", [](std::size_t n) { return repeat("}\n", n); }},
    {"script_open_conditions", ".js", [](std::size_t n) { return repeat("if (x) {\n", n); }},
    {"script_lines_of_assignments", ".js", [](std::size_t n) { return longLines("=()", n); }},
    {"script_lines_of_calls", ".js", [](std::size_t n) { return longLines("f() ", n); }},
    {"script_lines_of_commas", ".js", [](std::size_t n) { return longLines(",", n); }},
    {"script_lines_of_closers", ".js", [](std::size_t n) { return longLines(")", n); }},
    // A hundred pairs of braces; a line with one more is skipped.
    {"script_lines_of_blocks", ".js",
     [](std::size_t n) { return fill(join(repeat("f(){}", 500), "\n"), n); }},
    {"script_classes_under_long_heads", ".js",
     [](std::size_t n) { return underTenHeads("function ", 9'970, "() {\n", "class c;\n", n); }},
    {"script_one_line", ".js", [](std::size_t n) { return repeat("x", n); }},
    {"script_comment_openers", ".js", [](std::size_t n) { return repeat("/*", n); }},
    {"script_slashes", ".js", [](std::size_t n) { return repeat("//", n); }},
    {"script_string_never_closed", ".js",
     [](std::size_t n) { return join("\"", repeat("x = 1;\n", n)); }},
    {"script_markers", ".js", [](std::size_t n) { return repeat("TTTTT", n); }},
    {"script_opening_brackets", ".js", [](std::size_t n) { return repeat("[", n); }},
    {"script_page_comment_openers", ".js", [](std::size_t n) { return repeat("<!--", n); }},
    {"script_lines_of_blanks", ".js",
     [](std::size_t n) { return repeat(join(std::string(49, ' '), "\n"), n); }},
    {"script_tabs", ".js", [](std::size_t n) { return longTails("\t", n); }},
    {"script_high_bytes", ".js", [](std::size_t n) { return longTails(highBytes(), n); }},
    {"script_nul_bytes", ".js",
     [](std::size_t n) { return longTails(std::string_view("\0", 1), n); }},
    {"script_slashes_without_end", ".js", [](std::size_t n) { return repeat("=/[", n); }},
    {"script_open_tags", ".jsx", [](std::size_t n) { return repeat("(<a>", n); }},
    {"script_open_templates", ".js", [](std::size_t n) { return repeat("`${", n); }},
    {"script_values_of_values", ".js", [](std::size_t n) { return repeat("a=b=>\n", n); }},
    {"script_type_parameters", ".ts", [](std::size_t n) { return repeat("type A<B=<\n", n); }},
    {"script_wrong_closers", ".js", [](std::size_t n) { return repeat("f={(\n}", n); }},
    {"script_functions_never_closed", ".js",
     [](std::size_t n) { return repeat("  function f() {(\n", n); }},
    {"script_carriage_returns", ".js", [](std::size_t n) { return repeat("\r", n); }},
};

}  // namespace

std::span<const Generator> generators() { return kGenerators; }

}  // namespace hostile
