"""Makes the texts that the benchmarks read, from real packages of the npm registry.

usage: texts.py CACHE_FOLDER

Prints the folder that holds them. The packages are pinned by version and checksum; none of their
content is part of the project. In the folder:

    runs/ROUTE/SIZE/  one text each for script, page, c and markdown, whole and in pieces of about
                      10 KB, 100 KB and 1 MB, cut between documents if these are smaller, else at
                      line ends; joined, the pieces are the whole text, so all sizes hold the same
                      text
    runs/small/KIND/  200 files of 1 to 30 KB of each of five kinds; KIND-joined/ holds them as one
                      file, and KIND-heads/ the first bytes of each
"""
import base64
import hashlib
import itertools
import pathlib
import re
import shutil
import sys
import tarfile
import urllib.request

PACKAGES = {
    "typescript-5.4.5": ("typescript", "vcI4UpRgg81oIRUFwR0WSIHKt11nJ7SAVlYNIu+QpqeyXP+gpQJy/Z4+F0a"
                         "GxSE4MqwjyXvW/TzgkLAx2AGHwQ=="),
    "dojox-1.17.3": ("dojox", "n2SvGoVTZlOQUQmoqEfW6oGAfmyBtjl4DzWkxoojdTxBq8O0r7pDKBrW3nRrpQW9uZFH"
                     "fB1XIA3BXS0cnrue/Q=="),
    "nodegit-0.27.0": ("nodegit", "E9K4gPjWiA0b3Tx5lfWCzG7Cvodi2idl3V5UD2fZrOrHikIfrN7Fc2kWLtMUqqom"
                       "yoToYJLeIC8IV7xb1CYRLA=="),
    "aws-cdk-lib-2.150.0": ("aws-cdk-lib", "A5dJ6iIAXlkSgUIKhhSd5slEjvDBiREv6/xw8CgrXU+puoFULu5bC0S"
                            "OQARjTzcsAgAVtxdlaZ7qy7u9It7nHQ=="),
    "npm-10.9.0": ("npm", "ZanDioFylI9helNhl2LNd+ErmVD+H5I53ry41ixlLyCBgkuYb+58CvbAp99hW+zr5L9W4X7C"
                   "chSoeqKdngOLSw=="),
}
SCRIPT = ("typescript-5.4.5", "package/lib/tsc.js")
SCRIPT_BYTES, SCRIPT_LINES = 5_000_000, 99_990  # the route stops after 100,000 lines
TEXT_BYTES = 10_000_000
FILE_END, PARAGRAPH_END = rb"\Z", rb"(?<=\n)\n+"
ROUTES = {  # (packages, extensions, pattern that ends a part of a document)
    "page": (("dojox-1.17.3", "npm-10.9.0"), (".html",), None),
    "c": (("nodegit-0.27.0",), (".c", ".h"), FILE_END),
    "markdown": (("aws-cdk-lib-2.150.0", "npm-10.9.0", "nodegit-0.27.0"), (".md",), PARAGRAPH_END),
}
AMBIGUOUS = re.compile(rb"/\*|\*/|\\")  # globs and escapes: readers disagree on them
SIZES = {"10KB": 10_000, "100KB": 100_000, "1MB": 1_000_000}
SMALL_BYTES = range(1_000, 30_001)
SMALL_FILES = 200
HEAD_BYTES = 64  # almost nothing: measures the fixed cost per file
SMALL = {  # as above
    "script": (("dojox-1.17.3", "npm-10.9.0"), (".js",), None),
    "page": ROUTES["page"],
    "css": (("dojox-1.17.3",), (".css",), None),
    "c": (("nodegit-0.27.0",), (".c",), FILE_END),
    "markdown": ROUTES["markdown"],
}


def fetch(package, folder):
    """Return the package's archive; download it if missing, then verify its checksum."""
    name, checksum = PACKAGES[package]
    path = folder / (package + ".tgz")
    if not path.exists():
        print("fetching", package, file=sys.stderr)
        url = "https://registry.npmjs.org/%s/-/%s.tgz" % (name, package)
        part = path.with_suffix(".part")
        with urllib.request.urlopen(url, timeout=60) as source, open(part, "wb") as target:
            shutil.copyfileobj(source, target)
        part.rename(path)
    found = base64.b64encode(hashlib.sha512(path.read_bytes()).digest()).decode()
    if found != checksum:
        path.unlink()
        sys.exit("%s has the checksum %s, not %s" % (package, found, checksum))
    return path


def read_archive(path, extensions):
    """Return the files with one of the extensions as (name, bytes), sorted by name."""
    with tarfile.open(path) as archive:
        return sorted((member.name, archive.extractfile(member).read()) for member in archive
                      if member.isfile() and pathlib.PurePath(member.name).suffix in extensions)


def cut_at_line(text, size):
    """Return pieces of at most size bytes, cut at line ends where there are any."""
    pieces = []
    start = 0
    while start < len(text):
        end = start + size
        if end < len(text):
            end = text.rfind(b"\n", start, end) + 1 or end
        pieces.append(text[start:end])
        start += len(pieces[-1])
    return pieces


def pack(documents, size):
    """Return pieces of about size bytes, made of whole documents unless one is larger."""
    pieces = [b""]
    for document in documents:
        for part in cut_at_line(document, size):
            if pieces[-1] and len(pieces[-1]) + len(part) > size:
                pieces.append(b"")
            pieces[-1] += part
    return pieces


def write_all(folder, texts, extension):
    folder.mkdir(parents=True)
    for number, text in enumerate(texts):
        (folder / ("%04d%s" % (number, extension))).write_bytes(text)


def write_route(folder, documents, extension):
    whole = b"".join(documents)
    for name, size in SIZES.items():
        pieces = pack(documents, size)
        assert b"".join(pieces) == whole
        write_all(folder / name, pieces, extension)
    write_all(folder / "whole", [whole], extension)


def script_text(archives):
    package, name = SCRIPT
    text = dict(archives(package, (".js",)))[name][:SCRIPT_BYTES]
    text = b"".join(text.splitlines(keepends=True)[:SCRIPT_LINES])
    return text[:text.rindex(b"\nfunction ") + 1]  # no statement is open here


# Enclosing pairs as a run sees them: it strips comments first, without treating backticks as
# strings, then directives. The groups named endless and open match an opening without an end.
COMMENT = rb"//[^\n]*|/\*.*?(?:\*/|(?P<endless>\Z))"
STRING = rb"(?P<quote>[%s])(?:\\.|(?!(?P=quote)).)*(?:(?P=quote)|(?P<open>\Z))"
COMMENT_OR_STRING = re.compile(COMMENT + b"|" + STRING % b"\"'", re.S)
CONDITION = re.compile(rb"^\s*#\s*(if|endif)", re.M)  # also in prose
DIRECTIVE = re.compile(rb"^\s*#.*$", re.M)  # or a heading; the line is removed
STRING_OR_BRACKET = re.compile(STRING % b"\"'`" + b"|[{}()]", re.S)


def closes_all(text):
    """Return whether all comments, strings, brackets and conditions of the text are closed."""
    conditions = [match[1] for match in CONDITION.finditer(text)]
    if conditions.count(b"if") != conditions.count(b"endif"):
        return False
    code, start = [], 0
    for match in COMMENT_OR_STRING.finditer(text):
        if match["endless"] is not None or match["open"] is not None:
            return False
        if not match["quote"]:
            code.append(text[start:match.start()])
            start = match.end()
    code.append(text[start:])
    open_brackets = []
    for match in STRING_OR_BRACKET.finditer(DIRECTIVE.sub(b"", b"".join(code))):
        if match["open"] is not None:
            return False
        if match[0] in (b"(", b"{"):
            open_brackets.append(match[0])
        elif not match["quote"]:
            if not open_brackets or open_brackets.pop() != {b")": b"(", b"}": b"{"}[match[0]]:
                return False
    return not open_brackets


def documents_of(archives, packages, extensions, part_end):
    """Return the packages' documents. With part_end, drop the parts that leave something open.

    An unclosed construct hides the rest of the text from the scanner route, and an extra "}" ends
    the scan: a large text would be parsed in no time.
    """
    documents = [text for package in packages for _, text in archives(package, extensions)]
    if part_end:
        documents = [b"\n".join(part for part in re.split(part_end, text) if closes_all(part)
                                and (part_end == FILE_END or not AMBIGUOUS.search(part)))
                     for text in documents]
    return [text if text.endswith(b"\n") else text + b"\n" for text in documents if text]


def fill(documents, size):
    """Return whole documents of at most size bytes in total, starting over if they run out."""
    taken = []
    for text in itertools.cycle(documents):
        size -= len(text)
        if size < 0:
            return taken
        taken.append(text)


def write_small(folder, archives):
    for kind, (packages, extensions, part_end) in SMALL.items():
        found = [text for text in documents_of(archives, packages, extensions, part_end)
                 if len(text) in SMALL_BYTES]
        assert len(found) >= SMALL_FILES, (kind, len(found))
        chosen = [found[i * len(found) // SMALL_FILES] for i in range(SMALL_FILES)]
        write_all(folder / kind, chosen, extensions[0])
        write_all(folder / (kind + "-joined"), [b"".join(chosen)], extensions[0])
        write_all(folder / (kind + "-heads"), [text[:HEAD_BYTES] for text in chosen], extensions[0])


def make(folder, downloads):
    def archives(package, extensions):
        return read_archive(fetch(package, downloads), extensions)

    write_route(folder / "runs" / "script", [script_text(archives)], ".js")
    for route, (packages, extensions, part_end) in ROUTES.items():
        documents = fill(documents_of(archives, packages, extensions, part_end), TEXT_BYTES)
        write_route(folder / "runs" / route, documents, extensions[0])
    write_small(folder / "runs" / "small", archives)


def prepare(cache):
    """Return the folder of texts, which is made again only if this script has changed."""
    recipe = hashlib.sha256(pathlib.Path(__file__).read_bytes()).hexdigest()[:12]
    folder = cache / ("texts-" + recipe)
    if folder.exists():
        return folder
    downloads = cache / "packages"
    downloads.mkdir(parents=True, exist_ok=True)
    part = cache / "texts.part"
    shutil.rmtree(part, ignore_errors=True)
    make(part, downloads)
    for old in cache.glob("texts-*"):
        shutil.rmtree(old)
    part.rename(folder)
    return folder


if __name__ == "__main__":
    print(prepare(pathlib.Path(sys.argv[1])))
