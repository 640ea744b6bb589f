// Speaks the server's interface with values that are made up, and fails on demand: for what a real
// server and a real PLC do only by chance. Run by itself it serves on port 8090 (or the one given).

import http from "node:http";
import { pathToFileURL } from "node:url";

import { pageFiles } from "../../../../panel/page/page_files.mjs";
import { answer } from "./routes.mjs";
import { now } from "./clock.mjs";
import { plants } from "./plant.mjs";
import { Streams } from "./streams.mjs";

export const POLICY = "default-src 'self'";

export class StandIn {
  constructor(packages) {
    this.files = new Map(pageFiles(packages).map((file) => [file.path, file]));
    this.plants = new Map(plants().map((plant) => [plant.name, plant]));
    this.links = new Map([...this.plants.keys()].map((name) => [name, { state: "up", since: now() - 90000, reason: "" }]));
    this.session = { user: null, role: "engineer", loginRequired: false, readOnly: false, version: "1.0.0" };
    this.subscriptions = new Map();
    this.streams = new Streams(this);
    this.writes = new Map();
    this.sent = []; // bodies of the writes that came
    this.faults = { losesAnswer: false, delay: 0, gate: null, silent: false, save: null, restore: null, history: null, bad: new Set(), stale: new Set(), staleFor: 10000 };
    this.alarms = new Map();
    this.recorded = null; // occurrences of the history; null: those of the alarms that have ended
    this.audit = null; // lines; null: there is none
    this.flaw = ""; // of the audit
    this.answered = []; // series of the last question for the past
    this.recipes = new Map();
    this.restores = 0; // that were asked for
    this.requests = [];
    this.runs = 0;
  }

  async start(port = 0) {
    this.instance = `run ${++this.runs}`;
    this.server = http.createServer((request, response) => this.#serve(request, response));
    await new Promise((done) => this.server.listen(port, "127.0.0.1", done));
    this.port = this.server.address().port;
    this.streams.start();
    return `http://127.0.0.1:${this.port}/`;
  }

  // As if the process were killed: connections break, subscriptions and writes are forgotten.
  async stop() {
    this.streams.stop();
    this.subscriptions.clear();
    this.writes.clear();
    const closed = new Promise((done) => this.server.close(done));
    this.server.closeAllConnections();
    await closed;
  }

  // As the server tells it: never since later than now.
  linkOf(plc) {
    const link = this.links.get(plc);
    return { ...link, since: Math.min(link.since, now()) };
  }

  setLink(plc, state, reason = "") {
    this.links.set(plc, { state, since: now(), reason });
    this.streams.tellAll("link", { time: now(), plc, state, since: now(), reason });
  }

  setAlarm(alarm) {
    this.alarms.set(alarm.id, alarm);
    this.streams.tellAll("alarm", alarm);
  }

  #serve(request, response) {
    const url = new URL(request.url, "http://stand-in");
    this.requests.push(`${request.method} ${url.pathname}`);
    response.setHeader("Content-Security-Policy", POLICY);
    response.setHeader("X-Content-Type-Options", "nosniff");
    const file = this.files.get(url.pathname);
    if (file) {
      response.writeHead(200, { "Content-Type": file.contentType, ETag: file.etag, "Cache-Control": "no-cache" });
      response.end(file.bytes);
      return;
    }
    let body = "";
    request.on("data", (part) => (body += part));
    request.on("end", () => answer(this, request, url, body ? JSON.parse(body) : null, response));
  }
}

if (process.argv[1] && import.meta.url === pathToFileURL(process.argv[1]).href) {
  const [packages, port] = process.argv.slice(2);
  const standIn = new StandIn(packages);
  const hour = 3600000;
  const alarm = { plc: "dairy", label: "Plant.tank[1].level", condition: "above 90", value: 92.1, acknowledgedBy: null, acknowledgedAt: null };
  standIn.setAlarm({ ...alarm, id: "1", text: "Tank 1 is nearly full", state: "active", since: now() - 90000, ended: null });
  standIn.setAlarm({ ...alarm, id: "2", label: "Plant.running", condition: "is FALSE", text: "The line stands", state: "ended", since: now() - 2 * hour, ended: now() - hour });
  standIn.setAlarm({ ...alarm, id: "3", plc: "store", label: "Store.temperature", condition: "above -18", text: "The cold store is too warm", state: "normal", since: null, ended: null });
  console.log(await standIn.start(Number(port ?? 8090)));
}
