// The curves of the trend: fed by the stream of events, and with the past that is asked for.

import { get, query } from "../server/api.js";
import { keyOf } from "../state/rows.js";
import { readClocks } from "../state/server_clock.js";
import { Curve } from "./curve.js";
import { traceOf } from "./history.js";

const POINTS = 4000; // changes that are asked for before aggregates are taken

export class Curves {
  #asked = 0;

  constructor(model) {
    this.model = model;
    this.curves = new Map();
    this.error = "";
    this.loaded = null; // {from, to}: what was asked for last
    this.version = 0; // counts what changes the picture
    this.listener = {
      value: (row, time) => this.#value(row, time),
      gap: (plc, time) => this.#gap(plc, time),
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
    try {
      const answers = await Promise.all([...byPlc].map(([plc, label]) =>
        get(`/history${query({ plc, label, from: Math.floor(from), to: Math.ceil(until), points: POINTS })}`)));
      if (asked !== this.#asked) return null;
      for (const one of answers.flatMap(({ series }) => series)) this.#takePast(one, until);
      this.error = "";
    } catch (error) {
      if (asked !== this.#asked) return null;
      // A server without a recorder.
      const isNothing = error.status === 404;
      this.error = isNothing ? error.message : `What was recorded is not known: ${error.message}`;
      ++this.version;
      return isNothing;
    }
    ++this.version;
    return true;
  }

  #takePast(series, until) {
    const curve = this.curves.get(keyOf(series));
    if (!curve) return;
    if (series.type) Object.assign(curve, { type: series.type, unit: series.unit ?? curve.unit });
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
}
