// The right side: what the chosen node is, its text, its source and what is inside of it.

import { sizeText } from "./chart";
import { button, byId, element } from "./dom";
import { isRead, kSizes, type Model, type Size } from "./model";
import { signOf, type Palette } from "./palette";
import { Rows } from "./rows";
import { bytes, count, number, visible } from "./text";

const kNameBytes = 2000;
const kPathBytes = 4000;
const kTextBytes = 20_000;
const kSourceLineBytes = 1000;
const kInside = 100; // rows of the list of what is inside
const kLargest = 10;

interface Actions {
  choose(node: number): void;
  zoom(node: number): void;
}

// Where each line of a source starts: LF, CR LF and CR end a line.
function lineStarts(source: Uint8Array): Uint32Array {
  const starts = [0];
  for (let i = 0; i < source.length; ++i) {
    const isEnd = source[i] === 10 || (source[i] === 13 && source[i + 1] !== 10);
    if (isEnd && i + 1 < source.length) starts.push(i + 1);
  }
  return Uint32Array.from(starts);
}

export class Detail {
  private readonly box = byId("facts");
  private readonly sourceBox = byId("source");
  private readonly sourceTitle = byId("source-title");
  private readonly source: Rows;
  private bytes: Uint8Array = new Uint8Array();
  private starts: Uint32Array = new Uint32Array();
  private file = -1;
  private range = [0, 0];
  private readonly decoder = new TextDecoder();

  constructor(
    private readonly model: Model,
    private palette: Palette,
    private readonly actions: Actions,
  ) {
    this.source = new Rows(
      this.sourceBox,
      () => {
        const row = element("div", "line");
        row.append(element("span", "number"), element("code"));
        return row;
      },
      (row, index) => this.fillLine(row, index),
    );
  }

  show(node: number, size: Size, palette: Palette): void {
    this.palette = palette;
    const { model } = this;
    const parts: Node[] = [this.heading(node), this.facts(node)];
    if (model.isItem(node)) parts.push(...this.itemText(node));
    if (!model.isItem(node) && model.hasChildren(node)) parts.push(...this.largest(node, size));
    if (model.hasChildren(node)) parts.push(...this.inside(node));
    this.box.replaceChildren(...parts);
    this.box.scrollTop = 0;
    this.showSource(node);
  }

  private sign(node: number): HTMLElement {
    const kind = this.model.kinds[this.model.kind[node]];
    const sign = element("span", "sign", signOf(kind));
    sign.style.backgroundColor = this.palette.fill(kind);
    sign.style.color = this.palette.text;
    sign.setAttribute("aria-hidden", "true");
    return sign;
  }

  private heading(node: number): HTMLElement {
    const heading = element("h2", "chosen");
    const title = this.model.title(node, kNameBytes);
    heading.append(this.sign(node), element("span", "name", title));
    return heading;
  }

  private path(file: number): string {
    return visible(this.model.data.file.path.get(this.model.ref[file], kPathBytes));
  }

  private facts(node: number): HTMLElement {
    const { model } = this;
    const { file, item, header } = model.data;
    const list = element("dl");
    const fact = (name: string, ...value: (string | Node)[]) => {
      const description = element("dd");
      description.append(...value);
      list.append(element("dt", "", name), description);
    };
    const ref = model.ref[node];
    const fileNode = model.fileOf(node);
    const first = model.firstLine(node);
    const last = model.lastLine(node);
    fact("Kind", model.kinds[model.kind[node]]);
    if (model.isItem(node)) {
      if (item.label[ref] > 0) fact("Label", header.labels[item.label[ref] - 1]);
      const nameBytes = item.name.length(ref);
      if (nameBytes > kNameBytes) fact("Name", `${bytes(nameBytes)}, cut here`);
      fact("Place", element("span", "place", `${this.path(fileNode)}:${first}`));
      const lines = `${number(first)}\u2013${number(last)} (${count(last - first + 1, "line")})`;
      fact("Lines", first === last ? number(first) : lines);
      if (item.bytes[ref] > 0) fact("Size", bytes(item.bytes[ref]));
    } else if (model.isFile(node)) {
      fact("Path", element("span", "place", this.path(node)));
      const status = header.statuses[file.status[ref]];
      if (status === "empty") fact("Status", status);
      if (!isRead(status)) {
        const message = visible(file.message.get(ref, kTextBytes));
        fact("Status", message === "" ? status : `${status}: ${message}`);
      }
      fact("Size", `${count(file.lines[ref], "line")}, ${bytes(file.size[ref])}`);
      const hidden = file.hidden[ref] > 0 ? `, ${number(file.hidden[ref])} not shown` : "";
      fact("Items", `${number(file.items[ref])}${hidden}`);
      if (file.omitted.length(ref) > 0) {
        fact("Left out", element("span", "warning", visible(file.omitted.get(ref, kTextBytes))));
      }
    } else {
      fact("Size", kSizes.map((by) => sizeText(model, node, by)).join(", "));
      fact("Holds", count(model.children[node], "entry").replace("entrys", "entries"));
    }
    const above = model.parent[node];
    if (above >= 0) fact("Inside of", this.link(above));
    if (model.hasChildren(node)) {
      const zoom = button("zoom", "Zoom the chart to it", () => this.actions.zoom(node));
      fact("Chart", zoom);
    }
    return list;
  }

  private link(node: number, aside = ""): HTMLElement {
    const link = button("link", "", () => this.actions.choose(node));
    link.append(this.sign(node), element("span", "name", this.model.title(node, 200)));
    if (aside !== "") link.append(element("span", "aside", aside));
    return link;
  }

  private list(title: string, links: HTMLElement[], more = ""): Node[] {
    const list = element("ul");
    for (const link of links) {
      const entry = element("li");
      entry.append(link);
      list.append(entry);
    }
    if (more !== "") list.append(element("li", "more", more));
    return [element("h3", "", title), list];
  }

  private itemText(node: number): Node[] {
    const { item, header } = this.model.data;
    const ref = this.model.ref[node];
    if (item.text.length(ref) === 0) return [];
    const lines = item.text.get(ref, kTextBytes).split(/\r\n|\r|\n/);
    const text = element("pre", "text", lines.map(visible).join("\n"));
    text.tabIndex = 0;
    text.setAttribute("role", "region");
    text.setAttribute("aria-label", "Text");
    const limit = item.text.length(ref) > kTextBytes ? kTextBytes : header.textLimit;
    const isCut = item.cut[ref] === 1 || item.text.length(ref) > kTextBytes;
    const note = `Cut after ${number(limit)} bytes.`;
    return [element("h3", "", "Text"), text, ...(isCut ? [element("p", "hint", note)] : [])];
  }

  private largest(node: number, size: Size): Node[] {
    const { model } = this;
    if (!model.isFolder(node)) return [];
    const files = [...model.fileNode].filter((file) => model.contains(node, file));
    files.sort((a, b) => model.amount(b, size) - model.amount(a, size) || a - b);
    files.length = Math.min(files.length, kLargest);
    const links = files.map((file) => this.link(file, sizeText(model, file, size)));
    return this.list(`Largest files by ${size}`, links);
  }

  private inside(node: number): Node[] {
    const { model } = this;
    const links = [];
    for (let at = node + 1; at < model.end[node] && links.length < kInside; at = model.end[at]) {
      const line = model.isItem(at) ? number(model.firstLine(at)) : "";
      links.push(this.link(at, line));
    }
    const total = model.children[node];
    const more = total > links.length ? `and ${number(total - links.length)} more in the list` : "";
    return this.list(`Contains (${number(total)})`, links, more);
  }

  private showSource(node: number): void {
    const { model } = this;
    const fileNode = model.fileOf(node);
    const file = fileNode < 0 ? -1 : model.ref[fileNode];
    const has = file >= 0 && model.data.file.hasSource[file] === 1;
    this.sourceBox.hidden = this.sourceTitle.hidden = !has;
    if (!has) return;
    if (file !== this.file) {
      this.file = file;
      this.bytes = model.data.file.source.part(file);
      this.starts = lineStarts(this.bytes);
      this.sourceBox.scrollTop = 0;
    }
    this.range = model.isItem(node) ? [model.firstLine(node), model.lastLine(node)] : [0, 0];
    this.source.show(this.starts.length);
    if (this.range[0] > 0) {
      this.source.reveal(Math.min(this.range[1], this.range[0] + 5) - 1);
      this.source.reveal(Math.max(0, this.range[0] - 3));
    }
  }

  private fillLine(row: HTMLElement, index: number): void {
    const start = this.starts[index];
    const end = this.starts[index + 1] ?? this.bytes.length;
    const shown = this.bytes.subarray(start, Math.min(end, start + kSourceLineBytes));
    const text = this.decoder.decode(shown).replace(/[\r\n]+$/, "");
    const [lineNumber, code] = row.children as unknown as HTMLElement[];
    lineNumber.textContent = String(index + 1);
    code.textContent = text.split("\t").map(visible).join("  ") + (end - start > kSourceLineBytes ? "\u2026" : "");
    row.classList.toggle("marked", index + 1 >= this.range[0] && index + 1 <= this.range[1]);
  }
}
