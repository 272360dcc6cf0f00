"""The data of a page that quorl-js view wrote, read back from its columns."""
import base64
import gzip
import json
import re
import struct

TYPES = {"u8": "B", "u16": "H", "u32": "I", "i32": "i", "f64": "d"}


class Page:
    """Has the header, a list of files and one of items; both hold dictionaries."""

    def __init__(self, html):
        found = re.findall(rb'<script id="data" type="text/plain">([^<]*)</script>', html)
        assert len(found) == 1, len(found)
        data = gzip.decompress(base64.b64decode(found[0], validate=True))
        assert data[:8] == b"QJVIEW1\n", data[:8]
        length, zero = struct.unpack("<II", data[8:16])
        assert zero == 0 and length % 8 == 0
        self.header = json.loads(data[16:16 + length])
        columns, at = {}, 16 + length
        for name, kind, count in self.header["columns"]:
            form = "<%d%s" % (count, TYPES[kind])
            columns[name] = struct.unpack_from(form, data, at)
            at += (struct.calcsize(form) + 7) // 8 * 8
        assert at == len(data), (at, len(data))
        self.files = rows(columns, "file.")
        self.items = rows(columns, "item.")
        assert sum(file["items"] for file in self.files) == len(self.items)
        self.name_files()

    def name_files(self):
        """Gives each item its file's path, its line, and its parent's place in the list."""
        place = 0
        for file in self.files:
            line = 0
            for _ in range(file["items"]):
                item = self.items[place]
                line += item["line"]
                distance = item["parent"]
                item.update(file=file["path"], line=line, last=line + item["more"],
                            parent=place - distance if distance else None,
                            kind=self.header["kinds"][item["kind"]],
                            label=([None] + self.header["labels"])[item["label"]])
                place += 1


def rows(columns, prefix):
    mine = {name[len(prefix):]: list(values) for name, values in columns.items()
            if name.startswith(prefix)}
    for name in [name[:-1] for name in mine if name.endswith("#")]:
        ends, pool, at = mine.pop(name + "#"), bytes(mine[name]), 0
        mine[name] = []
        for length in ends:
            mine[name].append(pool[at:at + length])
            at += length
        assert at == len(pool)
    counts = {len(values) for values in mine.values()}
    assert len(counts) == 1, (prefix, counts)
    return [dict(zip(mine, values)) for values in zip(*mine.values())]
