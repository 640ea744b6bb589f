// One write, from the dialog to its outcome. A write is sent once: when its answer is lost the server
// is asked what became of it, and what cannot be learnt is told as not known. Browsers repeat a request
// by themselves when a connection breaks before its answer; by the id the server knows it again, and may
// answer that the outcome is pending.
//
//   editing -> asking -> sending -> over
//                ^  |        |       ^
//                +--+        v       |
//              (back)     missing ---+

import { changeOutcome } from "./change_text.js";

export const OUTCOMES = {
  done: { word: "done", text: "The PLC has taken the value." },
  refused: { word: "refused", text: "The PLC has refused the value." },
  unknown: { word: "not known", text: "Whether the PLC has taken the value is not known. Look at the value." },
  notSent: { word: "not sent", text: "Nothing was sent to the PLC." },
};

export const MISSING_LIMIT = 20000; // ms for which the server is asked what became of a write

export class WriteProcess {
  constructor({ id, plc, label, type, unit }) {
    Object.assign(this, { id, plc, label, type, unit });
    this.state = "editing";
    this.value = null;
    this.outcome = null; // {outcome, status, reason, time}
    this.askedSince = null;
    this.run = null; // of the server, that was asked to write
  }

  // The value that was typed is to be confirmed.
  propose(value) {
    if (this.state !== "editing") return false;
    this.value = value;
    this.old = undefined;
    this.state = "asking";
    return true;
  }

  // The question stands on the screen beside this value; undefined: it is not fresh. What was shown
  // last when somebody confirms is what they saw.
  show(old) {
    if (this.state === "asking") this.old = old;
  }

  back() {
    if (this.state !== "asking") return false;
    this.state = "editing";
    return true;
  }

  // True exactly once: who gets it sends request() to this run of the server and to no other.
  confirm(run = null) {
    if (this.state !== "asking") return false;
    this.run = run;
    this.state = "sending";
    return true;
  }

  request() {
    const { id, plc, label, value } = this;
    return this.old === undefined ? { id, plc, label, value } : { id, plc, label, value, old: this.old };
  }

  // The server answered the request, or the question for its outcome.
  answered(status, body, now) {
    if (this.state === "over") return;
    if (status === 200 && OUTCOMES[body?.outcome]) return this.#end(body);
    if (this.state === "sending" && status === 200 && body?.outcome === "pending") return this.lost(now);
    if (this.state === "sending") return this.#requestRefused(status, body, now);
    if (status === 404 && this.refusal) {
      this.#end({ outcome: "notSent", reason: this.refusal });
    } else if (status === 404) {
      // It came never, or came to a server that has begun anew since and may have passed it on.
      this.#end({ outcome: "unknown", reason: "The server does not know of this write; it may have been restarted." });
    } else if (this.hasAskedLongEnough(now)) {
      this.#end({ outcome: "unknown", reason: body?.error ?? "The server has not told the outcome in time." });
    }
  }

  #requestRefused(status, body, now) {
    const reason = body?.error ?? `The server answered ${status}.`;
    // Another run of the server may have passed the write on, and may not.
    if (status === 412) return this.#end({ outcome: "unknown", reason });
    // So may what came before it, when the browser has repeated the request.
    if (status === 429) {
      this.refusal = reason;
      return this.lost(now);
    }
    if (changeOutcome(status) === "failed") this.#end({ outcome: "notSent", reason });
    else this.lost(now);
  }

  // No answer came.
  lost(now) {
    if (this.state === "sending") {
      this.state = "missing";
      this.askedSince = now;
    } else if (this.state === "missing" && this.hasAskedLongEnough(now)) {
      this.#end({ outcome: "unknown", reason: "The server does not answer." });
    }
  }

  hasAskedLongEnough(now) {
    return now - this.askedSince >= MISSING_LIMIT;
  }

  #end(outcome) {
    this.state = "over";
    this.outcome = outcome;
  }
}

// 128 random bits. crypto.randomUUID() is missing where a page came without TLS.
export function newId() {
  return Array.from(crypto.getRandomValues(new Uint8Array(16)), (byte) => byte.toString(16).padStart(2, "0")).join("");
}

// "refused (16#0003): The PLC …"; number and words of an outcome.
export function outcomeText({ outcome, status, reason }) {
  const { word, text } = OUTCOMES[outcome] ?? OUTCOMES.unknown;
  return { word, text: reason || text, status: status ?? null };
}
