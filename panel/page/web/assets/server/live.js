// Keeps the stream of events of the values that are wanted: subscribes, listens, and begins anew
// when the stream breaks, falls silent or brings what is old.

import { ROOT_PATH, request, Unreachable } from "./api.js";
import { takePlace } from "./tab_place.js";
import { lapseOf, readClocks } from "../state/server_clock.js";

const CHECK_INTERVAL = 500; // ms
const FIRST_PAUSE = 500; // ms before another attempt; doubled up to the longest
const LONGEST_PAUSE = 4000;
const HELLO_LIMIT = 5000; // ms for a stream to begin
const NO_PLACE = "Five tabs of this browser show this panel already, which is as many as it can. Close one of them.";
const EVENTS = ["values", "link", "alarm", "tick"];

export class Live {
  #wanted = [];
  #attempt = null; // {names, id, source, asked}: the stream that is being opened
  #current = null; // the one that is heard
  #pause = FIRST_PAUSE;
  #timer = null;
  #isStarted = false;

  // model: what the events are told to (see state/model.js); denied(): a login is needed.
  constructor(model, denied) {
    this.model = model;
    this.denied = denied;
  }

  start() {
    this.#isStarted = true;
    setInterval(() => this.#check(), CHECK_INTERVAL);
    document.addEventListener("visibilitychange", () => this.#check());
    this.#begin();
  }

  // The values to be told of from now on: [{plc, label}].
  want(names) {
    this.#wanted = names;
    if (this.#isStarted) this.#schedule(50);
  }

  // Now, without the pause after failures.
  hurry() {
    this.#pause = FIRST_PAUSE;
    this.#schedule(0);
  }

  #schedule(delay) {
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => this.#begin(), delay);
  }

  async #begin() {
    this.#drop(this.#attempt);
    const attempt = { names: this.#wanted, id: null, source: null, asked: readClocks() };
    this.#attempt = attempt;
    try {
      if (!(await takePlace())) throw new Error(NO_PLACE);
      if (attempt.names.length > 0) await this.#subscribe(attempt);
    } catch (error) {
      if (attempt === this.#attempt) this.#fail(attempt, error);
      return;
    }
    if (attempt === this.#attempt) this.#listen(attempt);
    else this.#drop(attempt);
  }

  async #subscribe(attempt) {
    const { status, body } = await request("POST", "/subscriptions", { values: attempt.names });
    if (status === 401) this.denied();
    if (status !== 201) throw new Error(body?.error ?? `The server answered ${status}.`);
    attempt.id = body.id;
    attempt.described = body.values;
  }

  #listen(attempt) {
    const of = attempt.id === null ? "" : `?subscription=${encodeURIComponent(attempt.id)}`;
    attempt.asked = readClocks();
    attempt.source = new EventSource(`${ROOT_PATH}/events${of}`);
    attempt.source.onerror = () => this.#fail(attempt, null);
    attempt.source.addEventListener("hello", (event) => this.#hello(attempt, JSON.parse(event.data)));
    for (const name of EVENTS) {
      attempt.source.addEventListener(name, (event) => {
        if (attempt === this.#current) this.#hear(attempt, name, JSON.parse(event.data));
      });
    }
  }

  #hello(attempt, event) {
    if (attempt !== this.#attempt) return;
    this.#drop(this.#current);
    this.#current = attempt;
    this.#attempt = null;
    this.#pause = FIRST_PAUSE;
    const timely = this.model.begin(event, attempt.names, attempt.described ?? [], readClocks(), attempt.asked);
    if (!timely) this.#fail(attempt, null);
  }

  #hear(attempt, name, event) {
    if (!this.model.hear(name, event, readClocks())) this.#fail(attempt, null);
  }

  // The stream is of no use any more.
  #fail(attempt, error) {
    if (attempt !== this.#attempt && attempt !== this.#current) return;
    if (attempt === this.#current) {
      this.#current = null;
      this.model.lose();
    }
    if (attempt === this.#attempt) this.#attempt = null;
    this.#drop(attempt);
    this.model.tellTrouble(error instanceof Unreachable ? null : error?.message);
    this.#probe();
    this.#schedule(this.#pause);
    this.#pause = Math.min(LONGEST_PAUSE, 2 * this.#pause);
  }

  // Why it broke: a stream that was refused does not say so itself.
  async #probe() {
    try {
      const { status, body } = await request("GET", "/session");
      if (status === 200 && body.loginRequired && !body.user) this.denied();
    } catch {
      // Not reached: the next attempt will tell.
    }
  }

  #check() {
    const reading = readClocks();
    if (this.#current && !this.model.clock.isHeard(reading)) this.#fail(this.#current, null);
    if (this.#attempt?.source && lapseOf(reading, this.#attempt.asked) > HELLO_LIMIT) {
      this.#fail(this.#attempt, null);
    }
    this.model.changed();
  }

  #drop(attempt) {
    if (!attempt) return;
    attempt.source?.close();
    if (attempt === this.#current) this.#current = null;
    if (attempt.id !== null) {
      request("DELETE", `/subscriptions/${encodeURIComponent(attempt.id)}`).catch(() => {});
      attempt.id = null;
    }
  }
}
