// What restores of recipes tell.

import assert from "node:assert/strict";
import { test } from "node:test";

import { reportText, restoredWord, restoreResult } from "../../../../panel/page/web/assets/state/recipe_result.js";

test("a restore is told as refused only where the server says that nothing was done", () => {
  for (const status of [400, 401, 403, 404, 409]) {
    assert.deepEqual(restoreResult(status, { error: "Why." }), { error: "Not restored: Why." });
  }
  for (const status of [408, 412, 429, 500, 503]) {
    assert.match(restoreResult(status, { error: "Why." }).error, /^Which values were written is not known: Why\. Nothing is sent again/);
  }
  assert.match(restoreResult(null, null).error, /^Which values were written is not known: no answer came\. Nothing is sent again/);
  assert.match(restoreResult(502, null).error, /not known: the server answered 502\./);
});

test("a report tells all of its values", () => {
  const report = { written: 1, equal: 2, notWritten: 3, notKnown: 4, values: [] };
  assert.deepEqual(restoreResult(200, report), { report });
  assert.equal(reportText(report), "1 written, 2 equal, 3 not written, 4 not known.");
});

test("what the PLC had already is equal, and not told as not sent", () => {
  assert.deepEqual(restoredWord({ outcome: "notSent", equal: true }), { name: "equal", word: "equal" });
  assert.deepEqual(restoredWord({ outcome: "notSent", equal: false }), { name: "notSent", word: "not sent" });
  assert.deepEqual(restoredWord({ outcome: "done", equal: false }), { name: "done", word: "done" });
});
