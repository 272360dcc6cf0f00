// Elements whose texts come from files: only ever set as text.

export function byId<T extends HTMLElement>(id: string): T {
  return document.getElementById(id) as T;
}

export function element<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  className = "",
  text = "",
): HTMLElementTagNameMap[K] {
  const made = document.createElement(tag);
  if (className !== "") made.className = className;
  if (text !== "") made.textContent = text;
  return made;
}

export function button(className: string, text: string, press: () => void): HTMLButtonElement {
  const made = element("button", className, text);
  made.type = "button";
  made.addEventListener("click", press);
  return made;
}
