// All that the page knows: of the server, its PLCs, the chosen values, the alarms.

import { confirmedAt, markOf } from "./freshness.js";
import { keyOf, Row } from "./rows.js";
import { ServerClock, SILENCE_LIMIT } from "./server_clock.js";

const ROLES = ["viewer", "operator", "engineer"];

export class Model {
  constructor(changed = () => {}) {
    this.changed = changed;
    this.clock = new ServerClock();
    this.session = null;
    this.plcs = new Map(); // name -> {name, title, address, readOnly, link, confirmed}
    this.news = new Map(); // "link NAME", "alarm ID" -> {count, event}: what the stream told last
    this.newsCount = 0;
    this.rows = new Map(); // key -> Row
    this.order = []; // rows as the subscription counts them
    this.alarms = new Map();
    this.alarmsKnown = false;
    this.streams = 0; // how many have begun
    this.trouble = null; // what the server said last against a subscription
    this.listeners = new Set(); // told of events: {begin, value, gap, leap, back}
  }

  // Rows of the values that are chosen now; those of others are forgotten.
  choose(names, now) {
    const rows = new Map();
    for (const name of names) {
      const key = keyOf(name);
      if (rows.has(key)) continue;
      const row = this.rows.get(key) ?? new Row(name);
      if (!this.rows.has(key)) row.forgetExtremes(now);
      rows.set(key, row);
    }
    this.rows = rows;
    this.changed();
  }

  // To be taken when a question is asked, and handed in with its answer: what the stream told since
  // then is newer than the answer.
  get asked() {
    return this.newsCount;
  }

  setPlcs(plcs, asked) {
    const known = this.plcs;
    this.plcs = new Map(plcs.map((plc) => {
      const confirmed = known.get(plc.name)?.confirmed ?? null;
      return [plc.name, { ...plc, confirmed, link: this.#newsSince(asked, `link ${plc.name}`) ?? plc.link }];
    }));
    this.changed();
  }

  setAlarms(alarms, asked) {
    this.alarms = new Map(alarms.map((alarm) => [alarm.id, alarm]));
    for (const name of this.news.keys()) {
      const alarm = name.startsWith("alarm ") && this.#newsSince(asked, name);
      if (alarm) this.alarms.set(alarm.id, alarm);
    }
    this.alarmsKnown = true;
    this.changed();
  }

  // Whether the alarms are as the server has them now.
  knowsAlarms(reading) {
    return this.alarmsKnown && this.clock.isHeard(reading);
  }

  #note(name, event) {
    this.news.set(name, { count: ++this.newsCount, event });
  }

  #newsSince(asked, name) {
    const last = this.news.get(name);
    return last && last.count > asked ? last.event : null;
  }

  // A stream began; false: its beginning came too late to count.
  begin(event, names, described, reading, asked) {
    this.trouble = null;
    ++this.streams;
    this.order = names.map((name) => this.rows.get(keyOf(name)) ?? new Row(name));
    described.forEach((one, i) => this.order[i]?.describe(one));
    for (const plc of this.plcs.values()) plc.confirmed = null;
    if (event.time < this.clock.heardUntil) this.#goBack(event.time);
    const timely = this.clock.begin(event.time, reading, asked);
    for (const listener of this.listeners) listener.begin?.();
    this.changed();
    return timely;
  }

  // An event of the stream; false: it is too old to count, and so is what comes with it.
  hear(name, event, reading) {
    const time = event.time ?? this.clock.now(reading);
    const before = this.clock.heardUntil;
    if (name !== "alarm") {
      if (!this.clock.hear(time, reading)) return false;
      if (time - before > SILENCE_LIMIT) this.#breakLines(before);
    }
    if (name === "values") this.#takeValues(event);
    else if (name === "link") this.#takeLink(event);
    else if (name === "alarm") this.#takeAlarm(event);
    this.changed();
    return true;
  }

  // Nothing is heard any more: no value, link or alarm is known from the time on that was heard last,
  // until it is told anew.
  lose() {
    const last = this.clock.heardUntil;
    for (const row of this.rows.values()) row.lose(last);
    for (const plc of this.plcs.values()) Object.assign(plc, { link: { state: "unknown" }, confirmed: null });
    this.alarmsKnown = false;
    this.news.clear();
    for (const listener of this.listeners) listener.gap?.(null, last);
    this.clock.lose();
    this.changed();
  }

  // Nothing was told of the time from `time` to now, as when the server's clock is put forward.
  #breakLines(time) {
    for (const row of this.rows.values()) row.trace.gap(time, "not known");
    for (const listener of this.listeners) listener.leap?.(time);
  }

  // The server's clock was put back to `time`.
  #goBack(time) {
    for (const row of this.rows.values()) row.trace.goBack(time);
    for (const listener of this.listeners) listener.back?.(time);
  }

  tellTrouble(text) {
    this.trouble = text ?? null;
    this.changed();
  }

  #takeValues({ time, plc, confirmed, rows }) {
    const owner = this.plcs.get(plc);
    if (owner) owner.confirmed = confirmed ?? null;
    for (const [index, value, quality, at] of rows) {
      const row = this.order[index];
      if (!row) continue;
      row.take(value, quality, at, time);
      for (const listener of this.listeners) listener.value?.(row, time);
    }
    if (owner) this.#resume(owner, time);
  }

  // Lines go on where a PLC came back with the values that it had.
  #resume({ name, link, confirmed }, time) {
    if (link?.state !== "up" || confirmed === null || confirmed < (link.since ?? 0)) return;
    for (const row of this.rows.values()) {
      if (row.plc !== name || row.quality !== "g" || !row.trace.isInGap || !this.order.includes(row)) continue;
      row.trace.append(time, row.number, row.value);
      for (const listener of this.listeners) listener.value?.(row, time);
    }
  }

  #takeAlarm(alarm) {
    this.#note(`alarm ${alarm.id}`, alarm);
    this.alarms.set(alarm.id, alarm);
  }

  #takeLink({ plc, state, since, reason, time }) {
    this.#note(`link ${plc}`, { state, since, reason });
    const owner = this.plcs.get(plc);
    if (!owner) return;
    owner.link = { state, since, reason };
    if (state === "up") return;
    for (const row of this.rows.values()) {
      if (row.plc === plc) row.trace.gap(time, "no link");
    }
    for (const listener of this.listeners) listener.gap?.(plc, time);
  }

  // How a row may be shown at this moment; see freshness.js.
  mark(row, reading) {
    return markOf({
      heard: this.clock.isHeard(reading),
      link: this.plcs.get(row.plc)?.link,
      confirmed: confirmedAt(row, this.plcs.get(row.plc)?.confirmed),
      quality: row.quality,
      time: row.time,
      error: row.error,
    });
  }

  // Age of a row in ms; null where it was never read, or nothing is known of the time.
  age(row, reading) {
    const now = this.clock.now(reading);
    const at = confirmedAt(row, this.plcs.get(row.plc)?.confirmed);
    return now === null || at === null ? null : Math.max(0, now - at);
  }

  // Whether who looks has this role, or a higher one.
  hasRole(least) {
    return ROLES.indexOf(this.session?.role) >= ROLES.indexOf(least);
  }

  // Whether who looks may change what takes the role `least`: operators write, acknowledge and restore,
  // engineers save and delete recipes too. plc: the one that is written to.
  mayChange(least = "operator", plc = null) {
    return this.changeObstacle(least, plc) === "";
  }

  // Why they may not, or "" when they may.
  changeObstacle(least = "operator", plc = null) {
    if (this.session?.readOnly) return "The panel is read-only.";
    if (!this.hasRole(least)) return least === "engineer" ? "Only engineers do this." : "Your role does not write.";
    if (plc !== null && this.plcs.get(plc)?.readOnly) return `${plc} is read-only.`;
    return "";
  }

  // Why a row cannot be written, or "" when it can.
  writeObstacle(row) {
    return this.changeObstacle("operator", row.plc) || (row.writable ? "" : "This value is not writable.");
  }
}
