// The chart in the middle: draws the layout on a canvas and answers the pointer and the keys.

import { byId, element } from "./dom";
import { boxAt, icicle, kMerged, kOmitted, treemap, type Box, type Layout } from "./layout";
import type { Model, Size } from "./model";
import type { Palette } from "./palette";
import { kContains, kMatch } from "./search";
import type { View } from "./state";
import { bytes, count, number } from "./text";

const kFont = "12px system-ui, sans-serif";
const kSmallFont = "10.5px system-ui, sans-serif"; // for boxes below kFullHeight
const kFullHeight = 16;
const kMinTextHeight = 12;
const kMinTextWidth = 18;
const kLabelBytes = 160;
const kTipBytes = 300;

export interface Shown {
  root: number;
  view: View;
  size: Size;
  chosen: number;
  marks: Uint8Array | null; // of a search; null: all match
}

interface Actions {
  choose(node: number): void;
  zoom(node: number): void;
  enter(node: number, root: number): void; // chooses the node and zooms to the root
}

export function sizeText(model: Model, node: number, by: Size): string {
  const value = model.amount(node, by);
  return by === "bytes" ? bytes(value) : count(value, by.slice(0, -1));
}

export class Chart {
  private readonly canvas = byId<HTMLCanvasElement>("canvas");
  private readonly context = this.canvas.getContext("2d", { alpha: false, willReadFrequently: true })!;
  private readonly frame = byId("frame");
  private readonly tip = byId("tip");
  private readonly note = byId("note");
  private readonly speech = byId("speech");
  private layout: Layout = { boxes: [], levels: 0, drawn: 0, merged: 0 };
  private laidOut = "";
  private shown: Shown | null = null;
  private hatch: CanvasPattern | null = null;
  private waiting = 0;
  private readonly widths = new Map<string, number>(); // of characters in kFont

  constructor(
    private readonly model: Model,
    private palette: Palette,
    private readonly actions: Actions,
  ) {
    this.makeHatch();
    new ResizeObserver(() => this.drawSoon()).observe(this.frame);
    this.canvas.addEventListener("click", (event) => this.click(event));
    this.canvas.addEventListener("mousemove", (event) => this.point(event));
    this.canvas.addEventListener("mouseleave", () => (this.tip.hidden = true));
    this.canvas.addEventListener("keydown", (event) => this.press(event));
    this.canvas.addEventListener("focus", () => this.speak());
  }

  recolor(palette: Palette): void {
    this.palette = palette;
    this.makeHatch();
    if (this.shown !== null) this.draw();
  }

  show(shown: Shown): void {
    this.shown = shown;
    const root = this.model.title(shown.root, kTipBytes);
    this.canvas.setAttribute("aria-label", `${shown.view} of ${root}, size by ${shown.size}`);
    this.drawSoon();
    if (document.activeElement === this.canvas) this.speak();
  }

  // Whether the chart, as it is about to be shown, has a box for the node.
  draws(node: number, at: { root: number; view: View; size: Size }): boolean {
    this.place(at);
    return this.layout.boxes.some((box) => box.node === node);
  }

  private drawSoon(): void {
    if (this.waiting !== 0 || this.shown === null) return;
    this.waiting = requestAnimationFrame(() => this.draw());
  }

  // Lays the boxes out, if anything has changed since the last time.
  private place({ root, view, size }: { root: number; view: View; size: Size }): void {
    const { clientWidth: width, clientHeight: height } = this.frame;
    const key = [root, view, size, width, height].join();
    if (key === this.laidOut) return;
    this.laidOut = key;
    const place = view === "icicle" ? icicle : treemap;
    this.layout = place(this.model, size, root, width, height);
    const ratio = window.devicePixelRatio;
    this.canvas.width = Math.round(width * ratio);
    this.canvas.height = Math.round(height * ratio);
    this.canvas.style.width = `${width}px`;
    this.canvas.style.height = `${height}px`;
    this.note.textContent = this.noteText(root, view, size);
  }

  private noteText(root: number, view: View, size: Size): string {
    const { levels, drawn, merged, boxes } = this.layout;
    if (boxes.length === 0) return `Nothing to draw: there are no ${size}.`;
    const notes = [];
    if (drawn < levels) notes.push(`${number(drawn)} of ${number(levels)} levels drawn.`);
    if (merged > 0) notes.push(`${count(merged, "small box").replace("boxs", "boxes")} merged in grey.`);
    const outermost = view === "icicle" ? "first column" : "outermost frame";
    notes.push(`Click a box to zoom in${root > 0 ? `, the ${outermost} to zoom out` : ""}.`);
    return notes.join(" ");
  }

  private draw(): void {
    cancelAnimationFrame(this.waiting);
    this.waiting = 0;
    this.place(this.shown!);
    const { context, palette, model } = this;
    const { marks, chosen, view } = this.shown!;
    const ratio = window.devicePixelRatio;
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.fillStyle = palette.line;
    context.fillRect(0, 0, this.canvas.width, this.canvas.height);
    context.font = kFont;
    context.textBaseline = "middle";
    const fills = model.kinds.map((kind) => palette.fill(kind));
    let chosenBox: Box | null = null;
    for (const box of this.layout.boxes) {
      const { node, x, y, width, height } = box;
      if (node === chosen) chosenBox = box;
      const mark = node < 0 || marks === null ? kMatch : marks[node];
      if (node === kMerged) context.fillStyle = palette.small;
      else if (node === kOmitted) context.fillStyle = this.hatch!;
      else if (mark === kMatch) context.fillStyle = fills[model.kind[node]];
      else context.fillStyle = mark === kContains ? palette.around : palette.faded;
      const gap = width > 3 && height > 3 ? 1 : 0;
      if (view === "treemap" && gap === 1) {
        const fill = context.fillStyle;
        context.fillStyle = palette.line;
        context.fillRect(x, y, width, height);
        context.fillStyle = fill;
        context.fillRect(x + 1, y + 1, width - 1, height - 1);
      } else {
        context.fillRect(x, y, width - gap, height - gap);
      }
      if (box.title >= kMinTextHeight && width >= kMinTextWidth) this.write(box, mark !== 0);
    }
    if (chosenBox !== null) this.outline(chosenBox);
  }

  private write(box: Box, matches: boolean): void {
    const { context, palette, model } = this;
    const room = box.width - 8;
    let text;
    if (box.node === kMerged) text = "";
    else if (box.node === kOmitted) text = box.title >= kMinTextHeight + 4 ? "left out" : "";
    else text = model.title(box.node, Math.min(kLabelBytes, Math.ceil(room / 2)));
    text = this.cut(text, room);
    if (text === "") return;
    const y = box.y + Math.min(box.title / 2, 10) + 0.5;
    context.font = box.title < kFullHeight ? kSmallFont : kFont;
    if (box.node === kOmitted) {
      context.fillStyle = palette.line;
      context.fillRect(box.x + 2, y - 8, context.measureText(text).width + 6, 16);
    }
    context.globalAlpha = matches ? 1 : 0.55;
    context.fillStyle = palette.text;
    context.fillText(text, box.x + 4, y);
    context.globalAlpha = 1;
    context.font = kFont;
  }

  // The text, or as much of it as fits, by the widths of its characters.
  private cut(text: string, room: number): string {
    let end = 0; // of what fits with the sign of a cut behind it
    let width = 0;
    for (const character of text) {
      width += this.widthOf(character);
      if (width > room) return end === 0 ? "" : `${text.slice(0, end)}\u2026`;
      if (width + this.widthOf("\u2026") <= room) end += character.length;
    }
    return text;
  }

  private widthOf(character: string): number {
    let width = this.widths.get(character);
    if (width === undefined) {
      width = this.context.measureText(character).width;
      this.widths.set(character, width);
    }
    return width;
  }

  private outline(box: Box): void {
    const { context, palette } = this;
    const height = Math.max(box.height, 3);
    context.lineWidth = 1;
    context.strokeStyle = palette.line;
    context.strokeRect(box.x + 2.5, box.y + 2.5, box.width - 5, Math.max(0, height - 5));
    context.lineWidth = 2;
    context.strokeStyle = palette.chosen;
    context.strokeRect(box.x + 1, box.y + 1, box.width - 2, height - 2);
  }

  private makeHatch(): void {
    const tile = element("canvas");
    tile.width = tile.height = 8;
    const context = tile.getContext("2d")!;
    context.fillStyle = this.palette.faded;
    context.fillRect(0, 0, 8, 8);
    context.strokeStyle = this.palette.text;
    context.globalAlpha = 0.55;
    for (const shift of [-8, 0, 8]) {
      context.moveTo(shift, 8);
      context.lineTo(shift + 8, 0);
    }
    context.stroke();
    this.hatch = this.context.createPattern(tile, "repeat");
  }

  private boxOf(event: MouseEvent): Box | null {
    return boxAt(this.layout, event.offsetX, event.offsetY);
  }

  private click(event: MouseEvent): void {
    const box = this.boxOf(event);
    if (box === null) return;
    const { root } = this.shown!;
    const node = box.node < 0 ? box.parent : box.node;
    if (box.node === root && root > 0) this.actions.enter(root, this.model.parent[root]);
    else this.actions.enter(node, this.model.hasChildren(node) ? node : root);
  }

  private describe(node: number): string {
    const { model } = this;
    const words = `${model.kinds[model.kind[node]]} ${model.title(node, kTipBytes)}`;
    const line = model.isItem(node) ? `line ${number(model.firstLine(node))}, ` : "";
    return `${words}, ${line}${sizeText(model, node, this.shown!.size)}`;
  }

  private point(event: MouseEvent): void {
    const box = this.boxOf(event);
    this.tip.hidden = box === null;
    if (box === null) return;
    const { model } = this;
    this.canvas.style.cursor = box.node >= 0 && !model.hasChildren(box.node) ? "default" : "zoom-in";
    if (box.node === kMerged) {
      this.tip.textContent = `small boxes in ${this.describe(box.parent)}`;
    } else if (box.node === kOmitted) {
      this.tip.textContent = model.data.file.omitted.get(model.ref[box.parent]);
    } else {
      this.tip.textContent = this.describe(box.node);
    }
    const { clientWidth, clientHeight } = this.frame;
    const left = Math.min(event.offsetX + 14, clientWidth - this.tip.offsetWidth - 4);
    const below = event.offsetY + 18;
    const above = event.offsetY - this.tip.offsetHeight - 8;
    this.tip.style.left = `${Math.max(0, left)}px`;
    this.tip.style.top = `${below + this.tip.offsetHeight < clientHeight ? below : Math.max(0, above)}px`;
  }

  private speak(): void {
    this.speech.textContent = this.describe(this.shown!.chosen);
  }

  private press(event: KeyboardEvent): void {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const { model } = this;
    const { root } = this.shown!;
    const chosen = model.contains(root, this.shown!.chosen) ? this.shown!.chosen : root;
    const parent = model.parent[chosen];
    let target = -1;
    switch (event.key) {
      case "ArrowLeft":
        target = parent;
        break;
      case "ArrowRight":
        if (model.hasChildren(chosen)) target = chosen + 1;
        break;
      case "ArrowDown":
        if (parent >= 0 && model.end[chosen] < model.end[parent]) target = model.end[chosen];
        break;
      case "ArrowUp":
        if (parent >= 0) target = this.siblingBefore(chosen);
        break;
      case "Home":
        this.actions.enter(0, 0);
        break;
      case "Enter":
        this.actions.zoom(chosen);
        break;
      case "Backspace":
      case "Escape":
        if (root > 0) this.actions.enter(root, model.parent[root]);
        break;
      default:
        return;
    }
    event.preventDefault();
    if (target < 0) return;
    this.actions.choose(target);
  }

  private siblingBefore(node: number): number {
    const { model } = this;
    let before = -1;
    for (let at = model.parent[node] + 1; at < node; at = model.end[at]) before = at;
    return before;
  }
}
