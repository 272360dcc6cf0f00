// Finds nodes by kind, label and a part of their name, path or text, a slice of time after the other.
//
// Texts are searched as long strings of a character per byte, with ASCII letters in lower case: a
// native indexOf over such strings goes through all texts of a million items in some 30 ms.

import type { Texts } from "./data";
import { kSizes, type Model } from "./model";

const kChunkBytes = 1 << 20;
const kFirstSliceMs = 6;
const kSliceMs = 12;
const kPauseMs = 4; // after a frame: input and other timers go first
const kReportMs = 120;
const kHitsPerLook = 2048; // between two looks at the clock

const kLower = Uint8Array.from({ length: 256 }, (_, byte) =>
  byte >= 65 && byte <= 90 ? byte + 32 : byte,
);

// Maps every byte to a character of its own.
const kByteDecoder = new TextDecoder("windows-1252", { ignoreBOM: true });

function folded(bytes: Uint8Array): string {
  const lower = new Uint8Array(bytes.length);
  for (let i = 0; i < bytes.length; ++i) lower[i] = kLower[bytes[i]];
  return kByteDecoder.decode(lower);
}

// What to look for: letters outside of ASCII are folded by looking for them in upper case too.
function needlesOf(query: string): string[] {
  const encoder = new TextEncoder();
  const needles = [query, query.toLowerCase(), query.toUpperCase()].map((variant) =>
    folded(encoder.encode(variant)),
  );
  return [...new Set(needles)];
}

class Pool {
  private readonly chunks: string[] = [];
  private readonly firsts: number[] = [0]; // index of the first text of each chunk

  constructor(private readonly texts: Texts) {}

  // Takes a step for each chunk.
  *prepare(): Generator<void> {
    const { starts, count, bytes } = this.texts;
    for (let first = this.firsts[this.chunks.length]; first < count; ) {
      let last = first + 1;
      while (last < count && starts[last + 1] - starts[first] <= kChunkBytes) ++last;
      this.chunks.push(folded(bytes.subarray(starts[first], starts[last])));
      this.firsts.push(last);
      first = last;
      yield;
    }
  }

  // Reports the index of each text that holds the needle, and where in the text. Takes a step now
  // and then.
  *find(needle: string, found: (text: number, offset: number) => void): Generator<void> {
    yield* this.prepare();
    const { starts } = this.texts;
    let hits = 0;
    for (let k = 0; k < this.chunks.length; ++k) {
      const chunk = this.chunks[k];
      const base = starts[this.firsts[k]];
      let text = this.firsts[k];
      for (let at = chunk.indexOf(needle); at >= 0; ) {
        while (starts[text + 1] - base <= at) ++text;
        if (at + needle.length <= starts[text + 1] - base) {
          found(text, at - (starts[text] - base));
          at = chunk.indexOf(needle, starts[text + 1] - base);
        } else {
          at = chunk.indexOf(needle, at + 1);
        }
        if (++hits % kHitsPerLook === 0) yield;
      }
      yield;
    }
  }
}

class NodeList {
  private nodes = new Int32Array(1024);
  length = 0;

  push(node: number): void {
    if (this.length === this.nodes.length) {
      const larger = new Int32Array(this.length * 2);
      larger.set(this.nodes);
      this.nodes = larger;
    }
    this.nodes[this.length++] = node;
  }

  view(): Int32Array {
    return this.nodes.subarray(0, this.length);
  }
}

export const kMatch = 1;
export const kContains = 2;

export interface Query {
  text: string;
  kinds: ReadonlySet<number>; // empty: all
  label: number; // as in the items: 1 + index, 0 for all
}

export interface Matches {
  nodes: Int32Array; // the best first
  marks: Uint8Array; // kMatch for each of them; when done, kContains for what they are in
  done: boolean;
}

export class Search {
  private readonly names: Pool;
  private readonly paths: Pool;
  private readonly texts: Pool;
  private running = 0;

  constructor(private readonly model: Model) {
    this.names = new Pool(model.data.item.name);
    this.paths = new Pool(model.data.file.path);
    this.texts = new Pool(model.data.item.text);
  }

  // Prepares the texts and sizes, so that the first who needs them does not have to. Calls finished
  // at the end, unless a search starts before.
  warmUp(finished: () => void): void {
    const { model, names, paths, texts } = this;
    const steps = function* () {
      yield* names.prepare();
      yield* paths.prepare();
      yield* texts.prepare();
      for (const size of kSizes) {
        model.size(size);
        yield;
      }
    };
    this.inSlices(steps(), 0, (done) => {
      if (done) finished();
    });
  }

  // Reports what is found at once, and again while it grows, until another search starts.
  start(query: Query, report: (matches: Matches) => void): void {
    const marks = new Uint8Array(this.model.count);
    const lists = [0, 1, 2, 3, 4].map(() => new NodeList());
    const matches = (done: boolean): Matches => {
      const nodes = new Int32Array(lists.reduce((sum, list) => sum + list.length, 0));
      let at = 0;
      for (const list of lists) {
        nodes.set(list.view(), at);
        at += list.length;
      }
      return { nodes, marks, done };
    };
    const { parent } = this.model;
    this.inSlices(this.find(query, marks, lists), kFirstSliceMs, (done) => {
      const found = matches(done);
      for (const node of done ? found.nodes : []) {
        for (let at = parent[node]; at >= 0 && marks[at] === 0; at = parent[at]) marks[at] = kContains;
      }
      report(found);
    });
  }

  stop(): void {
    ++this.running;
  }

  private *find(query: Query, marks: Uint8Array, lists: NodeList[]): Generator<void> {
    const { model } = this;
    const [exact, prefix, inName, inPath, inText] = lists;
    const { kinds, label } = query;
    const take = (node: number, list: NodeList) => {
      if (marks[node] !== 0) return;
      if (kinds.size > 0 && !kinds.has(model.kind[node])) return;
      if (label > 0 && model.label(node) !== label) return;
      marks[node] = kMatch;
      list.push(node);
    };
    if (query.text === "") {
      for (let node = 0; node < model.count; ++node) {
        take(node, exact);
        if (node % (kHitsPerLook * 16) === 0) yield;
      }
      return;
    }
    const { name } = model.data.item;
    for (const needle of needlesOf(query.text)) {
      yield* this.names.find(needle, (item, offset) => {
        const whole = name.length(item) === needle.length;
        take(model.itemNode[item], whole ? exact : offset === 0 ? prefix : inName);
      });
      yield* this.paths.find(needle, (file) => take(model.fileNode[file], inPath));
    }
    for (const needle of needlesOf(query.text)) {
      yield* this.texts.find(needle, (item) => take(model.itemNode[item], inText));
    }
  }

  private inSlices(steps: Generator<void>, firstMs: number, report: (done: boolean) => void): void {
    const run = ++this.running;
    let reported = 0;
    const slice = (milliseconds: number) => {
      if (run !== this.running) return;
      const start = performance.now();
      let done = false;
      while (!done && performance.now() - start < milliseconds) done = steps.next().done === true;
      const isDue = done || performance.now() - reported > kReportMs;
      if (isDue) {
        reported = performance.now();
        report(done);
      }
      if (done) return;
      // Draw what was reported before the search goes on. A hidden page has no frames.
      if (isDue && !document.hidden) requestAnimationFrame(() => setTimeout(slice, kPauseMs, kSliceMs));
      else setTimeout(slice, 0, kSliceMs);
    };
    slice(firstMs);
  }
}
