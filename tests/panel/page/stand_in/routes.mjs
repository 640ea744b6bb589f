// The routes of the stand-in.

import { now } from "./clock.mjs";
import { historyOf } from "./past.mjs";

const ROOT = "/api/v1";

export function answer(standIn, request, url, body, response) {
  const { method } = request;
  const path = url.pathname.startsWith(ROOT) ? url.pathname.slice(ROOT.length) : "";
  const tell = (status, value) => {
    response.writeHead(status, { "Content-Type": "application/json", "Cache-Control": "no-store" });
    response.end(value === undefined ? "" : JSON.stringify(value));
  };
  const [, first, second, third] = path.split("/").map(decodeURIComponent);
  const { session } = standIn;
  if (first !== "session" && session.loginRequired && !session.user) return tell(401, { error: "Log in first." });
  const route = ROUTES[`${method} ${[first, second && "*", third].filter(Boolean).join("/")}`];
  if (!route) return tell(404, { error: `There is nothing at ${url.pathname}.` });
  // What was meant for another run is not done.
  const meant = request.headers["panel-instance"];
  if (method !== "GET" && meant !== undefined && meant !== standIn.instance && !/subscriptions|session/.test(first)) {
    return tell(412, { error: "The panel was started again meanwhile." });
  }
  return route({ standIn, url, body, response, tell, name: second, fields: url.searchParams });
}

const sessionOf = (standIn) => ({ ...standIn.session, audit: standIn.audit !== null, instance: standIn.instance, time: now() });

const missingLabels = (plant, fields) => fields.getAll("label").filter((label) => !plant.values.has(label));

const ROUTES = {
  "GET session": ({ standIn, tell }) => tell(200, sessionOf(standIn)),
  "POST session": ({ standIn, tell, body }) => {
    if (body.password !== "milk") return tell(401, { error: "User or password is wrong." });
    Object.assign(standIn.session, { user: body.user, role: "operator" });
    tell(200, sessionOf(standIn));
  },
  "DELETE session": ({ standIn, tell }) => {
    Object.assign(standIn.session, { user: null, role: null });
    tell(204);
  },
  "GET plcs": ({ standIn, tell }) =>
    tell(200, {
      time: now(),
      plcs: [...standIn.plants.values()].map(({ name, title, values }) => ({
        name, title, address: "127.0.0.1:1200", readOnly: false, link: standIn.linkOf(name), values: values.size, passTime: 40,
      })),
    }),
  "GET symbols": ({ standIn, tell, fields }) => {
    const plant = standIn.plants.get(fields.get("plc"));
    const words = fields.get("search")?.toLowerCase().split(/\s+/);
    if (words) {
      const found = [...plant.nodes.values()].map(({ symbol }) => symbol).filter((symbol) =>
        symbol.kind !== "scope" && words.every((word) => `${symbol.label} ${symbol.description}`.toLowerCase().includes(word)));
      const limit = Number(fields.get("limit") ?? 200);
      return tell(200, { complete: found.length <= limit, symbols: found.slice(0, limit) });
    }
    const under = fields.get("under") ?? "";
    tell(200, { under, complete: true, symbols: under ? plant.nodes.get(under).children : plant.roots });
  },
  "POST subscriptions": ({ standIn, tell, body }) => {
    const id = `s${standIn.subscriptions.size + 1}`;
    standIn.subscriptions.set(id, body.values);
    tell(201, { id, values: body.values.map(({ plc, label }) => {
      const symbol = standIn.plants.get(plc)?.nodes.get(label)?.symbol;
      return symbol ? { plc, ...symbol } : { plc, label, error: `${label} is no label of ${plc}.` };
    }) });
  },
  "DELETE subscriptions/*": ({ standIn, tell, name }) => {
    standIn.subscriptions.delete(name);
    tell(204);
  },
  "GET events": ({ standIn, tell, response, fields }) => {
    const id = fields.get("subscription");
    if (id && !standIn.subscriptions.has(id)) return tell(404, { error: "No such subscription." });
    standIn.streams.add(response, id, standIn.subscriptions.get(id) ?? []);
  },
  "POST writes": ({ standIn, tell, body, response }) => {
    // Browsers repeat a request by themselves when its connection breaks.
    if (standIn.writes.has(body.id)) return tell(200, standIn.writes.get(body.id));
    standIn.sent.push(body);
    const outcome = write(standIn, body);
    standIn.writes.set(body.id, { outcome: "pending" });
    setTimeout(() => {
      standIn.writes.set(body.id, outcome);
      if (!standIn.faults.losesAnswer) tell(200, outcome);
    }, standIn.faults.delay).unref();
    if (standIn.faults.losesAnswer) setTimeout(() => response.destroy(), 200);
  },
  "GET writes/*": ({ standIn, tell, name }) =>
    standIn.writes.has(name) ? tell(200, standIn.writes.get(name)) : tell(404, { error: "No such write." }),
  "GET history": ({ standIn, tell, fields }) => {
    const plant = standIn.plants.get(fields.get("plc"));
    if (!plant) return tell(404, { error: `there is no PLC "${fields.get("plc")}", and none of this name was recorded` });
    const labels = missingLabels(plant, fields);
    if (labels.length > 0) return tell(404, { error: `${labels[0]}: there is no such thing`, labels });
    const answer = historyOf(plant, fields);
    standIn.answered = answer.series;
    tell(200, answer);
  },
  "GET history.csv": ({ standIn, tell, fields, response }) => {
    const { history } = standIn.faults;
    if (history) return tell(history, { error: `Fault ${history}.` });
    const labels = missingLabels(standIn.plants.get(fields.get("plc")), fields);
    if (labels.length > 0) return tell(404, { error: `${labels[0]}: there is no such thing`, labels });
    response.writeHead(200, { "Content-Type": "text/csv" });
    const lines = fields.getAll("label").map((label) => `2026-01-01T00:00:00.000Z,${fields.get("plc")},${label},1,,good\r\n`);
    response.end(`time,plc,label,value,unit,quality\r\n${lines.join("")}`);
  },
  "GET alarms": ({ standIn, tell }) => tell(200, { alarms: [...standIn.alarms.values()] }),
  "GET alarms/*": ({ standIn, tell }) => tell(200, { alarms: standIn.recorded ?? [...standIn.alarms.values()].filter((alarm) => alarm.ended) }),
  "POST alarms/*/acknowledge": ({ standIn, tell, name, body }) => {
    const alarm = standIn.alarms.get(name);
    if (!alarm || alarm.since !== body.since) return tell(409, { error: "That occurrence is over." });
    standIn.setAlarm({ ...alarm, acknowledgedBy: standIn.session.user ?? "local", acknowledgedAt: now() });
    tell(200, standIn.alarms.get(name));
  },
  "GET audit": ({ standIn, tell, fields }) => {
    const { audit } = standIn;
    if (!audit) return tell(404, { error: "there is no audit; see --audit" });
    const from = Number(fields.get("from"));
    const first = from < 0 ? Math.max(0, audit.length + from) : from;
    const lines = audit.slice(first, first + Number(fields.get("limit")));
    tell(200, { total: audit.length, intact: !standIn.flaw, flaw: standIn.flaw, head: "ab12", lines });
  },
  "GET recipes": ({ standIn, tell }) =>
    tell(200, { recipes: [...standIn.recipes].map(([name, recipe]) => ({ name, plc: recipe.plc, values: recipe.values.length, savedAt: recipe.savedAt, savedBy: "local" })) }),
  "PUT recipes/*": async ({ standIn, tell, name, body }) => {
    const plant = standIn.plants.get(body.plc);
    await standIn.faults.gate;
    if (standIn.faults.save) return tell(standIn.faults.save, { error: `Fault ${standIn.faults.save}.` });
    standIn.recipes.set(name, { plc: body.plc, savedAt: now(), values: body.labels.map((label) => ({ label, saved: plant.valueAt(label, now()) })) });
    tell(200, { name });
  },
  "DELETE recipes/*": ({ standIn, tell, name }) => tell(standIn.recipes.delete(name) ? 204 : 404),
  "GET recipes/*/comparison": ({ standIn, tell, name }) => {
    const { plc, values } = standIn.recipes.get(name);
    const plant = standIn.plants.get(plc);
    tell(200, { values: values.map(({ label, saved }) => {
      const held = plant.valueAt(label, now());
      return { label, saved, now: held, equal: held === saved, type: plant.values.get(label).type };
    }) });
  },
  "POST recipes/*/restore": ({ standIn, tell, name, response }) => {
    const { restore } = standIn.faults;
    standIn.restores++;
    if (restore === "lost") return response.destroy();
    if (restore) return tell(restore, { error: `Fault ${restore}.` });
    setTimeout(() => tell(200, restored(standIn, standIn.recipes.get(name))), standIn.faults.delay);
  },
};

function write(standIn, { id, plc, label, value, old }) {
  const plant = standIn.plants.get(plc);
  const outcome = { id, plc, label, value, old: old ?? null, status: null, reason: "", time: now() };
  if (standIn.links.get(plc).state !== "up") return { ...outcome, outcome: "notSent", reason: "The PLC is not connected." };
  if (label.endsWith("interlock")) return { ...outcome, outcome: "refused", status: 3, reason: "The PLC refused it with status 3: the address is not allowed." };
  plant.written.set(label, value);
  return { ...outcome, outcome: "done" };
}

function restored(standIn, { plc, values }) {
  const plant = standIn.plants.get(plc);
  const report = values.map(({ label, saved }) => {
    const before = plant.valueAt(label, now());
    const { type } = plant.values.get(label);
    if (before === saved) return { label, type, saved, before, after: null, outcome: "notSent", reason: "the PLC has the saved value", equal: true, verified: true };
    const { outcome, reason } = write(standIn, { plc, label, value: saved });
    const isDone = outcome === "done";
    return { label, type, saved, before, after: isDone ? saved : null, outcome, reason, equal: false, verified: isDone ? true : null };
  });
  const count = (...outcomes) => report.filter((one) => !one.equal && outcomes.includes(one.outcome)).length;
  const equal = report.filter((one) => one.equal).length;
  return { values: report, written: count("done"), equal, notWritten: count("refused", "notSent"), notKnown: count("unknown") };
}
