// The recorded past of values, as the server's recorder tells it.

import { drawnNumber } from "../values/number.js";
import { Trace } from "./trace.js";

const WORDS = { s: "stale", b: "bad", "-": "not recorded" };

// A trace of one series of an answer. Changes keep what was recorded; aggregates have a mean, and the
// least and greatest in `low` and `high`. `end`: see below.
export function traceOf(series) {
  const trace = series.kind === "aggregates" ? aggregateTrace(series) : changeTrace(series);
  trace.end = endOf(trace);
  return trace;
}

// Where nothing is recorded any more: {index, time}; time Infinity: it goes on to the end of what was
// asked for.
function endOf({ times, words }) {
  let index = times.length;
  while (index > 0 && words[index - 1] === WORDS["-"]) --index;
  return { index, time: times[index] ?? Infinity };
}

function changeTrace({ times, values, qualities, type }) {
  const trace = new Trace(Infinity);
  times.forEach((time, i) => {
    if (qualities[i] === "g") trace.append(time, drawnNumber(values[i], type), values[i]);
    else trace.append(time, NaN, values[i], WORDS[qualities[i]] ?? WORDS["-"]);
  });
  return trace;
}

function aggregateTrace({ step, times, mean, minimum, maximum, coverage }) {
  const trace = new Trace(Infinity);
  Object.assign(trace, { step, low: [], high: [], coverage: [] });
  times.forEach((time, i) => {
    const known = typeof mean[i] === "number";
    trace.append(time, known ? mean[i] : NaN, null, known ? "" : WORDS["-"]);
    trace.low.push(known ? asNumber(minimum[i]) : NaN);
    trace.high.push(known ? asNumber(maximum[i]) : NaN);
    trace.coverage.push(coverage?.[i] ?? null);
  });
  return trace;
}

const asNumber = (value) => (typeof value === "boolean" ? Number(value) : value === null ? NaN : Number(value));
