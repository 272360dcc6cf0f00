/** Why there is no outline and there are no records. */
export class OutlineError extends Error {
  /**
   * "failed", "out-of-memory", "too-large" if the answer is longer than a string can be, or "crashed"
   * for a fault of the package.
   */
  readonly status: "failed" | "out-of-memory" | "too-large" | "crashed";
  /** The plug-in's own text, if it gave one. */
  readonly answer: string | null;
}

/** Kinds of items. */
export type Kind =
  | "function" | "method" | "constructor" | "getter" | "setter" | "class" | "interface" | "enum"
  | "namespace" | "type" | "variable" | "field" | "module" | "callback" | "logic" | "loop"
  | "statement" | "element" | "link" | "script" | "block";

/** A definition, statement, branch or element. */
export interface Item {
  /** Its number in the outline, from 0. */
  number: number;
  /** Number of the innermost item that contains it. */
  parent: number | null;
  /** First and last line, from 1. */
  line: number;
  endLine: number;
  kind: Kind;
  /** Empty if it has none. */
  name: string;
  /** `nodeID`, label and contents of its record; null for an item without one, as a private method is. */
  record: number | null;
  label: string | null;
  text: string | null;
}

/** Text that an outline leaves out. */
export interface Omission {
  reason: "long-lines" | "many-braces" | "line-limit" | "size-limit" | "open-comment" | "stopped-early";
  /** First line that is left out; for "stopped-early" the last one with a record. */
  line: number;
  /** How many lines and bytes are left out. */
  lines: number;
  bytes: number;
  /** Lines and bytes of the source. */
  lineCount: number;
  byteCount: number;
}

export interface Outline {
  path: string;
  sourceBytes: number;
  omitted: Omission[];
  /** In the order of their first lines, the outer before the inner. */
  items: Item[];
}

export interface CallOptions {
  /** Names for the record of defines. */
  defines?: readonly string[];
}

/** WebAssembly.Module, for projects whose types have it. */
export type WasmModule = typeof globalThis extends { WebAssembly: { Module: { prototype: infer Module } } }
  ? Module
  : never;

export interface LoadOptions {
  /** The bytes of quorl-js.wasm, or its module. Default: the file beside the package's code. */
  wasm?: ArrayBuffer | ArrayBufferView | WasmModule;
  /** Called after each call with each line that the plug-in wrote. Default: none. */
  diagnostics?: ((line: string, stream: "stdout" | "stderr") => void) | null;
  /** Replace the module's memory after a call that leaves it larger. Default: 64 MiB. */
  replaceAt?: number;
  /** Fail calls that need more memory, in bytes. Default: 1 GiB; 4 GiB at most. */
  maxMemory?: number;
}

export interface Parser {
  /**
   * Returns the outline of a text. The extension of the name selects how it is read; no such file has to
   * exist. A string is passed as UTF-8. Throws OutlineError.
   */
  outline(name: string, source: string | Uint8Array, options?: CallOptions): Outline;
  /** Returns the structure records of a text in the plug-in's own format. Throws OutlineError. */
  records(name: string, source: string | Uint8Array, options?: CallOptions): string;
  /** The memory that the parser holds. */
  readonly memoryBytes: number;
}

/** Makes a parser, which needs no cleaning up. */
export function load(options?: LoadOptions): Promise<Parser>;
