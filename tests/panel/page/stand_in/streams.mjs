// Streams of events of the stand-in: values every second, a tick where nothing has changed.

import { now } from "./clock.mjs";

const INTERVAL = 1000; // ms

export class Streams {
  #open = new Set();
  #timer = null;

  constructor(standIn) {
    this.standIn = standIn;
  }

  start() {
    this.#timer = setInterval(() => this.#tell(), INTERVAL);
  }

  stop() {
    clearInterval(this.#timer);
    this.#open.clear();
  }

  add(response, id, names) {
    response.writeHead(200, { "Content-Type": "text/event-stream", "Cache-Control": "no-store" });
    const stream = { response, names, id, last: new Map(), count: 0 };
    this.#open.add(stream);
    response.on("close", () => this.#open.delete(stream));
    this.#send(stream, "hello", { time: now(), subscription: id, interval: INTERVAL });
    this.#tellOne(stream, now());
  }

  tellAll(name, event) {
    for (const stream of this.#open) this.#send(stream, name, event);
  }

  #tell() {
    if (this.standIn.faults.silent) return;
    const time = now();
    for (const stream of this.#open) this.#tellOne(stream, time);
  }

  #tellOne(stream, time) {
    const byPlc = new Map();
    stream.names.forEach(({ plc, label }, i) => {
      const one = this.#row(plc, label, time);
      if (!one) return;
      if (!byPlc.has(plc)) byPlc.set(plc, []);
      const text = JSON.stringify(one.slice(0, 2));
      if (stream.last.get(i) !== text) byPlc.get(plc).push([i, ...one]);
      stream.last.set(i, text);
    });
    for (const [plc, rows] of byPlc) {
      const isUp = this.standIn.links.get(plc).state === "up";
      this.#send(stream, "values", { time, plc, confirmed: isUp ? time : null, rows });
    }
    if (byPlc.size === 0) this.#send(stream, "tick", { time });
  }

  #row(plc, label, time) {
    const plant = this.standIn.plants.get(plc);
    if (!plant?.values.has(label)) return null;
    if (this.standIn.faults.bad.has(label)) return [null, "b", null];
    const link = this.standIn.linkOf(plc);
    if (link.state !== "up") return [plant.valueAt(label, link.since), "s", link.since];
    if (this.standIn.faults.stale.has(label)) return [plant.valueAt(label, 0), "s", time - this.standIn.faults.staleFor];
    return [plant.valueAt(label, time), "g", time];
  }

  #send(stream, name, event) {
    stream.response.write(`id: ${++stream.count}\nevent: ${name}\ndata: ${JSON.stringify(event)}\n\n`);
  }
}
