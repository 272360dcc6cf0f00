"""Makes the texts that the benchmarks read: real ones, out of packages of the npm registry.

usage: texts.py CACHE_FOLDER

Prints the folder that holds them. The packages are pinned by version and checksum, and nothing of
them is part of the project. Below the folder:

  runs/ROUTE/SIZE/  one text for each of script, page, c and markdown, whole and in pieces of about
                    10 KB, 100 KB and 1 MB, cut between documents where these are smaller and else
                    at line ends; the pieces together are the whole
  runs/small/KIND/  200 files of 1 to 30 KB of each of five kinds, just as they are; the folders
                    named KIND-joined hold them as one file
"""
import base64
import hashlib
import pathlib
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
SCRIPT = ("typescript-5.4.5", "package/lib/typescript.js")
SCRIPT_BYTES, SCRIPT_LINES = 5_000_000, 99_990  # the route reads 100,000 lines and no more
TEXT_BYTES = 10_000_000
ROUTES = {  # (packages, extensions of the documents, extension of the pieces)
    "page": (("dojox-1.17.3", "npm-10.9.0"), (".html",), ".html"),
    "c": (("nodegit-0.27.0",), (".c", ".h"), ".c"),
    "markdown": (("aws-cdk-lib-2.150.0", "npm-10.9.0", "nodegit-0.27.0"), (".md",), ".md"),
}
SIZES = {"10KB": 10_000, "100KB": 100_000, "1MB": 1_000_000}
SMALL_BYTES = range(1_000, 30_001)
SMALL_FILES = 200
SMALL = {  # (packages, extension)
    "script": (("dojox-1.17.3", "npm-10.9.0"), ".js"),
    "page": (("dojox-1.17.3", "npm-10.9.0"), ".html"),
    "css": (("dojox-1.17.3",), ".css"),
    "c": (("nodegit-0.27.0",), ".c"),
    "markdown": (("aws-cdk-lib-2.150.0", "npm-10.9.0"), ".md"),
}


def fetch(package, folder):
    """The package's archive, downloaded unless it is there, and compared with its checksum."""
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
    """The files with one of the extensions, as (name, bytes), by name."""
    with tarfile.open(path) as archive:
        return sorted((member.name, archive.extractfile(member).read()) for member in archive
                      if member.isfile() and pathlib.PurePath(member.name).suffix in extensions)


def cut_at_line(text, size):
    """Pieces of at most size bytes; a line end ends all of them that hold one, but the last."""
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
    """Pieces of about size bytes, of whole documents where they are no larger than that."""
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
    return b"".join(text.splitlines(keepends=True)[:SCRIPT_LINES])


def documents_of(archives, packages, extensions):
    """Documents of TEXT_BYTES together; they begin anew where there are not so many."""
    found = [text if text.endswith(b"\n") else text + b"\n" for package in packages
             for _, text in archives(package, extensions) if keeps_balance(text, extensions)]
    documents, left = [], TEXT_BYTES
    while left > 0:
        for text in found:
            documents.append(text[:left])
            left -= len(documents[-1])
            if left == 0:
                break
    return documents


def keeps_balance(text, extensions):
    """A closing brace too many ends the scan of all that is behind it."""
    return ".c" not in extensions or text.count(b"{") == text.count(b"}")


def write_small(folder, archives):
    for kind, (packages, extension) in SMALL.items():
        found = [text for package in packages for _, text in archives(package, (extension,))
                 if len(text) in SMALL_BYTES]
        assert len(found) >= SMALL_FILES, (kind, len(found))
        chosen = [found[i * len(found) // SMALL_FILES] for i in range(SMALL_FILES)]
        write_all(folder / kind, chosen, extension)
        write_all(folder / (kind + "-joined"), [b"".join(chosen)], extension)


def make(folder, downloads):
    def archives(package, extensions):
        return read_archive(fetch(package, downloads), extensions)

    write_route(folder / "runs" / "script", [script_text(archives)], ".js")
    for route, (packages, extensions, extension) in ROUTES.items():
        write_route(folder / "runs" / route, documents_of(archives, packages, extensions),
                    extension)
    write_small(folder / "runs" / "small", archives)


def prepare(cache):
    """The folder of the texts, made unless this very file has made it already."""
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
