// One value in the trend: what was recorded of it, as far as that was asked for, and what came live
// since.

import { formatDuration } from "../values/duration.js";
import { formatShort, formatValue } from "../values/format.js";
import { drawSteps } from "./step_path.js";
import { extent, Trace } from "./trace.js";
import { typeOf } from "../values/types.js";

export const LIVE_LIMIT = 20000; // changes
const MEAN_DIGITS = 6;
const MOST_DIGITS = 17; // of a double

export class Curve {
  constructor({ plc, label }) {
    Object.assign(this, { plc, label, type: "", unit: "", note: "", axis: "left" });
    this.past = new Trace(Infinity);
    this.hasParts = false;
    this.pastUntil = -Infinity;
    this.recent = new Trace(LIVE_LIMIT);
  }

  // What was recorded up to `until`. The recorder is a little behind: where the live part has what is
  // missing at the end, that counts.
  takePast(trace, until) {
    this.past = trace;
    this.hasParts = trace.coverage?.some((part) => part > 0 && part < 1) ?? false; // means of a part of their time
    this.pastUntil = until;
    if (this.recent.times[0] <= trace.end.time && trace.end.time <= until) {
      this.pastUntil = trace.end.time;
      trace.cut(trace.end.index);
    }
  }

  // The clock was put back to `time`. What was recorded of the time from there on is told when it is asked for anew.
  goBack(time) {
    this.recent.goBack(time);
    this.pastUntil = Math.min(this.pastUntil, time);
  }

  // Stretches of time with the trace that holds there: [{trace, from, to, until}].
  parts(from, to, heardUntil) {
    const parts = [];
    if (from < this.pastUntil) {
      const end = Math.min(to, this.pastUntil);
      parts.push({ trace: this.past, from, to: end, until: end });
    }
    if (to > this.pastUntil) {
      parts.push({ trace: this.recent, from: Math.max(from, this.pastUntil), to, until: heardUntil });
    }
    return parts;
  }

  // Changes that came live behind what was recorded. The first ones go when they are more than LIVE_LIMIT.
  get liveChanges() {
    return this.recent.length - 1 - this.recent.at(this.pastUntil);
  }

  // Least and greatest that are seen in [from, to]; null where nothing is.
  extent(from, to) {
    let seen = null;
    for (const part of this.parts(from, to, to)) {
      const one = extent(part.trace, part.from, part.to);
      if (one) seen = seen ? { least: Math.min(seen.least, one.least), most: Math.max(seen.most, one.most) } : one;
    }
    return seen;
  }

  // Changes in [from, to].
  count(from, to) {
    return this.parts(from, to, to).reduce((sum, part) => sum + part.trace.at(part.to) - part.trace.at(part.from), 0);
  }

  // What is known of all of its time, or what is a mean of a part of it.
  draw(path, { from, to, heardUntil, toX, toY }, isWhole) {
    for (const part of this.parts(from, to, heardUntil)) drawSteps(path, part.trace, { ...part, toX, toY }, isWhole);
  }

  // The area between the least and the greatest of aggregates.
  drawBand(path, { from, to, toX, toY }, isWhole) {
    const { past } = this;
    if (!past.low) return;
    for (let i = Math.max(0, past.at(from)); i < past.length && past.times[i] <= Math.min(to, this.pastUntil); ++i) {
      if (Number.isNaN(past.low[i]) || past.isWhole(i) !== isWhole) continue;
      const left = toX(Math.max(from, past.times[i]));
      const right = toX(Math.min(to, past.times[i] + past.step));
      const top = toY(past.high[i]);
      path.rect(left, top, right - left, toY(past.low[i]) - top);
    }
  }

  // What held at a time: {text, word}.
  textAt(time, heardUntil) {
    const trace = time < this.pastUntil ? this.past : this.recent;
    const i = trace.at(time);
    if (i < 0 || (trace === this.recent && time > heardUntil)) return { text: "—", word: "not known" };
    if (trace.words[i]) return { text: "—", word: trace.words[i] };
    if (trace.low) return { text: aggregateText(trace, i, this.type), word: meanWord(trace, i) };
    return { text: formatShort(trace.raw[i], this.type), word: "" };
  }
}

// Of which part of the time a mean is, never told as more than it is.
function meanWord(trace, i) {
  if (trace.isWhole(i)) return "mean";
  const percent = Math.floor(trace.coverage[i] * 100);
  return `mean of ${percent < 1 ? "less than 1" : percent} % of the time, else ${trace.rests[i]}`;
}

// Least and greatest as they were, and the mean with digits enough to tell where between them it is.
function aggregateText(trace, i, type) {
  const { least, most } = trace.raw[i];
  if (least === most) return formatShort(least, type);
  return `${meanText(trace.numbers[i], trace.low[i], trace.high[i], type)} (${formatShort(least, type)} … ${formatShort(most, type)})`;
}

function meanText(mean, low, high, type) {
  const size = Math.max(Math.abs(low), Math.abs(high));
  // Infinitely many where the two differ behind the digits of a double.
  const more = Math.max(0, Math.floor(Math.log10(size) - Math.log10(high - low)));
  const number = Number(mean.toPrecision(Math.min(MOST_DIGITS, MEAN_DIGITS + more)));
  return typeOf(type).form === "duration" ? formatDuration(Math.round(number)) : formatValue(number, "LREAL");
}
