// A write is sent once, and its outcome is what the PLC told or not known.

import assert from "node:assert/strict";
import { test } from "node:test";

import { MISSING_LIMIT, newId, outcomeText, WriteProcess } from "../../../../panel/page/web/assets/state/write_process.js";

const proposed = (old = 20) => {
  const process = new WriteProcess({ id: "a1", plc: "dairy", label: "Plant.mode", type: "INT", unit: "" });
  assert.equal(process.propose(3), true);
  process.show(old);
  return process;
};
const sent = () => {
  const process = proposed();
  assert.equal(process.confirm(), true);
  return process;
};

test("nothing is sent before it was confirmed", () => {
  const process = new WriteProcess({ id: "a1", plc: "dairy", label: "Plant.mode" });
  assert.equal(process.confirm(), false);
  process.propose(3);
  process.back();
  assert.equal(process.confirm(), false);
});

test("a second press sends nothing", () => {
  const process = sent();
  assert.equal(process.confirm(), false);
  process.lost(0);
  assert.equal(process.confirm(), false);
  process.answered(200, { outcome: "done" }, 0);
  assert.equal(process.confirm(), false);
  assert.equal(process.propose(4), false);
});

test("the request has the value that stood beside the question last, if it was fresh", () => {
  assert.deepEqual(proposed(20).request(), { id: "a1", plc: "dairy", label: "Plant.mode", value: 3, old: 20 });
  const stale = new WriteProcess({ id: "a1", plc: "dairy", label: "Plant.mode" });
  stale.propose(3);
  assert.deepEqual(stale.request(), { id: "a1", plc: "dairy", label: "Plant.mode", value: 3 });
  const moving = proposed(20);
  moving.show(21);
  assert.equal(moving.request().old, 21);
  moving.show(undefined);
  assert.equal("old" in moving.request(), false);
  moving.show(22);
  moving.confirm();
  moving.show(23);
  assert.equal(moving.request().old, 22);
});

test("what was seen beside a question that was left counts no more", () => {
  const process = proposed(20);
  process.back();
  process.propose(4);
  assert.equal("old" in process.request(), false);
});

test("a write is meant for the run of the server that was there when it was confirmed", () => {
  const process = proposed();
  process.confirm("run 1");
  process.confirm("run 2");
  assert.equal(process.run, "run 1");
});

test("the outcome is the one of the PLC", () => {
  for (const outcome of ["done", "refused", "unknown", "notSent"]) {
    const process = sent();
    process.answered(200, { outcome, status: 3, reason: "because" }, 0);
    assert.equal(process.state, "over");
    assert.equal(process.outcome.outcome, outcome);
  }
});

test("what another run of the server may have done is not known", () => {
  const process = sent();
  process.answered(412, { error: "the panel was started again meanwhile" }, 0);
  assert.equal(process.state, "over");
  assert.deepEqual(process.outcome, { outcome: "unknown", reason: "the panel was started again meanwhile" });
});

test("a request that came too often is asked for, since the browser may have repeated it", () => {
  const first = sent();
  first.answered(429, { error: "too often; wait a little" }, 0);
  assert.equal(first.state, "missing");
  first.answered(200, { outcome: "done" }, 1000);
  assert.equal(first.outcome.outcome, "done");
  const none = sent();
  none.answered(429, { error: "too often; wait a little" }, 0);
  none.answered(404, { error: "there is no write of this id" }, 1000);
  assert.deepEqual(none.outcome, { outcome: "notSent", reason: "too often; wait a little" });
});

test("a request that the server refused was not sent to the PLC", () => {
  for (const status of [400, 401, 403, 409]) {
    const process = sent();
    process.answered(status, { error: "Not so." }, 0);
    assert.equal(process.outcome.outcome, "notSent");
    assert.equal(process.outcome.reason, "Not so.");
  }
});

test("after a lost answer or a fault of the server it is asked what became of the write", () => {
  const broken = sent();
  broken.lost(0);
  assert.equal(broken.state, "missing");
  broken.answered(200, { outcome: "pending" }, 1000);
  assert.equal(broken.state, "missing");
  broken.answered(200, { outcome: "refused", status: 3 }, 2000);
  assert.equal(broken.outcome.outcome, "refused");
  for (const status of [408, 410, 500, 503]) {
    const faulty = sent();
    faulty.answered(status, null, 0);
    assert.equal(faulty.state, "missing");
  }
});

test("a request that the browser repeated is pending until the first one's outcome is there", () => {
  const process = sent();
  process.answered(200, { outcome: "pending" }, 0);
  assert.equal(process.state, "missing");
  process.answered(200, { outcome: "done" }, 1000);
  assert.equal(process.outcome.outcome, "done");
});

test("a server that does not know the write may have passed it on: not known", () => {
  const process = sent();
  process.lost(0);
  process.answered(404, { error: "No such write." }, 1000);
  assert.equal(process.outcome.outcome, "unknown");
});

test("who never answers leaves the outcome unknown", () => {
  const process = sent();
  process.lost(0);
  process.lost(MISSING_LIMIT - 1);
  assert.equal(process.state, "missing");
  process.lost(MISSING_LIMIT);
  assert.equal(process.outcome.outcome, "unknown");
  const pending = sent();
  pending.lost(0);
  pending.answered(200, { outcome: "pending" }, MISSING_LIMIT);
  assert.equal(pending.outcome.outcome, "unknown");
});

test("an answer that comes late changes nothing", () => {
  const process = sent();
  process.answered(200, { outcome: "refused", status: 3 }, 0);
  process.answered(200, { outcome: "done" }, 1);
  process.lost(2);
  assert.equal(process.outcome.outcome, "refused");
});

test("an outcome has a word, the server's sentence and its number", () => {
  assert.deepEqual(outcomeText({ outcome: "refused", status: 3, reason: "Not allowed." }), { word: "refused", text: "Not allowed.", status: 3 });
  assert.equal(outcomeText({ outcome: "done", reason: "" }).text, "The PLC has taken the value.");
  assert.equal(outcomeText({ outcome: "what?" }).word, "not known");
});

test("ids differ and fit", () => {
  assert.match(newId(), /^[0-9a-f]{32}$/);
  assert.notEqual(newId(), newId());
});
