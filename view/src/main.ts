// Starts the page and passes what the reader chooses to its parts.

import { Chart } from "./chart";
import { readData } from "./data";
import { Detail } from "./detail";
import { button, byId, element } from "./dom";
import { Legend } from "./legend";
import { List } from "./list";
import { isRead, kSizes, Model } from "./model";
import { Palette } from "./palette";
import { Search, type Matches } from "./search";
import { fromFragment, toFragment, type State, type View } from "./state";
import { bytes, count, number } from "./text";

const kWriteDelayMs = 250; // browsers limit how often the URL may change
const kCrumbs = 6;

const darkWish = matchMedia("(prefers-color-scheme: dark)");

class Page {
  private readonly list: List;
  private readonly chart: Chart;
  private readonly detail: Detail;
  private readonly legend: Legend;
  private readonly search: Search;
  private readonly find = byId<HTMLInputElement>("find");
  private readonly label = byId<HTMLSelectElement>("label");
  private palette = new Palette(darkWish.matches);
  private state: State;
  private matches: Matches | null = null;
  private writing = 0;

  constructor(private readonly model: Model) {
    const actions = {
      choose: (node: number, lasting = true) => this.choose(node, lasting),
      zoom: (node: number) => this.zoom(node),
      enter: (node: number, root: number) => this.choose(node, true, root),
      filter: (kinds: ReadonlySet<number>) => this.set({ kinds }, true),
    };
    this.state = fromFragment(location.hash, model);
    this.search = new Search(model);
    this.list = new List(model, this.palette, actions);
    this.chart = new Chart(model, this.palette, actions);
    this.detail = new Detail(model, this.palette, actions);
    this.legend = new Legend(model, this.palette, actions);
    this.connect();
    this.showFigures();
    this.showSince(null);
    if (this.matches === null) this.search.warmUp(() => this.list.warmUp());
  }

  private connect(): void {
    for (const view of ["icicle", "treemap"] as View[]) {
      byId(`view-${view}`).addEventListener("click", () => this.set({ view }, true));
    }
    for (const size of kSizes) {
      byId(`size-${size}`).addEventListener("click", () => this.set({ size }, true));
    }
    this.find.addEventListener("input", () => this.set({ find: this.find.value }, false));
    this.find.addEventListener("keydown", (event) => {
      if (event.key === "ArrowDown") byId(this.matches === null ? "tree" : "results").focus();
      else if (event.key === "Enter") this.chooseFirst();
      else return;
      event.preventDefault();
    });
    this.model.data.header.labels.forEach((label, index) => {
      const option = element("option", "", label);
      option.value = String(index + 1);
      this.label.append(option);
    });
    this.label.addEventListener("change", () => this.set({ label: Number(this.label.value) }, true));
    document.addEventListener("keydown", (event) => {
      if (event.key !== "/" || event.target === this.find || event.ctrlKey || event.metaKey) return;
      event.preventDefault();
      this.find.focus();
      this.find.select();
    });
    window.addEventListener("popstate", () => this.restore());
    window.addEventListener("hashchange", () => this.restore());
    darkWish.addEventListener("change", () => this.recolor(darkWish.matches));
    window.addEventListener("beforeprint", () => this.recolor(false));
    window.addEventListener("afterprint", () => this.recolor(darkWish.matches));
  }

  private recolor(dark: boolean): void {
    this.palette = new Palette(dark);
    this.list.recolor(this.palette);
    this.legend.recolor(this.palette);
    this.chart.recolor(this.palette);
    this.detail.show(this.state.chosen, this.state.size, this.palette);
  }

  private restore(): void {
    const state = fromFragment(location.hash, this.model);
    const before = this.state;
    this.state = state;
    this.showSince(before);
  }

  // A node that is too small to be drawn gets the most room with its parent as the root.
  private choose(node: number, lasting: boolean, zoomTo = this.state.root): void {
    const { model } = this;
    let root = model.contains(zoomTo, node) ? zoomTo : 0;
    if (node > 0 && !this.chart.draws(node, { ...this.state, root })) root = model.parent[node];
    this.set({ root, chosen: node }, lasting);
  }

  private chooseFirst(): void {
    if (this.matches === null || this.matches.nodes.length === 0) return;
    this.choose(this.matches.nodes[0], true);
  }

  private zoom(node: number): void {
    this.set({ root: this.model.hasChildren(node) ? node : Math.max(0, this.model.parent[node]) }, true);
  }

  // Changes the state. A lasting change can be undone with the browser's back button.
  private set(change: Partial<State>, lasting: boolean): void {
    const before = this.state;
    this.state = { ...this.state, ...change };
    const fragment = `#${toFragment(this.state, this.model)}`;
    clearTimeout(this.writing);
    if (lasting) {
      if (fragment !== (location.hash || "#")) history.pushState(null, "", fragment);
    } else {
      this.writing = window.setTimeout(() => history.replaceState(null, "", fragment), kWriteDelayMs);
    }
    this.showSince(before);
  }

  // Shows what differs from the state before, or all.
  private showSince(before: State | null): void {
    const { state } = this;
    const differs = (...keys: (keyof State)[]) =>
      before === null || keys.some((key) => before[key] !== state[key]);
    if (this.find.value !== state.find) this.find.value = state.find;
    if (differs("view", "size", "kinds", "label")) this.showSettings();
    if (differs("root")) this.showCrumbs();
    if (differs("chosen", "root", "view", "size")) this.showChart();
    if (differs("chosen")) this.list.choose(state.chosen);
    if (differs("chosen", "size")) this.detail.show(state.chosen, state.size, this.palette);
    if (differs("find", "kinds", "label")) this.startSearch();
  }

  private startSearch(): void {
    const { find, kinds, label } = this.state;
    if (find.trim() === "" && kinds.size === 0 && label === 0) {
      this.search.stop();
      this.showMatches(null);
      return;
    }
    this.search.start({ text: find.trim(), kinds, label }, (matches) => this.showMatches(matches));
  }

  private showMatches(matches: Matches | null): void {
    this.matches = matches;
    this.list.show(matches);
    if (matches === null || matches.done) this.showChart();
  }

  private showChart(): void {
    const { root, view, size, chosen } = this.state;
    this.chart.show({ root, view, size, chosen, marks: this.matches?.marks ?? null });
  }

  private showSettings(): void {
    const { state } = this;
    for (const view of ["icicle", "treemap"]) {
      byId(`view-${view}`).setAttribute("aria-pressed", String(view === state.view));
    }
    for (const size of kSizes) {
      byId(`size-${size}`).setAttribute("aria-pressed", String(size === state.size));
    }
    this.label.value = String(state.label);
    this.legend.show(state.kinds);
  }

  private showCrumbs(): void {
    const { model, state } = this;
    const path = model.pathTo(state.root);
    const shown = path.length <= kCrumbs ? path : [path[0], -1, ...path.slice(2 - kCrumbs)];
    const entries = shown.map((node, index) => {
      const entry = element("li");
      if (node < 0) {
        entry.textContent = `${number(path.length - kCrumbs + 1)} levels`;
      } else {
        const crumb = button("", model.title(node, 120), () => {
          this.choose(node, true, node);
        });
        if (index === shown.length - 1) crumb.setAttribute("aria-current", "true");
        entry.append(crumb);
      }
      return entry;
    });
    byId("crumbs").replaceChildren(...entries);
  }

  private showFigures(): void {
    const { model } = this;
    const { file, header } = model.data;
    const sum = (values: ArrayLike<number>) => {
      let total = 0;
      for (let i = 0; i < values.length; ++i) total += values[i];
      return total;
    };
    const size = sum(file.size);
    const figures = [
      count(file.status.length, "file"),
      count(sum(file.items), "item"),
      count(sum(file.lines), "line"),
      bytes(size),
    ];
    const failed = file.status.reduce(
      (total, status) => total + (isRead(header.statuses[status]) ? 0 : 1),
      0,
    );
    if (failed > 0) figures.push(`${number(failed)} not read`);
    byId("figures").textContent = figures.join(" \u00b7 ");
    const notes = [];
    const left = sum(file.omittedBytes);
    const files = file.omitted.starts.reduce(
      (total, start, index, starts) => total + (index > 0 && start > starts[index - 1] ? 1 : 0),
      0,
    );
    if (files > 0) {
      notes.push(`${bytes(left)} of ${count(files, "file")} left out (hatched).`);
    }
    if (header.hidden > 0) {
      const statements = count(header.hidden, "plain statement");
      notes.push(`${statements} ${header.hidden === 1 ? "is" : "are"} not shown; quorl-js view --all shows them.`);
    }
    byId("notes").textContent = notes.join(" ");
    byId("tool").textContent = header.tool;
    const title = model.title(0, 200);
    byId("subject").textContent = title;
    document.title = `${title} - ${header.tool}`;
  }
}

async function start(): Promise<void> {
  const message = byId("message");
  if (typeof DecompressionStream === "undefined") {
    message.textContent =
      "This browser is too old for this page: it lacks DecompressionStream. " +
      "Use Chrome 80, Firefox 113, Safari 16.4 or a later one.";
    return;
  }
  const source = byId("data");
  try {
    const data = await readData(source.textContent.trim());
    source.remove();
    const model = new Model(data);
    if (model.count === 0) throw new Error("there are no files in it");
    byId("page").hidden = false;
    new Page(model);
    message.remove();
    performance.mark("ready");
  } catch (error) {
    byId("page").hidden = true;
    message.textContent = `The data of this page cannot be read: ${(error as Error).message}.`;
  }
}

void start();
