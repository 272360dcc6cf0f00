"""All the ways to break one small thing in a C++ source: a comparison, a logical or arithmetic
operator, a constant or a returned value.

Works on tokens, and knows no types: some mutants do not compile, and some mean what the source did.
Comments, preprocessor lines, static_asserts and exported declarations stay as they are.
"""
import collections
import re

Mutant = collections.namedtuple("Mutant", "path begin end replacement line column function")

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


# Enough of the language to find the functions of a source.
CODE = re.compile(r"""
    (?P<skipped>//[^\n]*|/\*.*?\*/|^[ ]*\#[^\n]*)
  | "(?:\\.|[^"\\\n])*" | '(?:\\.|[^'\\\n])' | [A-Za-z_]\w* | [0-9][0-9a-zA-Z']* | :: | \S
    """, re.M | re.S | re.X)
TYPE_WORDS = {"class", "struct", "union", "enum"}
WORD = re.compile(r"[A-Za-z_]\w*\Z")


def without_template(head):
    """The words of a declaration behind "template <...>"."""
    if head[:1] != ["template"]:
        return head
    depth = 0
    for index, word in enumerate(head):
        depth += (word == "<") - (word == ">")
        if depth == 0 and word == ">":
            return without_template(head[index + 1:])
    return []


def declared_by(head):
    """What the words before an opening brace declare: a kind, and its name."""
    words = without_template(head)
    if "namespace" in words:
        return "namespace", ""
    opening = words.index("(") if "(" in words else len(words)
    types = [index for index, word in enumerate(words[:opening]) if word in TYPE_WORDS]
    if types and opening == len(words):
        names = [word for word in words[types[-1] + 1:] if WORD.match(word)]
        return "class", (names or [""])[0]
    if opening == len(words) or ("=" in words[:opening] and "operator" not in words):
        return "namespace" if words[:1] == ["extern"] else "value", ""
    if "operator" in words[:opening]:
        begin = words.index("operator")
        if words[begin + 1:begin + 3] == ["(", ")"]:
            opening = begin + 3
    else:
        begin = opening - 1
    begin -= words[begin - 1:begin] == ["~"]
    while begin > 1 and words[begin - 1] == "::":
        begin -= 2
    return "function", "".join(words[begin:opening])


def functions_in(source):
    """(begin, end, name) of each function with a body: from its declaration on to the brace that
    closes it. Members are named with their class, and functions in functions are not found."""
    found, scopes, saved = [], [], []
    head, parentheses = [], 0  # of the declaration that is read, and how many are open in it
    for token in CODE.finditer(source):
        if token.lastgroup == "skipped":
            continue
        word = token.group()
        if word == "{":
            names = [each.group() for each in head]
            inside = any(kind in ("function", "value", "braces") for kind, _, _ in scopes)
            # A default argument, or a member that a constructor initialises before its body.
            behind = names[len(names) - names[::-1].index(")"):] if ")" in names else []
            initialises = not inside and (
                parentheses > 0 or (":" in behind and WORD.match(names[-1]) is not None))
            kind, name = ("braces", "") if inside or initialises else declared_by(names)
            if kind == "function":
                classes = [outer for outer_kind, outer, _ in scopes if outer_kind == "class"]
                name = "::".join(classes + [name])
            scopes.append((kind, name, (head or [token])[0].start()))
            saved.append((head, parentheses) if initialises else ([], 0))
            head, parentheses = [], 0
        elif word == "}":
            kind, name, begin = scopes.pop()
            head, parentheses = saved.pop()
            if kind == "function":
                found.append((begin, token.end(), name))
        elif word == ";" and parentheses == 0:
            head = []
        else:
            parentheses += (word == "(") - (word == ")")
            head.append(token)
    return found


def function_at(functions, offset):
    """The name of the function at an offset; "-" where there is none."""
    return next((name for begin, end, name in functions if begin <= offset < end), "-")


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
    functions = functions_in(source)
    found = []

    def add(begin, end, replacements):
        before = source[:begin]
        line, column = before.count("\n") + 1, begin - (before.rfind("\n") + 1) + 1
        function = function_at(functions, begin)
        found.extend(Mutant(path, begin, end, each, line, column, function)
                     for each in replacements)

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
