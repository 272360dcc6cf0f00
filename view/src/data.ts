// Reads the data of the page: base64, gzip, then a header and columns of numbers. Texts stay bytes
// until somebody reads them, so that a million of them cost nothing.

const kMagic = "QJVIEW1\n";
const kFixedBytes = 16;

export interface Header {
  tool: string;
  kinds: string[];
  labels: string[];
  statuses: string[];
  textLimit: number;
  hidden: number;
  sources: boolean;
  columns: [string, string, number][];
}

// Many texts, one after the other.
export class Texts {
  readonly count: number;
  private readonly decoder = new TextDecoder("utf-8", { ignoreBOM: true });

  constructor(
    readonly bytes: Uint8Array,
    readonly starts: Uint32Array, // of each text, and the end of the last
  ) {
    this.count = starts.length - 1;
  }

  length(index: number): number {
    return this.starts[index + 1] - this.starts[index];
  }

  part(index: number, limit = Infinity): Uint8Array {
    const start = this.starts[index];
    return this.bytes.subarray(start, Math.min(this.starts[index + 1], start + limit));
  }

  // The text, or about its first `limit` bytes. Bytes that are no UTF-8 become U+FFFD.
  get(index: number, limit = Infinity): string {
    return this.decoder.decode(this.part(index, limit));
  }
}

export interface Data {
  header: Header;
  file: {
    path: Texts;
    status: Uint8Array;
    message: Texts;
    size: Float64Array;
    lines: Uint32Array;
    records: Uint32Array;
    items: Uint32Array;
    hidden: Uint32Array;
    omittedLines: Uint32Array;
    omittedBytes: Float64Array;
    omitted: Texts;
    hasSource: Uint8Array;
    source: Texts;
  };
  item: {
    kind: Uint8Array;
    label: Uint16Array;
    line: Int32Array; // difference to the item before it in the file
    more: Uint32Array;
    parent: Uint32Array; // how much smaller the parent's index is, or 0
    bytes: Uint32Array;
    cut: Uint8Array;
    name: Texts;
    text: Texts;
  };
}

const kTypes = {
  u8: Uint8Array,
  u16: Uint16Array,
  u32: Uint32Array,
  i32: Int32Array,
  f64: Float64Array,
};

function startsOf(lengths: Uint32Array): Uint32Array {
  const starts = new Uint32Array(lengths.length + 1);
  for (let i = 0, end = 0; i < lengths.length; ++i) starts[i + 1] = end += lengths[i];
  return starts;
}

function bytesOf(base64: string): Uint8Array<ArrayBuffer> {
  const text = atob(base64);
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = text.charCodeAt(i);
  return bytes;
}

async function inflate(bytes: Uint8Array<ArrayBuffer>): Promise<ArrayBuffer> {
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"));
  return new Response(stream).arrayBuffer();
}

// Fails if the columns are not those that this page knows.
export async function readData(base64: string): Promise<Data> {
  const buffer = await inflate(bytesOf(base64));
  const decoder = new TextDecoder();
  if (decoder.decode(new Uint8Array(buffer, 0, kMagic.length)) !== kMagic) {
    throw new Error("the data begin with other bytes");
  }
  const headerBytes = new DataView(buffer).getUint32(8, true);
  const header = JSON.parse(
    decoder.decode(new Uint8Array(buffer, kFixedBytes, headerBytes)),
  ) as Header;
  const columns = new Map<string, InstanceType<(typeof kTypes)[keyof typeof kTypes]>>();
  let position = kFixedBytes + headerBytes;
  for (const [name, type, count] of header.columns) {
    const Column = kTypes[type as keyof typeof kTypes];
    columns.set(name, new Column(buffer, position, count));
    position += Math.ceil((count * Column.BYTES_PER_ELEMENT) / 8) * 8;
  }
  const column = <T>(name: string): T => {
    const found = columns.get(name);
    if (found === undefined) throw new Error(`there is no column ${name}`);
    return found as T;
  };
  const texts = (name: string) => new Texts(column(name), startsOf(column(`${name}#`)));
  return {
    header,
    file: {
      path: texts("file.path"),
      status: column("file.status"),
      message: texts("file.message"),
      size: column("file.size"),
      lines: column("file.lines"),
      records: column("file.records"),
      items: column("file.items"),
      hidden: column("file.hidden"),
      omittedLines: column("file.omittedLines"),
      omittedBytes: column("file.omittedBytes"),
      omitted: texts("file.omitted"),
      hasSource: column("file.hasSource"),
      source: texts("file.source"),
    },
    item: {
      kind: column("item.kind"),
      label: column("item.label"),
      line: column("item.line"),
      more: column("item.more"),
      parent: column("item.parent"),
      bytes: column("item.bytes"),
      cut: column("item.cut"),
      name: texts("item.name"),
      text: texts("item.text"),
    },
  };
}
