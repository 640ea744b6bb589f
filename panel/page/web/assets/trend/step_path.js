// Lines of values that hold until the next one: across, then up or down. What falls into one column
// of pixels becomes one stroke from its lowest to its highest, so that the work is that of the width
// and not of the number of changes.

// Draws `trace` over [from, to] into `path` (moveTo, lineTo): what is known of all of its time, or the rest.
// toX and toY give pixels; the last value is drawn on to `until`, where it is still known to hold.
export function drawSteps(path, trace, { from, to, until, toX, toY }, isWhole = true) {
  const pen = new Pen(path);
  const first = Math.max(0, trace.at(from));
  const end = Math.min(to, until);
  const hasMeans = trace.coverage !== undefined;
  for (let i = first; i < trace.length && trace.times[i] <= to; ++i) {
    const x = toX(Math.max(from, trace.times[i]));
    const number = trace.numbers[i];
    if (Number.isFinite(number) && (!hasMeans || trace.isWhole(i)) === isWhole) pen.step(x, toY(number));
    else pen.lift(x);
  }
  pen.lift(toX(Math.max(from, end)));
}

class Pen {
  constructor(path) {
    this.path = path;
    this.down = false;
  }

  step(x, y) {
    const column = Math.floor(x);
    if (!this.down) {
      this.path.moveTo(x, y);
      this.#enter(column, x, y);
      this.down = true;
      return;
    }
    if (column === this.column) {
      this.low = Math.min(this.low, y);
      this.high = Math.max(this.high, y);
      this.y = y;
      return;
    }
    this.#leave();
    this.path.lineTo(x, this.y);
    if (y !== this.y) this.path.lineTo(x, y);
    this.#enter(column, x, y);
  }

  // The value holds until x, and then nothing is known.
  lift(x) {
    if (!this.down) return;
    this.#leave();
    if (x > this.x) this.path.lineTo(x, this.y);
    this.down = false;
  }

  #enter(column, x, y) {
    Object.assign(this, { column, x, y, low: y, high: y });
  }

  // The stroke of a column, and back to where the line goes on.
  #leave() {
    if (this.low === this.high) return;
    for (const y of [this.low, this.high, this.y]) this.path.lineTo(this.x, y);
  }
}
