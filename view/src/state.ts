// What the reader has chosen, and its form in the URL's fragment.

import { kSizes, type Model, type Size } from "./model";

export type View = "icicle" | "treemap";

export interface State {
  chosen: number; // a node
  root: number; // the node that the chart shows
  view: View;
  size: Size;
  kinds: ReadonlySet<number>; // empty: all
  label: number; // 1 + index into the labels, 0: all
  find: string;
}

export function startState(model: Model): State {
  const size = kSizes.find((by) => model.size(by)[0] > 0) ?? "lines";
  return { chosen: 0, root: 0, view: "icicle", size, kinds: new Set(), label: 0, find: "" };
}

export function toFragment(state: State, model: Model): string {
  const start = startState(model);
  const words = new URLSearchParams();
  if (state.chosen !== start.chosen) words.set("chosen", String(state.chosen));
  if (state.root !== start.root) words.set("zoom", String(state.root));
  if (state.view !== start.view) words.set("view", state.view);
  if (state.size !== start.size) words.set("size", state.size);
  const kinds = [...state.kinds].sort((a, b) => a - b);
  if (kinds.length > 0) words.set("kinds", kinds.map((kind) => model.kinds[kind]).join(","));
  if (state.label > 0) words.set("label", model.data.header.labels[state.label - 1]);
  if (state.find !== "") words.set("find", state.find);
  return words.toString();
}

// What is missing or makes no sense is as at the start.
export function fromFragment(fragment: string, model: Model): State {
  const words = new URLSearchParams(fragment.replace(/^#/, ""));
  const state = startState(model);
  const node = (key: string) => {
    const value = Number(words.get(key));
    return Number.isInteger(value) && value > 0 && value < model.count ? value : 0;
  };
  state.chosen = node("chosen");
  state.root = node("zoom");
  if (words.get("view") === "treemap") state.view = "treemap";
  state.size = kSizes.find((size) => size === words.get("size")) ?? state.size;
  const kinds = (words.get("kinds") ?? "").split(",").map((word) => model.kinds.indexOf(word));
  state.kinds = new Set(kinds.filter((kind) => kind >= 0));
  state.label = model.data.header.labels.indexOf(words.get("label") ?? "") + 1;
  state.find = words.get("find") ?? "";
  return state;
}
