// The recorded past of values, as the server's recorder tells it.

import { get, query } from "../server/api.js";
import { drawnNumber } from "../values/number.js";
import { Trace } from "./trace.js";

const WORDS = { s: "stale", b: "bad", n: "no number" };
const NOT_RECORDED = "not recorded";

// {answer, missing}: what `ask` gives for those of the labels that its server knows, null where it knows none,
// and the others. The server refuses a question of which some labels lead to nothing, and names them.
export async function withoutMissing(labels, ask) {
  const missing = [];
  for (let left = labels; left.length > 0;) {
    try {
      return { answer: await ask(left), missing };
    } catch (error) {
      const names = error.status === 404 ? error.body?.labels ?? [] : [];
      if (!left.some((one) => names.includes(one))) throw error;
      missing.push(...left.filter((one) => names.includes(one)));
      left = left.filter((one) => !names.includes(one));
    }
  }
  return { answer: null, missing };
}

// Series of one PLC. What neither its program nor the recording has is among them with `isMissing`.
export async function seriesOf({ plc, label, ...span }, ask = get) {
  const { answer, missing } = await withoutMissing(label, (known) => ask(`/history${query({ plc, label: known, ...span })}`));
  return [...missing.map((one) => ({ plc, label: one, isMissing: true })), ...(answer?.series ?? [])];
}

const kindOf = ({ type, unit }) => (unit ? `${type || "text"} [${unit}]` : type || "text");

// A name that no PLC has any more; logs of old had none.
const formerName = (name) => (name === "" ? "without the name of a PLC" : `as a value of “${name}”`);

// What the line of a series does not show; "" for nothing.
export function noteOf({ isMissing, reason, plc, recorded, others = [], recordedOf = [] }) {
  if (reason) return `No past: ${reason}`;
  if (isMissing) return "Neither in the project nor recorded";
  if (recorded === false && recordedOf.length === 0) return "Is not recorded";
  const names = recordedOf.map(formerName);
  if (recorded === false) return `Is not recorded of ${plc}; recorded ${names.join(", ")}`;
  const more = [...others.map((other) => `as ${kindOf(other)}`), ...names];
  return more.length ? `Also recorded ${more.join(", ")}, which is not drawn` : "";
}

// The word of a gap. Where other numbers were recorded, or by another name, something was.
function gapWord({ plc, others = [], recordedOf = [], ...series }) {
  return NOT_RECORDED + (recordedOf.length ? ` of ${plc}` : "") + (others.length ? ` as ${kindOf(series)}` : "");
}

// A trace of one series of an answer. Changes keep what was recorded; aggregates have a mean, the least and
// greatest as numbers in `low` and `high` and as they were sent in `raw`, and in `coverage` and `rests` of which
// part of the time that is and what was in the rest of it. `end`: see below.
export function traceOf(series) {
  if (series.isMissing) return new Trace(Infinity);
  const gap = gapWord(series);
  const trace = series.kind === "aggregates" ? aggregateTrace(series, gap) : changeTrace(series, gap);
  trace.end = endOf(trace, gap);
  return trace;
}

// Where nothing is recorded any more: {index, time}; time Infinity: it goes on to the end of what was
// asked for.
function endOf({ times, words }, gap) {
  let index = times.length;
  while (index > 0 && words[index - 1] === gap) --index;
  return { index, time: times[index] ?? Infinity };
}

function changeTrace({ times, values, qualities, type }, gap) {
  const trace = new Trace(Infinity);
  times.forEach((time, i) => {
    if (qualities[i] === "g") trace.append(time, drawnNumber(values[i], type), values[i]);
    else trace.append(time, NaN, values[i], WORDS[qualities[i]] ?? gap);
  });
  return trace;
}

function aggregateTrace({ step, times, mean, minimum, maximum, coverage, qualities }, gap) {
  const trace = new Trace(Infinity);
  const rests = qualities.map((quality) => (quality === "g" ? "" : WORDS[quality] ?? gap));
  Object.assign(trace, { step, low: [], high: [], coverage, rests });
  times.forEach((time, i) => {
    const known = typeof mean[i] === "number";
    const [least, most] = known ? [minimum[i], maximum[i]] : [null, null];
    trace.append(time, known ? mean[i] : NaN, known ? { least, most } : null, known ? "" : rests[i]);
    trace.low.push(asNumber(least));
    trace.high.push(asNumber(most));
  });
  return trace;
}

const asNumber = (value) => (typeof value === "boolean" ? Number(value) : value === null ? NaN : Number(value));
