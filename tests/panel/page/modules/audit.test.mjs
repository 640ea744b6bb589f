// What lines of the audit tell, and which of them a page shows.

import assert from "node:assert/strict";
import { test } from "node:test";

import { lineOf, pageBefore, placeOf } from "../../../../panel/page/web/assets/state/audit_lines.js";

const AT = "2026-11-22T16:04:30.600Z";
const record = { time: AT, action: "write", phase: "outcome", user: "erna", address: "10.1.2.3", plc: "dairy", label: "Plant.mode", old: "2", seen: "2", new: "3", id: "a", outcome: "done", reason: "", n: 3, previous: "00" };
const of = (changes) => lineOf(JSON.stringify({ ...record, ...changes }));

test("a line of an outcome tells who has changed what, and how it ended", () => {
  assert.deepEqual(of({}), {
    time: Date.parse(AT), user: "erna", address: "10.1.2.3", action: "write", plc: "dairy", label: "Plant.mode",
    old: "2", seen: "2", next: "3", outcome: "done", word: "done", reason: "",
  });
  assert.equal(of({ outcome: "unknown" }).word, "not known");
  assert.equal(of({ outcome: "notSent" }).word, "not sent");
  assert.equal(of({ outcome: "notDone" }).word, "not done");
  assert.equal(of({ outcome: "locked" }).word, "locked");
});

test("what was only asked for is told as such and not as done", () => {
  assert.equal(of({ phase: "requested", outcome: "" }).word, "asked for");
});

test("lines that hold the chain together have a note", () => {
  assert.equal(lineOf(JSON.stringify({ time: AT, audit: "new", n: 0, previous: "00" })).note, "the audit begins");
  assert.equal(lineOf(JSON.stringify({ time: AT, audit: "continued", n: 9, previous: "00" })).note, "goes on from the file before");
  assert.equal(lineOf(JSON.stringify({ time: AT, cut: "ab", n: 9, previous: "00" })).note, "the line before was cut off");
});

test("what is no line of an audit is shown as it stands", () => {
  for (const text of ['{"time":"2026-', "7", "null", '{"time":"never"}']) assert.equal(lineOf(text).note, `no line of an audit: ${text}`);
});

test("a page has a hundred lines, the last one what is left", () => {
  assert.deepEqual(pageBefore(null), { from: -100, limit: 100 });
  assert.deepEqual(pageBefore(250), { from: 150, limit: 100 });
  assert.deepEqual(pageBefore(50), { from: 0, limit: 50 });
});

test("an answer tells which lines it has", () => {
  const lines = (count) => Array.from({ length: count }, () => "");
  assert.deepEqual(placeOf(pageBefore(null), { total: 250, lines: lines(100) }), { first: 150, end: 250 });
  assert.deepEqual(placeOf(pageBefore(null), { total: 7, lines: lines(7) }), { first: 0, end: 7 });
  assert.deepEqual(placeOf(pageBefore(150), { total: 260, lines: lines(100) }), { first: 50, end: 150 });
});
