// What the views show and what can be done in them: the page without its looks.

import { carryOut } from "./server/writes.js";
import { Live } from "./server/live.js";
import { ask, currentRun, get, meetRun, query, send } from "./server/api.js";
import { changeOutcome, changeText } from "./state/change_text.js";
import { keepLimits, keptLimits } from "./state/axis_limits.js";
import { keep, kept } from "./state/stored.js";
import { restText } from "./state/listed_symbols.js";
import { Model } from "./state/model.js";
import { keyOf } from "./state/rows.js";
import { newId } from "./state/write_process.js";
import { readClocks } from "./state/server_clock.js";
import { RecipeDesk } from "./recipe_desk.js";
import { readAddress, SERIES_LIMIT, VIEWS, writeAddress } from "./state/view_address.js";

const KEEP_DELAY = 250; // ms
export const VALUES_LIMIT = 2000; // that are put into the table at a time
const REFRESH_PAUSE = 1000; // ms before a question that failed is asked again

export class Panel {
  constructor(changed) {
    this.changed = changed;
    this.model = new Model(changed);
    this.live = new Live(this.model, () => this.#askSession());
    this.view = readAddress(location.hash || kept("view") || "");
    this.recipes = new RecipeDesk(this);
    this.axes = keptLimits(); // of the trend
    this.dialog = null; // {name, …}
    this.notice = null; // a sentence for whoever looks, or listens
    this.outcomes = []; // that stay until somebody closes them: {id, process} of writes, {id, text} of others
    this.needsLogin = false;
    this.started = false;
    this.refreshes = 0; // how often refresh() has begun: an answer that was overtaken counts no more
    // Where there is no room for the tree beside what is chosen in it.
    this.treesOpen = { values: this.view.chosen.length === 0, trend: false };
  }

  start() {
    addEventListener("hashchange", () => this.#followAddress());
    this.model.listeners.add({
      begin: () => this.refresh(),
      gap: (plc) => plc === null && this.#dropAnswers(),
    });
    this.#keepView();
    this.#choose();
    this.#askSession();
  }

  // Views

  // Those that there are for who looks.
  get views() {
    const hasAudit = this.model.hasRole("engineer") && this.model.session.audit;
    return VIEWS.filter((view) => view !== "audit" || hasAudit);
  }

  show(changes) {
    const before = this.view;
    this.view = { ...this.view, ...changes };
    // While somebody pans there are hundreds of views a second; the last one is kept.
    clearTimeout(this.keepTimer);
    if (this.view.view === before.view) this.keepTimer = setTimeout(() => this.#keepView(), KEEP_DELAY);
    else this.#keepView();
    if (this.view.chosen !== before.chosen || this.view.series !== before.series) this.#choose();
    this.changed();
  }

  isChosen(name) {
    return this.view.chosen.some((one) => keyOf(one) === keyOf(name));
  }

  add(names) {
    const added = names.filter((name) => !this.isChosen(name));
    if (added.length) this.show({ chosen: [...this.view.chosen, ...added] });
  }

  remove(names) {
    const keys = new Set(names.map(keyOf));
    this.show({ chosen: this.view.chosen.filter((one) => !keys.has(keyOf(one))) });
  }

  isDrawn(name) {
    return this.view.series.some((one) => keyOf(one) === keyOf(name));
  }

  // Into the trend or out of it.
  toggleSeries({ plc, label }) {
    if (this.isDrawn({ plc, label })) {
      this.show({ series: this.view.series.filter((one) => keyOf(one) !== keyOf({ plc, label })) });
    } else if (this.view.series.length >= SERIES_LIMIT) {
      this.tell(`The trend shows at most ${SERIES_LIMIT} values; take one out first.`);
    } else {
      this.show({ series: [...this.view.series, { plc, label }] });
      this.tell(`${label} is in the trend.`);
    }
  }

  limitAxes(limits) {
    this.axes = limits;
    keepLimits(limits);
    this.changed();
  }

  open(dialog) {
    this.dialog = dialog;
    this.changed();
  }

  get treeOpen() {
    return this.treesOpen[this.view.view] === true;
  }

  openTree(open) {
    this.treesOpen[this.view.view] = open;
    this.changed();
  }

  close() {
    this.open(null);
  }

  tell(text) {
    this.notice = { text, at: performance.now() };
    this.changed();
  }

  // A sentence that stays until somebody closes it.
  keep(text) {
    this.#keep({ id: newId(), text });
  }

  // What the answer to a change tells; see changeText(). What is not done stays to be read.
  tellChange(status, body, texts) {
    const text = changeText(status, body, texts);
    if (changeOutcome(status) === "done") this.tell(text);
    else this.keep(text);
  }

  #keep(outcome) {
    this.outcomes = [...this.outcomes, outcome];
    this.changed();
  }

  // Values

  rowsOf(names) {
    return names.map((name) => this.model.rows.get(keyOf(name))).filter(Boolean);
  }

  mark(row) {
    return this.model.mark(row, readClocks());
  }

  age(row) {
    return this.model.age(row, readClocks());
  }

  now() {
    return this.model.clock.now(readClocks());
  }

  isHeard() {
    return this.model.clock.isHeard(readClocks());
  }

  knowsAlarms() {
    return this.model.knowsAlarms(readClocks());
  }

  resetExtremes(rows) {
    for (const row of rows) row.forgetExtremes(this.now());
    this.changed();
  }

  // All values below a node of the tree, at most VALUES_LIMIT of them.
  async valuesBelow(plc, symbol) {
    if (symbol.kind === "value") return [{ plc, label: symbol.label }];
    const limit = VALUES_LIMIT;
    const found = [];
    const waiting = [symbol.label];
    while (waiting.length && found.length < limit) {
      const under = waiting.shift();
      const { symbols, complete } = await get(`/symbols${query({ plc, under })}`);
      if (!complete) this.tell(restText(under, symbols.length));
      for (const one of symbols) {
        if (one.kind === "value") found.push({ plc, label: one.label });
        else waiting.push(one.label);
      }
    }
    return found.slice(0, limit);
  }

  // Writes the value that was confirmed in the dialog; told elsewhere too when the dialog has gone.
  async write(process) {
    if (!process.confirm(currentRun())) return;
    this.changed();
    await carryOut(process, this.changed);
    if (this.dialog?.process !== process) {
      this.#keep({ id: process.id, process });
    }
  }

  // The server

  async login(user, password) {
    this.#takeSession(await send("POST", "/session", { user, password }));
    this.#begin();
    this.changed();
  }

  async logout() {
    const { status, body } = await ask("DELETE", "/session");
    if (![204, 401].includes(status)) {
      this.tellChange(status, body, { done: "", failed: "Not logged out", unknown: "Whether you are logged out is not known" });
    }
    await this.#askSession();
  }

  async #askSession() {
    try {
      this.#takeSession(await get("/session"));
    } catch {
      setTimeout(() => this.#askSession(), 1000);
      return this.changed();
    }
    if (!this.needsLogin) this.#begin();
    this.changed();
  }

  #takeSession(session) {
    meetRun(session);
    this.model.session = session;
    this.needsLogin = session.loginRequired && !session.user;
  }

  #begin() {
    if (this.started) return this.live.hurry();
    this.started = true;
    this.live.start();
    this.refresh();
  }

  // Session, PLCs and alarms anew, until they have come: behind a new stream may be another run of the
  // server, with other rights.
  async refresh() {
    const asked = ++this.refreshes;
    clearTimeout(this.refreshTimer);
    try {
      const session = await get("/session");
      if (asked !== this.refreshes) return;
      this.#takeSession(session);
      if (!this.needsLogin) await this.#askPlant(() => asked === this.refreshes);
    } catch (error) {
      if (asked !== this.refreshes) return;
      if (error.status === 401) this.#askSession();
      else this.refreshTimer = setTimeout(() => this.refresh(), REFRESH_PAUSE);
    }
    this.changed();
  }

  // Answers from before the stream broke tell nothing of what is behind it.
  #dropAnswers() {
    ++this.refreshes;
    clearTimeout(this.refreshTimer);
  }

  async #askPlant(isWanted) {
    let { asked } = this.model;
    const { plcs } = await get("/plcs");
    if (isWanted()) this.model.setPlcs(plcs, asked);
    ({ asked } = this.model);
    const { alarms } = await get("/alarms");
    if (isWanted()) this.model.setAlarms(alarms, asked);
  }

  // Address and choice

  #choose() {
    const names = [...this.view.chosen, ...this.view.series];
    this.model.choose(names, this.now() ?? Date.now());
    this.live.want([...this.model.rows.values()].map(({ plc, label }) => ({ plc, label })));
  }

  #keepView() {
    const address = writeAddress(this.view);
    keep("view", address);
    if (location.hash === address) return;
    const isOther = readAddress(location.hash).view !== this.view.view;
    history[isOther && location.hash ? "pushState" : "replaceState"](null, "", address);
  }

  #followAddress() {
    clearTimeout(this.keepTimer);
    if (location.hash === writeAddress(this.view)) return;
    this.view = readAddress(location.hash);
    this.#choose();
    this.changed();
  }
}
