// The nodes of the page: folders made from the paths, files and their items, numbered so that what a
// node contains follows it directly: its first child is node + 1, and end[node] comes behind the last.

import type { Data } from "./data";
import { visible } from "./text";

export type Size = "lines" | "items" | "bytes";
export const kSizes: readonly Size[] = ["lines", "items", "bytes"];

// Whether a file of this status was read. An empty one has no answer.
export function isRead(status: string): boolean {
  return status === "answered" || status === "empty";
}

interface Folder {
  name: string;
  children: (Folder | number)[]; // number: a file
  folders: Map<string, Folder>;
}

const kNameBytes = 4000;

export class Model {
  readonly data: Data;
  readonly count: number;
  readonly fileKind: number;
  readonly folderKind: number;
  readonly kinds: string[]; // words, also for the last two
  readonly parent: Int32Array;
  readonly end: Int32Array;
  readonly kind: Uint8Array;
  readonly ref: Int32Array; // index of the item, file or folder
  readonly depth: Int32Array;
  readonly position: Int32Array; // among its siblings, from 1
  readonly children: Int32Array; // how many it has
  readonly line: Int32Array; // first line of an item, by item
  readonly fileNode: Int32Array; // by file
  readonly itemNode: Int32Array; // by item
  private readonly folderNames: string[] = [];
  private readonly sizes = new Map<Size, Float64Array>();

  constructor(data: Data) {
    this.data = data;
    this.fileKind = data.header.kinds.length;
    this.folderKind = this.fileKind + 1;
    this.kinds = [...data.header.kinds, "file", "folder"];
    const items = data.item.kind.length;
    const files = data.file.status.length;
    const root = foldersOf(data);
    this.count = items + files + countFolders(root);
    this.parent = new Int32Array(this.count);
    this.end = new Int32Array(this.count);
    this.kind = new Uint8Array(this.count);
    this.ref = new Int32Array(this.count);
    this.depth = new Int32Array(this.count);
    this.position = new Int32Array(this.count);
    this.children = new Int32Array(this.count);
    this.line = new Int32Array(items);
    this.fileNode = new Int32Array(files);
    this.itemNode = new Int32Array(items);
    this.number(root);
  }

  private number(root: Folder | number): void {
    const firstItem = new Int32Array(this.data.file.items.length + 1);
    this.data.file.items.forEach((n, file) => (firstItem[file + 1] = firstItem[file] + n));
    let next = 0;
    const open: { node: number; left: (Folder | number)[] }[] = [];
    const begin = (parent: number, kind: number, ref: number) => {
      const node = next++;
      this.parent[node] = parent;
      this.kind[node] = kind;
      this.ref[node] = ref;
      if (parent >= 0) {
        this.depth[node] = this.depth[parent] + 1;
        this.position[node] = ++this.children[parent];
      } else {
        this.position[node] = 1;
      }
      return node;
    };
    const enter = (entry: Folder | number, parent: number) => {
      if (typeof entry === "number") {
        const node = begin(parent, this.fileKind, entry);
        this.fileNode[entry] = node;
        next = this.numberItems(node, firstItem[entry], firstItem[entry + 1], begin);
        this.end[node] = next;
      } else {
        const node = begin(parent, this.folderKind, this.folderNames.push(entry.name) - 1);
        open.push({ node, left: entry.children.slice().reverse() });
      }
    };
    enter(root, -1);
    while (open.length > 0) {
      const top = open[open.length - 1];
      const entry = top.left.pop();
      if (entry === undefined) {
        this.end[top.node] = next;
        open.pop();
      } else {
        enter(entry, top.node);
      }
    }
  }

  private numberItems(
    file: number,
    first: number,
    last: number,
    begin: (parent: number, kind: number, ref: number) => number,
  ): number {
    const { item } = this.data;
    for (let i = first, line = 0; i < last; ++i) this.line[i] = line += item.line[i];
    const order = orderOf(item.parent, first, last);
    let top = file;
    for (let k = first; k < last; ++k) {
      const i = order === null ? k : order[k - first];
      const parent = item.parent[i] === 0 ? file : this.itemNode[i - item.parent[i]];
      const node = file + 1 + k - first;
      for (; top !== parent; top = this.parent[top]) this.end[top] = node;
      begin(parent, item.kind[i], i);
      this.itemNode[i] = node;
      top = node;
    }
    const next = file + 1 + last - first;
    for (; top !== file; top = this.parent[top]) this.end[top] = next;
    return next;
  }

  isItem(node: number): boolean {
    return this.kind[node] < this.fileKind;
  }

  isFile(node: number): boolean {
    return this.kind[node] === this.fileKind;
  }

  isFolder(node: number): boolean {
    return this.kind[node] === this.folderKind;
  }

  hasChildren(node: number): boolean {
    return this.end[node] > node + 1;
  }

  contains(outer: number, inner: number): boolean {
    return inner >= outer && inner < this.end[outer];
  }

  // The node of the file that contains an item, or of the file itself; -1 for folders.
  fileOf(node: number): number {
    let low = 0;
    if (this.isFolder(node)) return -1;
    // Walking up is short, except in files with very many levels.
    for (let steps = 0; steps < 64; ++steps, node = this.parent[node]) {
      if (this.isFile(node)) return node;
    }
    const nodes = this.sortedFiles();
    let high = nodes.length;
    while (high - low > 1) {
      const middle = (low + high) >> 1;
      if (nodes[middle] <= node) low = middle;
      else high = middle;
    }
    return nodes[low];
  }

  private fileNodes: Int32Array | null = null;
  private sortedFiles(): Int32Array {
    return (this.fileNodes ??= this.fileNode.slice().sort());
  }

  // Ancestors from the root to the node itself.
  pathTo(node: number): number[] {
    const path = [];
    for (; node >= 0; node = this.parent[node]) path.push(node);
    return path.reverse();
  }

  label(node: number): number {
    return this.isItem(node) ? this.data.item.label[this.ref[node]] : 0;
  }

  firstLine(node: number): number {
    return this.isItem(node) ? this.line[this.ref[node]] : 1;
  }

  lastLine(node: number): number {
    const ref = this.ref[node];
    return this.isItem(node) ? this.line[ref] + this.data.item.more[ref] : this.data.file.lines[ref];
  }

  // What the node is called, on one line: an item without a name has its text.
  title(node: number, limit = kNameBytes): string {
    const ref = this.ref[node];
    if (this.isFolder(node)) return visible(this.folderNames[ref].slice(0, limit));
    const { file, item } = this.data;
    if (this.isFile(node)) {
      if (this.parent[node] < 0) return visible(file.path.get(ref, limit));
      const path = file.path.part(ref);
      const start = path.lastIndexOf(47) + 1;
      return visible(new TextDecoder().decode(path.subarray(start, start + limit)));
    }
    const texts = item.name.length(ref) > 0 ? item.name : item.text;
    return visible(texts.get(ref, limit)) || `(${this.kinds[this.kind[node]]})`;
  }

  // How many lines, items or bytes a node has.
  amount(node: number, by: Size): number {
    const { file, item } = this.data;
    const ref = this.ref[node];
    if (this.isItem(node)) {
      if (by === "items") return this.end[node] - node;
      return by === "lines" ? item.more[ref] + 1 : item.bytes[ref];
    }
    if (this.isFile(node)) {
      if (by === "items") return file.items[ref];
      return by === "lines" ? file.lines[ref] : file.size[ref];
    }
    let total = 0;
    for (const inside of this.fileNode) {
      if (this.contains(node, inside)) total += this.amount(inside, by);
    }
    return total;
  }

  // How much room each node takes in the chart: its amount, or the sum of its children's room if that
  // is larger, as siblings may share a line.
  size(by: Size): Float64Array {
    let values = this.sizes.get(by);
    if (values === undefined) {
      values = this.sum(by);
      this.sizes.set(by, values);
    }
    return values;
  }

  private sum(by: Size): Float64Array {
    const values = new Float64Array(this.count);
    for (let node = this.count - 1; node >= 0; --node) {
      if (!this.isFolder(node)) values[node] = Math.max(values[node], this.amount(node, by));
      if (node > 0) values[this.parent[node]] += values[node];
    }
    return values;
  }

  // How much of a file's size the plug-in's answer leaves out.
  omitted(node: number, by: Size): number {
    if (!this.isFile(node) || by === "items") return 0;
    const { file } = this.data;
    return by === "lines" ? file.omittedLines[this.ref[node]] : file.omittedBytes[this.ref[node]];
  }
}

// The folders of all paths. A folder with a single folder in it is one with it; a single file has none.
function foldersOf(data: Data): Folder | number {
  const folder = (name: string): Folder => ({ name, children: [], folders: new Map() });
  const root = folder("");
  const files = data.file.status.length;
  for (let file = 0; file < files; ++file) {
    const parts = data.file.path.get(file).split("/");
    let inside = root;
    for (const part of parts.slice(0, -1)) {
      let next = inside.folders.get(part);
      if (next === undefined) {
        next = folder(part);
        inside.folders.set(part, next);
        inside.children.push(next);
      }
      inside = next;
    }
    inside.children.push(file);
  }
  if (files === 1) return 0;
  const folders = [root];
  for (let entry = folders.pop(); entry !== undefined; entry = folders.pop()) {
    const names = [entry.name];
    while (entry.children.length === 1 && typeof entry.children[0] !== "number") {
      const only: Folder = entry.children[0];
      names.push(only.name);
      entry.children = only.children;
    }
    if (entry === root) names.shift();
    entry.name = names.length === 0 ? "All files" : names.join("/") || "/";
    for (const child of entry.children) if (typeof child !== "number") folders.push(child);
  }
  return root;
}

function countFolders(root: Folder | number): number {
  if (typeof root === "number") return 0;
  let total = 0;
  const folders = [root];
  for (let entry = folders.pop(); entry !== undefined; entry = folders.pop()) {
    ++total;
    for (const child of entry.children) if (typeof child !== "number") folders.push(child);
  }
  return total;
}

// Items as they follow when each comes directly behind what contains it or behind a sibling's last
// item; null if they are in that order already, as they nearly always are.
function orderOf(parents: Uint32Array, first: number, last: number): Int32Array | null {
  const count = last - first;
  const parentOf = (k: number) => (parents[first + k] === 0 ? -1 : k - parents[first + k]);
  let inOrder = true;
  for (let k = 1; inOrder && k < count; ++k) {
    const parent = parentOf(k);
    let open = k - 1;
    while (open > parent) open = parentOf(open);
    inOrder = open === parent;
  }
  if (inOrder) return null;
  const child = new Int32Array(count + 1).fill(-1); // the last one is the file
  const sibling = new Int32Array(count);
  for (let k = count - 1; k >= 0; --k) {
    const parent = parentOf(k) < 0 ? count : parentOf(k);
    sibling[k] = child[parent];
    child[parent] = k;
  }
  const order = new Int32Array(count);
  const open = [child[count]];
  for (let k = 0; k < count; ) {
    const item = open.pop()!;
    order[k++] = first + item;
    if (sibling[item] >= 0) open.push(sibling[item]);
    if (child[item] >= 0) open.push(child[item]);
  }
  return order;
}
