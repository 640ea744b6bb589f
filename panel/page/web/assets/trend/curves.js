// The curves of the trend: fed by the stream of events, and with the past that is asked for.

import { keyOf } from "../state/rows.js";
import { readClocks } from "../state/server_clock.js";
import { Curve, LIVE_LIMIT } from "./curve.js";
import { noteOf, seriesOf, traceOf } from "./history.js";

const POINTS = 4000; // changes that are asked for before aggregates are taken
const LIVE_TIME = 60000; // ms of a live trend, at least, before the past is asked for anew
const LIVE_SHARE = 1 / 4; // of the span of time, likewise
const RETRY = 5000; // ms after a question that failed

export class Curves {
  #asked = 0;

  constructor(model, ask) {
    this.model = model;
    this.ask = ask;
    this.curves = new Map();
    this.error = "";
    this.loaded = null; // {from, to, at}: what was asked for last, and when
    this.hasFailed = false; // what was asked for last
    this.version = 0; // counts what changes the picture
    this.listener = {
      value: (row, time) => this.#value(row, time),
      gap: (plc, time) => this.#gap(plc, time),
      leap: (time) => this.#gap(null, time),
      back: (time) => this.#goBack(time),
    };
    model.listeners.add(this.listener);
  }

  dispose() {
    this.model.listeners.delete(this.listener);
  }

  get all() {
    return [...this.curves.values()];
  }

  // Those of the view, in its order; new ones begin with what their row knows.
  show(series) {
    const shown = new Map();
    for (const one of series) {
      const key = keyOf(one);
      const curve = this.curves.get(key) ?? new Curve(one);
      if (!this.curves.has(key)) this.#begin(curve, this.model.rows.get(key));
      curve.axis = one.axis === "right" ? "right" : "left";
      shown.set(key, curve);
    }
    const isNew = [...shown.keys()].some((key) => !this.curves.has(key));
    this.curves = shown;
    ++this.version;
    return isNew;
  }

  #begin(curve, row) {
    if (!row) return;
    row.trace.times.forEach((time, i) => curve.recent.append(time, row.trace.numbers[i], row.trace.raw[i], row.trace.words[i]));
  }

  // Types and units come with the subscription.
  describe() {
    for (const [key, curve] of this.curves) {
      const row = this.model.rows.get(key);
      if (row?.type) Object.assign(curve, { type: row.type, unit: row.unit });
    }
  }

  // Asks for the past of a window. False when what was recorded is not known then; null when the answer
  // was overtaken by that of another question and dropped.
  async load(from, to) {
    const asked = ++this.#asked;
    const byPlc = new Map();
    for (const { plc, label } of this.all) byPlc.set(plc, [...(byPlc.get(plc) ?? []), label]);
    const now = this.model.clock.now(readClocks()) ?? to;
    const until = Math.min(to, now);
    this.loaded = { from, to, at: now };
    this.hasFailed = false;
    const answers = await Promise.all([...byPlc].map(([plc, label]) =>
      pastOf({ plc, label, from: Math.floor(from), to: Math.ceil(until), points: POINTS }, this.ask)));
    if (asked !== this.#asked) return null;
    ++this.version;
    const failure = answers.find(({ error }) => error && error.status !== 404);
    this.hasFailed = failure !== undefined;
    this.error = failure ? `What was recorded is not known: ${failure.error.message}` : reasonOfNothing(answers);
    if (this.error === "") for (const one of answers.flatMap(({ series }) => series)) this.#takePast(one, until);
    return !failure;
  }

  // Whether the past of the window is to be asked for anew: where that failed, and now and then in a live
  // trend, before what came live is more than is kept.
  isDue(from, to) {
    const now = this.model.clock.now(readClocks());
    if (!this.loaded || this.all.length === 0 || now === null) return false;
    const age = now - this.loaded.at;
    if (this.hasFailed) return age > RETRY;
    if (to <= this.loaded.to || age <= LIVE_TIME) return false;
    return age > LIVE_SHARE * (to - from) || this.all.some((curve) => curve.liveChanges > LIVE_LIMIT / 2);
  }

  #takePast(series, until) {
    const curve = this.curves.get(keyOf(series));
    if (!curve) return;
    if (series.type) Object.assign(curve, { type: series.type, unit: series.unit ?? curve.unit });
    curve.note = noteOf(series);
    curve.takePast(traceOf(series), until);
  }

  #value(row, time) {
    const curve = this.curves.get(row.key);
    if (!curve) return;
    if (row.quality === "g") curve.recent.append(time, row.number, row.value);
    else curve.recent.gap(time, row.quality === "b" ? "bad" : "stale");
    ++this.version;
  }

  #gap(plc, time) {
    for (const curve of this.all) {
      if (plc === null || curve.plc === plc) curve.recent.gap(time, plc === null ? "not known" : "no link");
    }
    ++this.version;
  }

  #goBack(time) {
    for (const curve of this.all) curve.goBack(time);
    ++this.#asked; // what is on its way is by the clock before
    ++this.version;
  }
}

// {series, error}: the past of one PLC. One that there is not, and that was never recorded, has none.
async function pastOf(question, ask) {
  try {
    return { series: await seriesOf(question, ask) };
  } catch (error) {
    const { plc, label } = question;
    return { series: label.map((one) => ({ plc, label: one, isMissing: true, reason: error.message })), error };
  }
}

// Why no PLC has a past, as without a recorder; "" where one has.
function reasonOfNothing(answers) {
  if (answers.some(({ error }) => !error)) return "";
  return [...new Set(answers.map(({ error }) => error.message))].join("; ");
}
