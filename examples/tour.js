// A short tour of what the plug-in sees in a script file.
import { readFile } from "fs";

const cache = new Map();

export class Catalogue {
  constructor(path) {
    this.path = path;
  }

  async load() {
    try {
      const text = await readFile(this.path, "utf8");
      return text.split("\n").map((line) => line.trim());
    } catch (error) {
      console.error(`no catalogue: ${error.message}`);
    }
  }
}

function Entry(name, price) {
  this.name = name;
  this.price = price;
}

for (const name of ["tea", "coffee"]) {
  if (!cache.has(name)) {
    cache.set(name, new Entry(name, 2.5));
  }
}

export default cache;
