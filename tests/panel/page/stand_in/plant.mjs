// Two PLCs with values that are a function of the time, for the stand-in of the server.

const value = (name, type, unit, description, at, writable = false) => ({ name, kind: "value", type, unit, description, at, writable });
const node = (kind, name, children, description = "", type = "") => ({ name, kind, type, unit: "", description, children });

const wave = (mean, amplitude, period, phase = 0) => (time) =>
  Math.fround(Math.round((mean + amplitude * Math.sin((time / 1000 / period + phase) * 2 * Math.PI)) * 100) / 100);
const constant = (always) => () => always;
const counter = (interval, most) => (time) => Math.floor(time / interval) % most;

function tank(number) {
  return node("structure", `tank[${number}]`, [
    value("name", "STRING", "", "As painted on the tank", constant(["Raw milk A", "Raw milk B", "Cream"][number - 1])),
    value("level", "REAL", "%", "Filling level", wave(55, 38, 40, number / 5)),
    value("temperature", "REAL", "°C", "Product temperature", wave(8, 2, 90, number / 7)),
    value("volume", "DINT", "l", "Contents", (time) => Math.round(wave(6600, 4560, 40, number / 5)(time))),
    value("setpoint", "REAL", "°C", "Temperature asked for", constant(6.5), true),
    node("array", "alarms", [1, 2, 3].map((one) => value(`alarms[${one}]`, "BOOL", "", "High, low, temperature", (time) => one === 1 && wave(55, 38, 40, number / 5)(time) > 90)), "1 high level, 2 low level, 3 temperature"),
  ], "A process tank", "Tank");
}

function dairy() {
  return [
    node("scope", "Plant", [
      node("array", "tank", [1, 2, 3].map(tank), "Process tanks", "Tank"),
      value("mode", "USINT", "", "0 off, 1 manual, 2 automatic, 3 cleaning", constant(2), true),
      value("running", "BOOL", "", "The line produces", constant(true), true),
      value("lineSpeed", "REAL", "packs/min", "Speed of the filling line", wave(240, 18, 20)),
      value("heartbeat", "UINT", "", "Counts the PLC cycles", counter(100, 65536)),
      value("faultWord", "DWORD", "", "Collected faults", (time) => (counter(2000, 65536)(time) * 65537) >>> 0),
      value("interlock", "INT", "", "Refused by the PLC", constant(7), true),
    ]),
    node("scope", "Totals", [
      value("packs", "ULINT", "packs", "Since commissioning", (time) => String(18446744073709000000n + BigInt(counter(250, 500000)(time)))),
      value("energyBalance", "LINT", "Wh", "Drawn less fed back", (time) => String(-9007199254740993n + BigInt(counter(1000, 4000)(time)))),
      value("serial", "LWORD", "", "Serial number of the controller", constant("18364758544493064720")),
      value("uptime", "TIME", "ms", "Since the last start", (time) => Math.floor(time / 100) * 100 % 4294967296),
      value("note", "STRING", "", "Note to the next shift", constant("CIP of tank 3 is due"), true),
    ]),
  ];
}

function coldStore() {
  return [
    node("scope", "Store", [
      value("temperature", "REAL", "°C", "Air in the store", wave(-21, 1.5, 120)),
      value("door", "BOOL", "", "The door is open", (time) => counter(10000, 6)(time) === 0),
      value("packs", "UINT", "", "Packs in the racks", counter(3000, 400)),
      value("limit", "LREAL", "°C", "Alarm above", constant(-18), true),
    ]),
  ];
}

// Values by their whole labels, and the nodes of the tree with theirs.
export class PlantModel {
  constructor(name, title, roots) {
    this.name = name;
    this.title = title;
    this.values = new Map();
    this.nodes = new Map();
    this.roots = roots.map((root) => this.#enter(root, root.name));
    this.written = new Map();
  }

  #enter(one, label) {
    const children = (one.children ?? []).map((child) => {
      // Elements are named after their array.
      const own = child.name.startsWith(`${one.name}[`) ? label + child.name.slice(one.name.length) : `${label}.${child.name}`;
      return this.#enter(child, own);
    });
    const { name, kind, type, unit, description, writable } = one;
    const symbol = { name, label, kind, type, unit, description, children: children.length, writable: writable === true };
    this.nodes.set(label, { symbol, children });
    if (kind === "value") this.values.set(label, one);
    return symbol;
  }

  valueAt(label, time) {
    return this.written.has(label) ? this.written.get(label) : this.values.get(label).at(time);
  }
}

export const plants = () => [
  new PlantModel("dairy", "Dairy line 2", dairy()),
  new PlantModel("store", "Cold store", coldStore()),
];
