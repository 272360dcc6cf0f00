// The list on the left: the tree of folders, files and items, or what a search has found.

import { byId, element } from "./dom";
import type { Model } from "./model";
import { signOf, type Palette } from "./palette";
import { Rows } from "./rows";
import type { Matches } from "./search";
import { count, number, visible } from "./text";

const kOpenAtStart = 200; // nodes: a tree that is not larger starts with all of it open
const kMaxIndent = 16; // levels
const kTitleBytes = 400;
const kPathBytes = 300;
const kWarmUpRows = 50;

interface Actions {
  choose(node: number, lasting: boolean): void;
  zoom(node: number): void;
}

interface Row extends HTMLElement {
  node: number;
}

export class List {
  private readonly tree: Rows;
  private readonly results: Rows;
  private readonly open: Uint8Array; // 1 for nodes whose children are listed
  private nodes: Int32Array = new Int32Array(); // of the tree's rows
  private found: Int32Array | null = null;
  private chosen = 0;
  private readonly status = byId("found");

  constructor(
    private readonly model: Model,
    private palette: Palette,
    private readonly actions: Actions,
  ) {
    this.open = new Uint8Array(model.count);
    if (model.count <= kOpenAtStart) this.open.fill(1);
    this.open[0] = 1;
    this.tree = this.rows("tree", "treeitem", (row, index) => this.fillTree(row, index));
    this.results = this.rows("results", "option", (row, index) => this.fillResult(row, index));
    this.rebuild();
  }

  recolor(palette: Palette): void {
    this.palette = palette;
    this.refresh();
  }

  choose(node: number): void {
    this.chosen = node;
    let opened = false;
    for (let above = this.model.parent[node]; above >= 0; above = this.model.parent[above]) {
      opened ||= this.open[above] === 0;
      this.open[above] = 1;
    }
    if (opened) this.rebuild();
    this.refresh();
    const index = this.indexOf(node);
    if (index >= 0) this.active().reveal(index);
    this.markActive();
  }

  // Shows the matches, or the tree again.
  show(matches: Matches | null): void {
    const wasSearching = this.found !== null;
    this.found = matches === null ? null : matches.nodes;
    if (matches === null) {
      if (!wasSearching) return;
      this.hideResults();
      this.tree.scroller.hidden = false;
      this.status.textContent = "";
      this.choose(this.chosen);
      return;
    }
    this.tree.scroller.hidden = true;
    this.results.scroller.hidden = false;
    if (!wasSearching) this.results.scroller.scrollTop = 0;
    const { nodes, done } = matches;
    const some = nodes.length === 0 ? "nothing found" : `${number(nodes.length)} found`;
    this.status.textContent = done ? some : `${number(nodes.length)} found so far`;
    this.refresh();
    this.markActive();
  }

  // Fills and lays out rows of results without showing them: making the rows, loading fonts and
  // compiling the code would delay the first search.
  warmUp(): void {
    const { scroller } = this.results;
    this.found = this.model.itemNode.subarray(0, kWarmUpRows);
    scroller.classList.add("warm-up");
    scroller.hidden = false;
    this.refresh();
    scroller.getBoundingClientRect();
    this.hideResults();
    scroller.classList.remove("warm-up");
    this.found = null;
  }

  // Hides the rows too: rows of the last search would be laid out when the list appears, and again
  // when they are filled.
  private hideResults(): void {
    this.results.show(0);
    this.results.scroller.hidden = true;
  }

  private rows(id: string, role: string, fill: (row: Row, index: number) => void): Rows {
    const scroller = byId(id);
    let made = 0;
    const rows = new Rows(
      scroller,
      () => {
        const row = element("div", "row") as unknown as Row;
        row.id = `${id}-${made++}`;
        row.setAttribute("role", role);
        row.append(element("span", "twisty"), element("span", "sign"), element("span", "title"));
        row.append(element("span", "aside"));
        row.addEventListener("click", (event) => {
          if ((event.target as HTMLElement).className === "twisty") this.toggle(row.node);
          else this.actions.choose(row.node, true);
        });
        row.addEventListener("dblclick", () => this.actions.zoom(row.node));
        return row;
      },
      (row, index) => fill(row as Row, index),
    );
    scroller.addEventListener("keydown", (event) => this.press(event));
    scroller.addEventListener("scroll", () => this.markActive());
    return rows;
  }

  private active(): Rows {
    return this.found === null ? this.tree : this.results;
  }

  private shown(): Int32Array {
    return this.found ?? this.nodes;
  }

  private indexOf(node: number): number {
    return this.shown().indexOf(node);
  }

  private rebuild(): void {
    const { end, count: total } = this.model;
    let nodes = new Int32Array(1024);
    let length = 0;
    for (let node = 0; node < total; node = this.open[node] === 1 ? node + 1 : end[node]) {
      if (length === nodes.length) {
        const larger = new Int32Array(length * 2);
        larger.set(nodes);
        nodes = larger;
      }
      nodes[length++] = node;
    }
    this.nodes = nodes.subarray(0, length);
  }

  private refresh(): void {
    this.active().show(this.shown().length);
  }

  private markActive(): void {
    const { scroller } = this.active();
    const row = this.active().element(this.indexOf(this.chosen));
    if (row === null) scroller.removeAttribute("aria-activedescendant");
    else scroller.setAttribute("aria-activedescendant", row.id);
  }

  private toggle(node: number): void {
    this.open[node] = this.open[node] === 1 ? 0 : 1;
    const closed = this.open[node] === 0;
    this.rebuild();
    if (closed && this.model.contains(node, this.chosen)) this.actions.choose(node, false);
    this.refresh();
    this.markActive();
  }

  private fill(row: Row, node: number): void {
    const { model } = this;
    row.node = node;
    const kind = model.kinds[model.kind[node]];
    const [, sign, title] = row.children as unknown as HTMLElement[];
    sign.textContent = signOf(kind);
    sign.title = kind;
    sign.style.backgroundColor = this.palette.fill(kind);
    sign.style.color = this.palette.text;
    title.textContent = model.title(node, kTitleBytes);
    title.classList.toggle("plain", model.isItem(node) && !this.hasName(node));
    row.setAttribute("aria-selected", String(node === this.chosen));
  }

  private hasName(node: number): boolean {
    return this.model.data.item.name.length(this.model.ref[node]) > 0;
  }

  private fillTree(row: Row, index: number): void {
    const { model } = this;
    const node = this.nodes[index];
    this.fill(row, node);
    const [twisty, , , aside] = row.children as unknown as HTMLElement[];
    const expandable = model.hasChildren(node);
    const level = model.depth[node];
    row.style.paddingLeft = `${0.3 + Math.min(level, kMaxIndent) * 0.85}rem`;
    row.setAttribute("aria-level", String(level + 1));
    row.setAttribute("aria-posinset", String(model.position[node]));
    const siblings = level === 0 ? 1 : model.children[model.parent[node]];
    row.setAttribute("aria-setsize", String(siblings));
    if (expandable) row.setAttribute("aria-expanded", String(this.open[node] === 1));
    else row.removeAttribute("aria-expanded");
    twisty.textContent = expandable ? (this.open[node] === 1 ? "\u25be" : "\u25b8") : "";
    const deep = level > kMaxIndent ? `level ${number(level)} \u00b7 ` : "";
    aside.textContent = deep + this.asideOf(node);
  }

  private asideOf(node: number): string {
    const { model } = this;
    if (model.isItem(node)) return number(model.firstLine(node));
    if (model.isFile(node)) return count(model.lastLine(node), "line");
    return number(model.children[node]);
  }

  private fillResult(row: Row, index: number): void {
    const { model, found } = this;
    const node = found![index];
    this.fill(row, node);
    const [, , title, aside] = row.children as unknown as HTMLElement[];
    row.setAttribute("aria-posinset", String(index + 1));
    row.setAttribute("aria-setsize", String(found!.length));
    if (model.isItem(node) && this.hasName(node)) {
      const text = visible(model.data.item.text.get(model.ref[node], kTitleBytes)).trim();
      title.append(element("span", "plain", `  ${text}`));
    }
    const above = model.isItem(node) ? model.fileOf(node) : model.parent[node];
    const place = above < 0 ? "" : model.title(above, kPathBytes);
    // The line stays when there is no room for the path.
    const line = model.isItem(node) ? `:${number(model.firstLine(node))}` : "";
    aside.replaceChildren(element("span", "path", place), element("span", "", line));
  }

  private press(event: KeyboardEvent): void {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const shown = this.shown();
    const rows = this.active();
    const at = this.indexOf(this.chosen);
    const go = (index: number) => {
      if (shown.length === 0) return;
      const target = shown[Math.max(0, Math.min(shown.length - 1, index))];
      this.actions.choose(target, false);
    };
    const node = this.chosen;
    const { model } = this;
    switch (event.key) {
      case "ArrowDown":
        go(at + 1);
        break;
      case "ArrowUp":
        go(at - 1);
        break;
      case "PageDown":
        go(at + rows.rowsPerPage());
        break;
      case "PageUp":
        go(at - rows.rowsPerPage());
        break;
      case "Home":
        go(0);
        break;
      case "End":
        go(shown.length - 1);
        break;
      case "Enter":
        this.actions.zoom(node);
        break;
      case "ArrowRight":
        if (this.found !== null || !model.hasChildren(node)) return;
        if (this.open[node] === 0) this.toggle(node);
        else go(at + 1);
        break;
      case "ArrowLeft":
        if (this.found !== null) return;
        if (this.open[node] === 1 && model.hasChildren(node)) this.toggle(node);
        else if (node > 0) this.actions.choose(model.parent[node], false);
        break;
      default:
        return;
    }
    event.preventDefault();
  }
}
