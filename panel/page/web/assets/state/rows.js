// The values that were chosen, as they are known now.

import { compareValues, drawnNumber, hasExtremes } from "../values/number.js";
import { LOST } from "./freshness.js";
import { Trace } from "../trend/trace.js";

const QUALITIES = { g: "g", s: "s", b: "b", good: "g", stale: "s", bad: "b" };
const TRACE_LIMIT = 300; // changes that the line in a row of the table shows

export const keyOf = ({ plc, label }) => `${plc}|${label}`;

export class Row {
  constructor({ plc, label }) {
    Object.assign(this, { plc, label, key: keyOf({ plc, label }) });
    Object.assign(this, { type: "", unit: "", description: "", writable: false, error: "" });
    Object.assign(this, { value: null, quality: null, time: null });
    this.trace = new Trace(TRACE_LIMIT);
    this.forgetExtremes(null);
  }

  // What the server says of a label: its type, its unit.
  describe({ type, unit, description, writable, error }) {
    this.type = type ?? "";
    this.unit = unit ?? "";
    this.description = description ?? "";
    this.writable = writable === true;
    this.error = error ?? "";
  }

  get number() {
    return drawnNumber(this.value, this.type);
  }

  take(value, quality, time, now) {
    this.value = value;
    this.quality = QUALITIES[quality] ?? "s";
    this.time = time;
    if (this.quality !== "g") {
      this.trace.gap(now, this.quality === "b" ? "bad" : "stale");
      return;
    }
    this.trace.append(now, this.number, value);
    if (!hasExtremes(value, this.type)) return;
    if (this.minimum === null || compareValues(value, this.minimum) < 0) this.minimum = value;
    if (this.maximum === null || compareValues(value, this.maximum) > 0) this.maximum = value;
  }

  // Nothing is known of the value since `time`; what it was then is kept to be shown as such.
  lose(time) {
    if (this.quality !== null) this.quality = LOST;
    this.trace.gap(time, "not known");
  }

  // Least and greatest count anew, from the value that is known now.
  forgetExtremes(now) {
    this.minimum = null;
    this.maximum = null;
    this.since = now;
    if (this.quality === "g" && hasExtremes(this.value, this.type)) {
      this.minimum = this.value;
      this.maximum = this.value;
    }
  }
}
