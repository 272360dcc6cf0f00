// Where the boxes of the chart lie. Only what can be seen is laid out, so the cost depends on the
// pixels and on the children looked at, not on all nodes below.

import { treemapSquarify } from "d3-hierarchy";
import type { Model, Size } from "./model";

const kMaxLevels = 2000;
const kMinColumn = 64; // pixels
const kRootColumn = 40; // all of it says the same
const kMinHeight = 0.5;
const kMinArea = 16; // square pixels of a box in the treemap
const kMinOpened = 14; // pixels a side: smaller boxes do not show what is inside
const kTitleHeight = 17;

export const kMerged = -1; // a box of several small ones
export const kOmitted = -2; // a box of what the plug-in's answer leaves out

export interface Box {
  node: number; // or kMerged or kOmitted
  parent: number;
  x: number;
  y: number;
  width: number;
  height: number;
  title: number; // height of the part for the title
}

export interface Layout {
  boxes: Box[]; // the outer before the inner
  levels: number; // how many there are
  drawn: number; // how many of them are drawn
  merged: number; // boxes that were too small
}

function levelsBelow(model: Model, root: number): number {
  let deepest = model.depth[root];
  for (let node = root + 1; node < model.end[root]; ++node) {
    if (model.depth[node] > deepest) deepest = model.depth[node];
  }
  return deepest - model.depth[root] + 1;
}

// Columns from left to right, as deep as they are; in each the nodes from top to bottom in their order.
export function icicle(model: Model, by: Size, root: number, width: number, height: number): Layout {
  const values = model.size(by);
  const levels = levelsBelow(model, root);
  const fitting = Math.max(1, Math.floor((width - kRootColumn) / kMinColumn) + 1);
  const drawn = Math.min(levels, fitting, kMaxLevels);
  const first = drawn === 1 ? width : kRootColumn;
  const column = (width - first) / (drawn - 1);
  const boxes: Box[] = [];
  let merged = 0;
  const add = (node: number, parent: number, level: number, y: number, tall: number) => {
    const x = level === 0 ? 0 : first + (level - 1) * column;
    const wide = level === 0 ? first : column;
    boxes.push({ node, parent, x, y, width: wide, height: tall, title: tall });
  };
  if (values[root] > 0) add(root, root, 0, 0, height);
  const level = (node: number) => model.depth[node] - model.depth[root];
  for (let next = 0; next < boxes.length; ++next) {
    const { node, y: top, height: tall } = boxes[next];
    if (node < 0 || level(node) + 1 >= drawn) continue;
    const scale = tall / values[node];
    let y = top;
    let run = 0;
    const endRun = () => {
      if (run > 0) add(kMerged, node, level(node) + 1, y - run, run);
      run = 0;
    };
    for (let child = node + 1; child < model.end[node]; child = model.end[child]) {
      const childHeight = values[child] * scale;
      if (childHeight < kMinHeight) {
        run += childHeight;
        ++merged;
      } else {
        endRun();
        add(child, node, level(node) + 1, y, childHeight);
      }
      y += childHeight;
    }
    endRun();
    const omitted = Math.min(model.omitted(node, by) * scale, top + tall - y);
    if (omitted >= kMinHeight) {
      add(kOmitted, node, level(node) + 1, top + tall - omitted, omitted);
    }
  }
  return { boxes, levels, drawn, merged };
}

interface Tile {
  node: number;
  value: number;
  x0: number;
  y0: number;
  x1: number;
  y1: number;
}

// d3's function reads and writes no more of its nodes than this.
const squarify = treemapSquarify as unknown as (
  parent: { value: number; children: Tile[] },
  x0: number,
  y0: number,
  x1: number,
  y1: number,
) => void;

// Boxes inside of boxes.
export function treemap(model: Model, by: Size, root: number, width: number, height: number): Layout {
  const values = model.size(by);
  const boxes: Box[] = [];
  let merged = 0;
  let deepest = 0;
  if (values[root] > 0) {
    boxes.push({ node: root, parent: root, x: 0, y: 0, width, height, title: height });
  }
  for (let next = 0; next < boxes.length; ++next) {
    const box = boxes[next];
    const { node } = box;
    const level = node < 0 ? 0 : model.depth[node] - model.depth[root];
    deepest = Math.max(deepest, level);
    if (node < 0 || level + 1 >= kMaxLevels || !opensTo(model, node, box, by)) continue;
    const hasTitle = box.width >= 44 && box.height >= 40;
    const edge = box.width >= 24 && box.height >= 24 ? 3 : 1;
    box.title = hasTitle ? kTitleHeight : 0;
    const x0 = box.x + edge;
    const y0 = box.y + (hasTitle ? kTitleHeight : edge);
    const x1 = box.x + box.width - edge;
    const y1 = box.y + box.height - edge;
    const least = (kMinArea * values[node]) / ((x1 - x0) * (y1 - y0));
    const tiles: Tile[] = [];
    const tile = (of: number, value: number) => {
      tiles.push({ node: of, value, x0: 0, y0: 0, x1: 0, y1: 0 });
    };
    let rest = 0;
    let left = values[node];
    for (let child = node + 1; child < model.end[node]; child = model.end[child]) {
      const value = values[child];
      left -= value;
      if (value >= least) {
        tile(child, value);
      } else {
        rest += value;
        ++merged;
      }
    }
    tiles.sort((a, b) => b.value - a.value);
    if (rest >= least) tile(kMerged, rest);
    const omitted = Math.min(model.omitted(node, by), left);
    if (omitted >= least) tile(kOmitted, omitted);
    squarify({ value: values[node], children: tiles }, x0, y0, x1, y1);
    for (const { node: of, x0: x, y0: y, x1: right, y1: bottom } of tiles) {
      const size = { width: right - x, height: bottom - y };
      boxes.push({ node: of, parent: node, x, y, ...size, title: size.height });
    }
  }
  return { boxes, levels: levelsBelow(model, root), drawn: deepest + 1, merged };
}

function opensTo(model: Model, node: number, box: Box, by: Size): boolean {
  if (box.width < kMinOpened || box.height < kMinOpened) return false;
  return model.hasChildren(node) || model.omitted(node, by) > 0;
}

// The innermost box at a point.
export function boxAt(layout: Layout, x: number, y: number): Box | null {
  for (let k = layout.boxes.length - 1; k >= 0; --k) {
    const box = layout.boxes[k];
    if (x >= box.x && x < box.x + box.width && y >= box.y && y < box.y + box.height) return box;
  }
  return null;
}
