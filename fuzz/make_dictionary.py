"""Builds the fuzzers' dictionary from the string literals in the sources.

usage: make_dictionary.py SOURCE_FOLDER
       make_dictionary.py --check SOURCE_FOLDER

Every string literal of the folders that read text becomes a word, whatever table or call it is in,
so that a new word in the sources reaches the dictionary. Skipped: literals that span lines (the
layout of records) and single bytes, which a fuzzer finds by itself. --check tests how words are
found and builds no dictionary.
"""
import pathlib
import re
import sys

FOLDERS = ("cleaner", "detect", "html", "builder", "refine", "records", "text")

# Match comments and character literals too, so that a quote inside them opens no string.
TOKEN = re.compile(r"""//[^\n]*|/\*.*?\*/|'(?:\\.|[^'\\\n])+'|"((?:\\.|[^"\\\n])*)\"""", re.S)
DIGIT_SEPARATOR = re.compile(r"(?<=[0-9a-fA-F])'(?=[0-9a-fA-F])")
ESCAPE = re.compile(r"\\(x[0-9a-fA-F]+|[0-7]{1,3}|.)")
LETTERS = {"n": "\n", "t": "\t", "r": "\r", "v": "\v", "f": "\f", "a": "\a", "b": "\b"}


def unescaped(literal):
    def byte_of(match):
        code = match.group(1)
        if code[0] == "x":
            return chr(int(code[1:], 16))
        if code[0] in "01234567":
            return chr(int(code, 8))
        return LETTERS.get(code, code)
    return ESCAPE.sub(byte_of, literal)


def words_in(source):
    assert 'R"' not in source, "raw strings are not known here"
    code = re.sub(r"^\s*#\s*include[^\n]*", "", source, flags=re.M)
    code = DIGIT_SEPARATOR.sub("", code)
    words = {unescaped(match.group(1)) for match in TOKEN.finditer(code)
             if match.group(1) is not None}
    return {word for word in words if len(word) > 1 and "\n" not in word}


def words_below(folder):
    words = set()
    for name in FOLDERS:
        for path in sorted((folder / name).iterdir()):
            if path.suffix in (".h", ".cpp"):
                words |= words_in(path.read_text(encoding="ascii"))
    return words


def entry_of(word):
    return '"%s"' % "".join(
        byte if " " <= byte <= "~" and byte not in '"\\' else "\\x%02X" % ord(byte)
        for byte in word)


def check(folder):
    example = """
#include "a/b.h"
// "not this" or '"'
/* nor "this" */
constexpr std::size_t kMany = 1'000;  // it's "none"
constexpr char kQuote = '"', kOther = '\\'';
const char* const kWords[] = {"one", "t\\"wo", "\\x41\\102\\t", "x", "", "a\\nb"};
if (part.is("three")) {}
"""
    found = words_in(example)
    assert found == {"one", 't"wo', "AB\t", "three"}, found
    assert entry_of('a"b\\\t') == '"a\\x22b\\x5C\\x09"', entry_of('a"b\\\t')

    # At least one word of each table and chain of tests.
    known = {"#ifndef", "-->", "TTTTT", "finally", "while", "!==", "async", "+=", "require",
             "customElements.define", "typeof module", "xhtml", "es6", "</script>", "!DOCTYPE",
             "input", "action=", "extends", "));", "))))", "namespace"}
    missing = known - words_below(folder)
    assert not missing, missing


def main():
    arguments = sys.argv[1:]
    if arguments[0] == "--check":
        check(pathlib.Path(arguments[1]))
        return
    for word in sorted(words_below(pathlib.Path(arguments[0]))):
        print(entry_of(word))


if __name__ == "__main__":
    main()
