// Alarms that were recorded, as they are now, and what answers to changes tell.

import assert from "node:assert/strict";
import { test } from "node:test";

import { changeText } from "../../../../panel/page/web/assets/state/change_text.js";
import { occurrenceNow } from "../../../../panel/page/web/assets/state/alarm_list.js";

const recorded = { id: "1", state: "active", since: 1000, ended: null, acknowledgedBy: null, acknowledgedAt: null };

test("an occurrence without an end is active only while its alarm is told to be so", () => {
  assert.equal(occurrenceNow(recorded, recorded, true).state, "active");
  const over = { ...recorded, state: "ended", ended: 2000 };
  assert.deepEqual(occurrenceNow(recorded, over, true), over);
  assert.equal(occurrenceNow(recorded, { ...recorded, state: "normal", since: null }, true).state, "ended");
  assert.equal(occurrenceNow(recorded, { ...recorded, since: 5000 }, true).state, "ended");
});

test("whether an occurrence lasts is not known while its alarm is not", () => {
  assert.equal(occurrenceNow(recorded, recorded, false).state, "unknown");
  assert.equal(occurrenceNow(recorded, undefined, true).state, "unknown");
  assert.equal(occurrenceNow(recorded, { ...recorded, state: "unknown", since: null }, true).state, "unknown");
});

test("an occurrence that has ended stays so whatever is known now", () => {
  const over = { ...recorded, ended: 2000 };
  assert.equal(occurrenceNow(over, undefined, false).state, "ended");
  assert.equal(occurrenceNow(over, recorded, true).ended, 2000);
});

test("only what the server says that it has not done is told as not done", () => {
  const texts = { done: "D", failed: "F", unknown: "U" };
  assert.equal(changeText(204, null, texts), "D");
  for (const status of [400, 401, 403, 404, 405, 409, 413, 415, 421]) {
    assert.equal(changeText(status, { error: "why" }, texts), "F: why");
  }
  for (const status of [408, 412, 429, 500, 503]) assert.equal(changeText(status, { error: "why" }, texts), "U: why");
  assert.equal(changeText(null, null, texts), "U: the server does not answer.");
});
