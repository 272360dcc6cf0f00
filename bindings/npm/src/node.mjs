import { readFile } from "node:fs/promises";
import { Parser } from "./core.mjs";

export { OutlineError } from "./core.mjs";

let compiled = null;

export async function load({ wasm, ...options } = {}) {
  if (wasm instanceof WebAssembly.Module) return new Parser(wasm, options);
  if (wasm !== undefined) return new Parser(await WebAssembly.compile(wasm), options);
  compiled ??= readFile(new URL("./quorl-js.wasm", import.meta.url)).then(WebAssembly.compile);
  return new Parser(await compiled, options);
}
