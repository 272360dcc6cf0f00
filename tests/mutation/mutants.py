"""All the ways to break one small thing in a C++ source: a comparison, a logical or arithmetic
operator, a constant or a returned value.

Works on tokens, and knows no types: some mutants do not compile, and some mean what the source did.
Comments, preprocessor lines, static_asserts and exported declarations stay as they are.
"""
import collections
import re

Mutant = collections.namedtuple("Mutant", "path begin end replacement line column")

TOKEN = re.compile(r"""
    (?P<skipped>//[^\n]*|/\*.*?\*/|^[ ]*\#[^\n]*|\b(?:QUORL_API|static_assert)\b[^;]*;)
  | (?P<string>"(?:\\.|[^"\\\n])*")
  | (?P<number>\b(?:0x[0-9A-F]+|[0-9][0-9']*)\b)
  | (?P<char>'(?:\\.|[^'\\\n])')
  | (?P<word>[A-Za-z_]\w*)
  | (?P<operator>[=!<>+\-*/|&]=|->|\+\+|--|&&|\|\||<<|>>|[-+<>=!|&;(){}\[\]])
    """, re.M | re.S | re.X)

# What is written for an operator. Those in SPACED mean something else where they have no blanks
# around them: a template's brackets, a sign.
SWAPS = {"==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="],
         ">=": [">", "<"], "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "|": ["&"],
         "++": ["--"], "--": ["++"], "+=": ["-="], "-=": ["+="], "|=": ["&="], "!": [""],
         "true": ["false"], "false": ["true"], "min": ["max"], "max": ["min"]}
SPACED = {"<", ">", "+", "-", "|", "&&"}
UNUSUAL_BYTE = "\\1"


def of_string(text):
    """Without its first and without its last byte."""
    units = re.findall(r"\\.|.", text[1:-1])
    if not units:
        return ['"%s"' % UNUSUAL_BYTE]
    shorter = [units[1:], units[:-1]] if len(units) > 1 else [[]]
    return ['"%s"' % "".join(part) for part in shorter]


def of_number(text):
    value = int(text.replace("'", ""), 0)
    return [str(value + 1)] + ([str(value - 1)] if value > 0 else [])


def end_of_statement(tokens, index):
    """The token of the ";" that ends the statement in which the token at index stands."""
    depth = 0
    for token in tokens[index:]:
        if token.group() in ("(", "{", "["):
            depth += 1
        elif token.group() in (")", "}", "]"):
            depth -= 1
        elif token.group() == ";" and depth == 0:
            return token
    raise ValueError("a statement without an end")


def mutants_of(path, source):
    """The mutants of one file, in the order of their places."""
    tokens = [token for token in TOKEN.finditer(source) if token.lastgroup != "skipped"]
    found = []

    def add(begin, end, replacements):
        before = source[:begin]
        line, column = before.count("\n") + 1, begin - (before.rfind("\n") + 1) + 1
        found.extend(Mutant(path, begin, end, each, line, column) for each in replacements)

    for index, token in enumerate(tokens):
        text, (begin, end) = token.group(), token.span()
        if token.lastgroup == "string":
            add(begin, end, of_string(text))
        elif token.lastgroup == "number":
            add(begin, end, of_number(text))
        elif token.lastgroup == "char":
            add(begin, end, ["'%s'" % UNUSUAL_BYTE])
        elif text in SWAPS:
            spaced = source[begin - 1:begin].isspace() and source[end:end + 1].isspace()
            if spaced or text not in SPACED:
                add(begin, end, SWAPS[text])
        elif text == "return":
            begin, end = end + 1, end_of_statement(tokens, index).start()
            if source[begin:end] not in ("", "{}", "true", "false"):
                add(begin, end, ["{}"])
    return found


def apply(source, mutant):
    return source[:mutant.begin] + mutant.replacement + source[mutant.end:]
