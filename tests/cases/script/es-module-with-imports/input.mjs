import fs, { readFile } from "node:fs";
import * as path from "node:path";
import "./polyfill.js";

export const VERSION = "1.0.0";
export let counter = 0;

export function load(name) {
  return fs.readFileSync(path.join("data", name), "utf8");
}

export async function loadAll(names) {
  const pages = await Promise.all(names.map((n) => load(n)));
  return pages;
}

export class Store {
  constructor(items) {
    this.items = items;
  }
}

export default class Registry extends Store {
  lookup(key) {
    return this.items.get(key);
  }
}

export { readFile as read };
export * from "./extra.js";
const meta = import.meta.url;
