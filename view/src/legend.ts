// Colours and their kinds: a button for each kind that occurs filters by it.

import { byId, element } from "./dom";
import type { Model } from "./model";
import { signOf, type Palette } from "./palette";
import { number } from "./text";

interface Actions {
  filter(kinds: ReadonlySet<number>): void;
}

export class Legend {
  private readonly buttons: { kind: number; button: HTMLButtonElement; sign: HTMLElement }[] = [];
  private chosen: ReadonlySet<number> = new Set();

  constructor(
    private readonly model: Model,
    palette: Palette,
    private readonly actions: Actions,
  ) {
    const counts = new Array<number>(model.kinds.length).fill(0);
    for (let node = 0; node < model.count; ++node) ++counts[model.kind[node]];
    const box = byId("kinds");
    model.kinds.forEach((word, kind) => {
      if (counts[kind] === 0) return;
      const made = element("button", "kind");
      made.type = "button";
      const sign = element("span", "sign", signOf(word));
      sign.setAttribute("aria-hidden", "true");
      const amount = element("span", "amount", number(counts[kind]));
      made.append(sign, element("span", "", word), amount);
      made.addEventListener("click", () => this.toggle(kind));
      this.buttons.push({ kind, button: made, sign });
      box.append(made);
    });
    byId("all-kinds").addEventListener("click", () => this.actions.filter(new Set()));
    this.recolor(palette);
  }

  recolor(palette: Palette): void {
    for (const { kind, sign } of this.buttons) {
      sign.style.backgroundColor = palette.fill(this.model.kinds[kind]);
      sign.style.color = palette.text;
    }
  }

  show(kinds: ReadonlySet<number>): void {
    this.chosen = kinds;
    for (const { kind, button } of this.buttons) {
      button.setAttribute("aria-pressed", String(kinds.has(kind)));
    }
    byId<HTMLButtonElement>("all-kinds").disabled = kinds.size === 0;
  }

  private toggle(kind: number): void {
    const kinds = new Set(this.chosen);
    if (!kinds.delete(kind)) kinds.add(kind);
    this.actions.filter(kinds);
  }
}
