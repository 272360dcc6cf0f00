// Makes pages as quorl-js view does, from files given as objects: for texts and trees that no real file
// has. A file is {path, status, message, size, lines, omittedLines, omittedBytes, omitted, source,
// hidden, items}; an item {kind, label, line, last, parent, bytes, cut, name, text}, where parent is
// the index in its file of the item that contains it, or -1. Texts are strings or Buffers.
"use strict";
const fs = require("fs");
const zlib = require("zlib");

const KINDS = ["function", "method", "constructor", "getter", "setter", "class", "interface", "enum",
  "namespace", "type", "variable", "field", "module", "callback", "logic", "loop", "statement",
  "element", "link", "script", "block"];
const LABELS = ["function", "class", "line", "logic"];
const STATUSES = ["answered", "empty", "failed"];

const TYPES = { u8: Uint8Array, u16: Uint16Array, u32: Uint32Array, i32: Int32Array,
  f64: Float64Array };

// Columns that grow: values for numbers, Buffers or strings for texts.
class Columns {
  constructor() {
    this.list = [];
  }

  numbers(name, type, values) {
    this.list.push([name, type, TYPES[type].from(values)]);
  }

  texts(name, values) {
    const parts = values.map((value) => (Buffer.isBuffer(value) ? value : Buffer.from(value || "")));
    this.numbers(name + "#", "u32", parts.map((part) => part.length));
    this.list.push([name, "u8", Buffer.concat(parts)]);
  }

  bytes(header) {
    const columns = this.list.map(([name, type, values]) => [name, type, values.length]);
    let json = Buffer.from(JSON.stringify({ ...header, columns }));
    json = Buffer.concat([json, Buffer.alloc((8 - (json.length % 8)) % 8, " ")]);
    const start = Buffer.alloc(16);
    start.write("QJVIEW1\n");
    start.writeUInt32LE(json.length, 8);
    const parts = [start, json];
    for (const [, , values] of this.list) {
      const bytes = Buffer.from(values.buffer, values.byteOffset, values.byteLength);
      parts.push(bytes, Buffer.alloc((8 - (bytes.length % 8)) % 8));
    }
    return Buffer.concat(parts);
  }
}

function columnsOf(files) {
  const columns = new Columns();
  const of = (name, otherwise) => files.map((file) => file[name] ?? otherwise);
  columns.texts("file.path", of("path"));
  columns.numbers("file.status", "u8", of("status", "answered").map((word) => STATUSES.indexOf(word)));
  columns.texts("file.message", of("message"));
  columns.numbers("file.size", "f64", of("size", 0));
  columns.numbers("file.lines", "u32", of("lines", 0));
  columns.numbers("file.records", "u32", files.map((file) => file.items.length + 4));
  columns.numbers("file.items", "u32", files.map((file) => file.items.length));
  columns.numbers("file.hidden", "u32", of("hidden", 0));
  columns.numbers("file.omittedLines", "u32", of("omittedLines", 0));
  columns.numbers("file.omittedBytes", "f64", of("omittedBytes", 0));
  columns.texts("file.omitted", of("omitted"));
  columns.numbers("file.hasSource", "u8", files.map((file) => (file.source === undefined ? 0 : 1)));
  columns.texts("file.source", of("source"));
  const all = (value) => files.flatMap((file) => file.items.map((item, k) => value(item, k, file)));
  columns.numbers("item.kind", "u8", all((item) => KINDS.indexOf(item.kind)));
  columns.numbers("item.label", "u16", all((item) => LABELS.indexOf(item.label) + 1));
  columns.numbers("item.line", "i32",
    all((item, k, file) => item.line - (k === 0 ? 0 : file.items[k - 1].line)));
  columns.numbers("item.more", "u32", all((item) => (item.last ?? item.line) - item.line));
  columns.numbers("item.parent", "u32", all((item, k) => ((item.parent ?? -1) < 0 ? 0 : k - item.parent)));
  columns.numbers("item.bytes", "u32", all((item) => item.bytes ?? 0));
  columns.numbers("item.cut", "u8", all((item) => (item.cut ? 1 : 0)));
  columns.texts("item.name", all((item) => item.name));
  columns.texts("item.text", all((item) => item.text));
  return columns;
}

// Writes a page with the files' data. The template is view/dist/page.html.
function writePage(template, target, files, header = {}) {
  const bytes = columnsOf(files).bytes({ tool: "quorl-js 1.0.0", kinds: KINDS, labels: LABELS,
    statuses: STATUSES, textLimit: 200, hidden: 0, sources: false, ...header });
  const data = zlib.gzipSync(bytes, { level: 6 }).toString("base64");
  const page = fs.readFileSync(template, "utf8").split("@DATA@");
  if (page.length !== 2) throw new Error("the page has @DATA@ " + (page.length - 1) + " times");
  fs.writeFileSync(target, page[0] + data + page[1]);
}

// A file with the given number of items in one row.
function siblings(count) {
  const items = [];
  for (let k = 0; k < count; ++k) {
    items.push({ kind: "statement", label: "line", line: k + 1, bytes: 8, text: "call(" + k + ");" });
  }
  return { path: "flat.js", lines: count, size: count * 8, items };
}

// A file with items inside of each other.
function nested(levels) {
  const items = [];
  for (let k = 0; k < levels; ++k) {
    items.push({ kind: "logic", label: "logic", line: k + 1, last: 2 * levels - k, parent: k - 1, bytes: 10,
      text: "if (a" + k + ") {" });
  }
  return { path: "deep.js", lines: 2 * levels, size: levels * 10, items };
}

// A tree of files that resembles a code base: classes with methods, functions and statements.
function codeBase(fileCount, itemsPerFile) {
  const words = ["load", "render", "update", "parse", "cache", "node", "value", "style", "event", "path"];
  let seed = 1;
  const random = (below) => {
    seed = (seed * 1103515245 + 12345) % 2147483648;
    return Math.floor((seed / 2147483648) * below);
  };
  const name = () => {
    const [a, b] = [words[random(words.length)], words[random(words.length)]];
    return a + b[0].toUpperCase() + b.slice(1) + random(1000);
  };
  const files = [];
  for (let f = 0; f < fileCount; ++f) {
    const items = [];
    const open = [];
    let line = 1;
    while (items.length < itemsPerFile) {
      while (open.length > 0 && open[open.length - 1].left === 0) {
        items[open.pop().index].last = ++line;
      }
      const parent = open.length > 0 ? open[open.length - 1] : null;
      if (parent !== null) --parent.left;
      const item = { line: line++, parent: parent === null ? -1 : parent.index };
      const depth = open.length;
      const choice = random(10);
      if (depth === 0 || (depth < 4 && choice < 3)) {
        const isClass = depth === 0 && choice < 4;
        item.kind = isClass ? "class" : depth > 0 && items[parent.index].kind === "class" ? "method" : "function";
        item.label = isClass ? "class" : "function";
        item.name = name();
        item.text = (isClass ? "class " : "function ") + item.name + (isClass ? " {" : "(value, options) {");
        open.push({ index: items.length, left: 2 + random(12) });
      } else if (depth < 6 && choice < 5) {
        item.kind = "logic";
        item.label = "logic";
        item.text = "if (" + name() + " === undefined) {";
        open.push({ index: items.length, left: 1 + random(4) });
      } else {
        item.kind = choice === 9 ? "variable" : "statement";
        item.label = "line";
        if (choice === 9) item.name = name();
        item.text = choice === 9 ? "const " + item.name + " = " + name() + "(options);"
          : "this." + name() + "." + name() + "(value, options);";
      }
      item.bytes = item.text.length + 8;
      items.push(item);
    }
    for (const { index } of open) items[index].last = line;
    for (const item of items) {
      item.last = item.last ?? item.line;
      if (item.last > item.line) item.bytes += 30 * (item.last - item.line);
    }
    for (let k = items.length - 1; k >= 0; --k) {
      const above = items[k].parent;
      if (above >= 0 && items[above].last < items[k].last) items[above].last = items[k].last;
    }
    const group = Math.floor(f / 100);
    files.push({ path: "packages/group" + group + "/src/file" + f + ".js", lines: line + random(200),
      size: 40 * line, items });
  }
  files.sort((a, b) => (a.path < b.path ? -1 : 1));
  return files;
}

module.exports = { writePage, siblings, nested, codeBase, KINDS, LABELS, STATUSES };
