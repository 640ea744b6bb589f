// The way of one value over time, in the order of time: it holds until the next entry; NaN says that
// from here on nothing is known.

export class Trace {
  constructor(limit) {
    this.limit = limit;
    this.clear();
  }

  clear() {
    this.times = [];
    this.numbers = [];
    this.raw = []; // what the server sent, for the cursor
    this.words = []; // "" or the word that says why nothing is drawn
    this.end = { index: 0, time: Infinity }; // of what was recorded; see history.js
  }

  get length() {
    return this.times.length;
  }

  get isInGap() {
    return this.words.at(-1) !== undefined && this.words.at(-1) !== "";
  }

  // What is told later counts later, also where the clock was put back a little meanwhile.
  append(time, number, raw = null, word = "") {
    const last = this.times.length - 1;
    this.times.push(last >= 0 ? Math.max(time, this.times[last]) : time);
    this.numbers.push(number);
    this.raw.push(raw);
    this.words.push(word);
    // Dropped in lots: taking one from the front moves all others.
    if (this.times.length > this.limit * 1.25) this.#drop(this.times.length - this.limit);
  }

  // From here on nothing is known.
  gap(time, word = "") {
    const last = this.times.length - 1;
    if (last >= 0 && Number.isNaN(this.numbers[last]) && this.words[last] === word) return;
    this.append(time, NaN, null, word);
  }

  // The clock was put back to `time`, and that time comes a second time: what was told of it before counts no more.
  goBack(time) {
    let length = this.length;
    while (length > 0 && this.times[length - 1] >= time) --length;
    this.cut(length);
    this.gap(time, "not known");
  }

  // Only the first entries stay.
  cut(length) {
    for (const list of [this.times, this.numbers, this.raw, this.words]) list.length = length;
  }

  // Whether a number tells of all the time up to the next one; of a mean it may be of a part.
  isWhole(i) {
    return !(this.coverage?.[i] < 1);
  }

  // Index of the entry that holds at `time`; -1 before the first.
  at(time) {
    let low = 0;
    let high = this.times.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.times[middle] <= time) low = middle + 1;
      else high = middle;
    }
    return low - 1;
  }

  #drop(count) {
    for (const list of [this.times, this.numbers, this.raw, this.words]) list.splice(0, count);
  }
}

// Least and greatest number that holds at some time of [from, to]; null where there is none.
export function extent(trace, from, to) {
  let least = Infinity;
  let most = -Infinity;
  for (let i = Math.max(0, trace.at(from)); i < trace.length && trace.times[i] <= to; ++i) {
    const low = trace.low?.[i] ?? trace.numbers[i];
    const high = trace.high?.[i] ?? trace.numbers[i];
    if (Number.isFinite(low) && low < least) least = low;
    if (Number.isFinite(high) && high > most) most = high;
  }
  return least <= most ? { least, most } : null;
}
