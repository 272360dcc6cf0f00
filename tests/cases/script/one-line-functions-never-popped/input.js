class Point {
  constructor(x, y) { this.x = x; this.y = y; }
  get sum() { return this.x + this.y; }
  toString() { return `(${this.x}, ${this.y})`; }
}

function make(x) { return new Point(x, 0); }
const origin = make(0);
const twice = (n) => { return n * 2; };
if (origin.x === 0) { log("zero"); }
const keyed = o => ({ id: o.id });
for (const p of points) { draw(p); }
total += origin.sum;

function late() {
  return total;
}
finish();
