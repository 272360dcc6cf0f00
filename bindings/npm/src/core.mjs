// Calls the WebAssembly module, and keeps the plug-in's rules: one call at a time, answers copied at once,
// and a new instance when one has grown.

const MEGABYTE = 1024 * 1024;
const PAGE_BYTES = 65536;
const FIRST_PAGES = 32; // as the module is linked
const MAX_MEMORY = 4096 * MEGABYTE;
const ENCODER = new TextEncoder();
const DECODER = new TextDecoder();

// The plug-in's names of bytes behind a backslash.
const ESCAPES = { b: "\b", f: "\f", n: "\n", r: "\r", t: "\t" };

export class OutlineError extends Error {
  constructor(status, message, answer = null) {
    super(message);
    this.name = "OutlineError";
    this.status = status;
    this.answer = answer;
  }
}

// Of an error answer: [{"error": "words"}].
function errorOf(answer) {
  const words = answer
    .slice('[{"error": "'.length, -'"}]'.length)
    .replace(/\\(.)/gs, (_, byte) => ESCAPES[byte] ?? byte);
  return new OutlineError(isOutOfMemory(answer) ? "out-of-memory" : "failed", words, answer);
}

// Whether the plug-in had no memory for its records, or not even for an error answer.
function isOutOfMemory(answer) {
  return answer === null || answer === '[{"error": "Parser exception: std::bad_alloc"}]';
}

function itemsOf(columns) {
  const { item, container, line, endLine, kind, name, nodeID, branchTypeAsString, contents } = columns;
  return item.map((number, at) => ({
    number,
    parent: container[at],
    line: line[at],
    endLine: endLine[at],
    kind: kind[at],
    name: name[at],
    record: nodeID[at],
    label: branchTypeAsString[at],
    text: contents[at],
  }));
}

// The lines that the plug-in writes during a call, by stream.
class Diagnostics {
  #pieces = [];

  take(stream, bytes) {
    this.#pieces.push([stream, bytes]);
  }

  clear() {
    this.#pieces = [];
  }

  // Passes on the lines of the call in their order. A line without an end is a line too.
  deliver(callback) {
    const pieces = this.#pieces;
    this.#pieces = [];
    const rest = { stdout: "", stderr: "" };
    const decoders = { stdout: new TextDecoder(), stderr: new TextDecoder() };
    for (const [stream, bytes] of pieces) {
      const lines = (rest[stream] + decoders[stream].decode(bytes, { stream: true })).split("\n");
      rest[stream] = lines.pop();
      for (const line of lines) callback(line, stream);
    }
    for (const [stream, line] of Object.entries(rest)) {
      if (line !== "") callback(line, stream);
    }
  }
}

export class Parser {
  #module;
  #callback;
  #replaceAt;
  #maxPages;
  #diagnostics = new Diagnostics();
  #memory = null; // of the instance; null without one
  #exports = null;

  constructor(module, { diagnostics = null, replaceAt = 64 * MEGABYTE, maxMemory = 1024 * MEGABYTE } = {}) {
    this.#module = module;
    this.#callback = diagnostics;
    this.#replaceAt = replaceAt;
    this.#maxPages = Math.max(FIRST_PAGES, Math.floor(Math.min(maxMemory, MAX_MEMORY) / PAGE_BYTES));
  }

  get memoryBytes() {
    return this.#memory === null ? 0 : this.#memory.buffer.byteLength;
  }

  records(name, source, { defines = [] } = {}) {
    const answer = this.#call("records", name, source, defines);
    if (!answer.startsWith("[\n")) throw errorOf(answer);
    return answer;
  }

  outline(name, source, { defines = [] } = {}) {
    const answer = this.#call("outline", name, source, defines);
    if (!answer.startsWith("{")) {
      if (source.length > 0) throw errorOf(answer);
      return { path: name, sourceBytes: 0, omitted: [], items: [] };
    }
    const { path, sourceBytes, omitted, items } = JSON.parse(answer);
    return { path, sourceBytes, omitted: omitted ?? [], items: itemsOf(items) };
  }

  #call(operation, name, source, defines) {
    const names = [name, ...defines];
    if (names.some((each) => typeof each !== "string" || each.includes("\0"))) {
      throw new TypeError("name and defines are strings without NUL");
    }
    const bytes = typeof source === "string" ? ENCODER.encode(source) : source;
    if (!(bytes instanceof Uint8Array)) throw new TypeError("source is a string or a Uint8Array");
    const call = [operation, ENCODER.encode(name), ENCODER.encode(defines.join("\n")), bytes];
    let answer = null;
    let fault = null;
    try {
      const isUsed = this.#exports !== null;
      answer = this.#run(...call);
      if (isUsed && isOutOfMemory(answer)) { // what earlier calls left may be to blame
        this.#drop();
        this.#diagnostics.clear();
        answer = this.#run(...call);
      }
    } catch (error) {
      fault = error;
    }
    // After a fault the instance is in an unknown state.
    if (fault !== null || isOutOfMemory(answer) || this.memoryBytes > this.#replaceAt) this.#drop();
    if (this.#callback !== null) this.#diagnostics.deliver(this.#callback);
    if (fault instanceof OutlineError) throw fault;
    if (fault !== null) throw new OutlineError("crashed", `${name}: ${fault.message}`);
    if (answer === null) throw new OutlineError("out-of-memory", `${name}: out of memory`);
    return answer;
  }

  // The answer, or null without memory for it.
  #run(operation, name, defines, source) {
    if (this.#exports === null) this.#start();
    const isPut = this.#put("nameBuffer", name) && this.#put("definesBuffer", defines) &&
      this.#put("sourceBuffer", source);
    const address = isPut ? this.#exports[operation]() >>> 0 : 0;
    if (address === 0) return null;
    const bytes = new Uint8Array(this.#memory.buffer, address, this.#exports.answerSize() >>> 0);
    try {
      return DECODER.decode(bytes);
    } catch {
      throw new OutlineError("too-large", "the answer is longer than a string can be");
    }
  }

  #put(buffer, bytes) {
    const address = this.#exports[buffer](bytes.length) >>> 0;
    if (address === 0) return false;
    new Uint8Array(this.#memory.buffer, address, bytes.length).set(bytes);
    return true;
  }

  #drop() {
    this.#memory = null;
    this.#exports = null;
  }

  #start() {
    const memory = new WebAssembly.Memory({ initial: FIRST_PAGES, maximum: this.#maxPages });
    const write = (descriptor, vectors, count, written) => {
      const view = new DataView(memory.buffer);
      let total = 0;
      for (let at = vectors; at < vectors + 8 * count; at += 8) {
        const begin = view.getUint32(at, true);
        const size = view.getUint32(at + 4, true);
        if (this.#callback !== null) {
          this.#diagnostics.take(descriptor === 1 ? "stdout" : "stderr",
            new Uint8Array(memory.buffer, begin, size).slice());
        }
        total += size;
      }
      view.setUint32(written, total, true);
      return 0;
    };
    const instance = new WebAssembly.Instance(this.#module, {
      env: { memory, emscripten_notify_memory_growth() {} },
      wasi_snapshot_preview1: {
        fd_write: write,
        fd_close: () => 0,
        fd_seek: () => 70, // ESPIPE: streams have no positions
        proc_exit(status) {
          throw new Error(`exit status ${status}`);
        },
      },
    });
    instance.exports._initialize();
    this.#memory = memory;
    this.#exports = instance.exports;
  }
}
