// A list of rows of the same height, of which only those in sight exist. Browsers limit the height of
// an element: above kMaxHeight the scroll bar stands for more rows than its pixels.

const kMaxHeight = 12_000_000;

export class Rows {
  private readonly box = document.createElement("div");
  private readonly rows: HTMLElement[] = [];
  private count = 0;
  private rowHeight = 1;
  private drawnHeight = 0; // of the scroller, when the rows were last drawn

  constructor(
    readonly scroller: HTMLElement,
    private readonly make: () => HTMLElement,
    private readonly fill: (row: HTMLElement, index: number) => void,
  ) {
    this.box.className = "rows";
    this.box.setAttribute("role", "presentation");
    scroller.append(this.box);
    scroller.addEventListener("scroll", () => this.draw());
    // An observer also reports a list that appears, which show() has just filled.
    new ResizeObserver(() => {
      if (scroller.clientHeight !== this.drawnHeight) this.draw();
    }).observe(scroller);
  }

  // Fills all rows again.
  show(count: number): void {
    this.count = count;
    if (this.rows.length === 0) this.addRow();
    this.box.style.height = `${Math.min(count * this.rowHeight, kMaxHeight)}px`;
    this.draw();
  }

  reveal(index: number): void {
    const first = this.first();
    const inSight = this.inSight();
    if (index >= first && index + 1 <= first + inSight) return;
    // A neighbour comes in by a row, others come to the upper third.
    let target = index - inSight / 3;
    if (index < first && index > first - 2) target = index;
    if (index + 1 > first + inSight && index < first + inSight + 1) target = index + 1 - inSight;
    this.scroller.scrollTop = Math.max(0, target) * this.pixelsPerRow();
    this.draw();
  }

  private addRow(): void {
    const row = this.make();
    this.box.append(row);
    if (this.rows.push(row) === 1) this.rowHeight = Math.max(1, parseFloat(getComputedStyle(row).height));
  }

  // The element of a row, if it is in sight.
  element(index: number): HTMLElement | null {
    return this.rows.find((row) => !row.hidden && Number(row.dataset.index) === index) ?? null;
  }

  rowsPerPage(): number {
    return Math.max(1, Math.floor(this.inSight()) - 1);
  }

  private inSight(): number {
    return this.scroller.clientHeight / this.rowHeight;
  }

  private pixelsPerRow(): number {
    if (this.count * this.rowHeight <= kMaxHeight) return this.rowHeight;
    return (kMaxHeight - this.scroller.clientHeight) / (this.count - this.inSight());
  }

  private first(): number {
    return this.scroller.scrollTop / this.pixelsPerRow();
  }

  private draw(): void {
    if (this.scroller.hidden) return;
    // Read once: reading between changes would lay out the page for every row.
    const { scrollTop } = this.scroller;
    this.drawnHeight = this.scroller.clientHeight;
    const first = scrollTop / this.pixelsPerRow();
    const begin = Math.max(0, Math.floor(first));
    const end = Math.min(this.count, Math.ceil(first + this.inSight()) + 1);
    while (this.rows.length < end - begin) this.addRow();
    this.rows.forEach((row, k) => {
      // A row stays with its element while it is in sight.
      const index = begin + ((((k - begin) % this.rows.length) + this.rows.length) % this.rows.length);
      row.hidden = index >= end;
      if (row.hidden) return;
      row.dataset.index = String(index);
      const top = scrollTop + (index - first) * this.rowHeight;
      row.style.transform = `translateY(${Math.round(top)}px)`;
      this.fill(row, index);
    });
  }
}
