import { Parser } from "./core.mjs";

export { OutlineError } from "./core.mjs";

let compiled = null;

// Not streamed, which servers have to support with a type of their own.
async function fetchModule() {
  const response = await fetch(new URL("./quorl-js.wasm", import.meta.url));
  if (!response.ok) throw new Error(`${response.url}: status ${response.status}`);
  return WebAssembly.compile(await response.arrayBuffer());
}

export async function load({ wasm, ...options } = {}) {
  if (wasm instanceof WebAssembly.Module) return new Parser(wasm, options);
  if (wasm !== undefined) return new Parser(await WebAssembly.compile(wasm), options);
  compiled ??= fetchModule();
  return new Parser(await compiled, options);
}
