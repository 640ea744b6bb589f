// What events of the server make of the page's knowledge.

import assert from "node:assert/strict";
import { test } from "node:test";

import { Model } from "../../../../panel/page/web/assets/state/model.js";

const START = 1000000; // ms of the server
const at = (offset) => ({ wall: 5000 + offset, steady: offset });

function connected() {
  const model = new Model();
  const names = [{ plc: "dairy", label: "Plant.mode" }, { plc: "dairy", label: "Plant.none" }];
  model.choose(names, START);
  model.setPlcs([{ name: "dairy", readOnly: false, link: { state: "up", since: START - 5000 } }]);
  model.session = { role: "operator", readOnly: false };
  model.begin({ time: START }, names, [{ type: "INT", unit: "bar", writable: true }, { error: "There is no such label." }], at(0), 0);
  const [row, missing] = [...model.rows.values()];
  return { model, row, missing };
}
const values = (rows, confirmed = null, time = START) => ({ time, plc: "dairy", confirmed, rows });

test("a value is shown only when it came", () => {
  const { model, row, missing } = connected();
  assert.equal(model.mark(row, at(0)), "unread");
  assert.equal(model.mark(missing, at(0)), "wrong");
  model.hear("values", values([[0, 7, "g", START - 100]]), at(0));
  assert.equal(row.value, 7);
  assert.equal(model.mark(row, at(0)), "fresh");
  assert.equal(model.age(row, at(0)), 100);
});

test("values that did not change become no older while the PLC confirms them", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]]), at(0));
  model.hear("values", values([], START + 900, START + 1000), at(1000));
  assert.equal(model.age(row, at(1000)), 100);
});

test("silence of three seconds makes everything not known", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]]), at(0));
  assert.equal(model.mark(row, at(3000)), "fresh");
  assert.equal(model.mark(row, at(3001)), "unknown");
});

test("a lost link shows at once, and the line has a gap", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]]), at(0));
  model.hear("link", { time: START + 500, plc: "dairy", state: "down", since: START + 500, reason: "no answer" }, at(500));
  assert.equal(model.mark(row, at(500)), "lost");
  assert.deepEqual(row.trace.numbers, [7, NaN]);
});

test("a link that came back before its values were asked for shows none of them as fresh", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]], START), at(0));
  model.hear("link", { time: START + 500, plc: "dairy", state: "down", since: START + 500 }, at(500));
  model.hear("link", { time: START + 900, plc: "dairy", state: "up", since: START + 900 }, at(900));
  assert.equal(model.mark(row, at(900)), "stale");
  model.hear("values", values([], START + 1000, START + 1100), at(1100));
  assert.equal(model.mark(row, at(1100)), "fresh");
  assert.deepEqual(row.trace.numbers, [7, NaN, 7]);
});

test("an event from before a sleep changes nothing", () => {
  const { model, row } = connected();
  assert.equal(model.hear("values", values([[0, 7, "g", START]]), at(600000)), false);
  assert.equal(row.value, null);
});

test("minimum and maximum are those of good values since they were chosen or reset", () => {
  const { model, row } = connected();
  for (const [value, quality] of [[5, "g"], [9, "g"], [100, "s"], [-100, "b"], [7, "g"]]) {
    model.hear("values", values([[0, value, quality, START]]), at(0));
  }
  assert.deepEqual([row.minimum, row.maximum], [5, 9]);
  row.forgetExtremes(START);
  assert.deepEqual([row.minimum, row.maximum], [7, 7]);
});

test("a value that is taken out and chosen again begins anew", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]]), at(0));
  model.choose([], START);
  model.choose([{ plc: "dairy", label: "Plant.mode" }], START);
  const again = model.rows.get("dairy|Plant.mode");
  assert.notEqual(again, row);
  assert.equal(again.minimum, null);
});

test("who may not write is told why", () => {
  const { model, row } = connected();
  assert.equal(model.writeObstacle(row), "");
  model.session.role = "viewer";
  assert.match(model.writeObstacle(row), /role/);
  model.session = { role: "operator", readOnly: true };
  assert.match(model.writeObstacle(row), /read-only/);
  model.session = { role: "operator", readOnly: false };
  row.writable = false;
  assert.match(model.writeObstacle(row), /not writable/);
});
