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
  model.begin({ time: START }, names, [{ type: "INT", unit: "bar", writable: true }, { error: "There is no such label." }], at(0), at(0));
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

// What the model knows is lost, and a stream begins `offset` ms after the first one.
function beginAgain(model, offset) {
  model.lose();
  const names = [...model.rows.values()].map(({ plc, label }) => ({ plc, label }));
  model.begin({ time: START + offset }, names, [], at(offset), at(offset));
}

test("a line ends when the server was heard last, not when its silence was noticed", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]]), at(0));
  model.hear("tick", { time: START + 2000 }, at(2000));
  let told = null;
  model.listeners.add({ gap: (plc, time) => (told = { plc, time }) });
  assert.equal(model.hear("tick", { time: START + 2500 }, { wall: 5000 + 600000, steady: 2600 }), false);
  model.lose();
  assert.deepEqual([row.trace.times, row.trace.numbers, row.trace.words], [[START, START + 2000], [7, NaN], ["", "not known"]]);
  assert.deepEqual(told, { plc: null, time: START + 2000 });
});

test("behind a stream that broke no value and no link is known before it is told anew", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]], START), at(0));
  beginAgain(model, 5000);
  assert.equal(model.mark(row, at(5000)), "unknown");
  model.hear("link", { time: START + 5000, plc: "dairy", state: "up", since: START - 5000 }, at(5000));
  assert.equal(model.mark(row, at(5000)), "unknown");
  model.hear("values", values([[0, 7, "g", START + 5000]], START + 5000, START + 5000), at(5000));
  assert.equal(model.mark(row, at(5000)), "fresh");
});

test("an answer does not undo what the stream told after the question", () => {
  const { model } = connected();
  const alarm = { id: "1", plc: "dairy", state: "active", since: START };
  const { asked } = model;
  model.hear("link", { time: START + 10, plc: "dairy", state: "down", since: START + 10, reason: "no answer" }, at(10));
  model.hear("alarm", alarm, at(10));
  model.setPlcs([{ name: "dairy", link: { state: "up", since: START - 5000 } }], asked);
  model.setAlarms([{ ...alarm, state: "normal", since: null }], asked);
  assert.equal(model.plcs.get("dairy").link.state, "down");
  assert.equal(model.alarms.get("1").state, "active");
});

test("an answer counts where the stream told something else before the question", () => {
  const { model } = connected();
  model.hear("link", { time: START + 10, plc: "dairy", state: "down", since: START + 10 }, at(10));
  model.hear("alarm", { id: "1", state: "active", since: START }, at(10));
  const { asked } = model;
  model.setPlcs([{ name: "dairy", link: { state: "up", since: START + 20 } }], asked);
  model.setAlarms([{ id: "1", state: "normal", since: null }], asked);
  assert.equal(model.plcs.get("dairy").link.state, "up");
  assert.equal(model.alarms.get("1").state, "normal");
});

test("a link that is told before its PLC is known is not forgotten", () => {
  const { model } = connected();
  const { asked } = model;
  model.hear("link", { time: START + 10, plc: "store", state: "down", since: START + 10, reason: "gone" }, at(10));
  model.setPlcs([{ name: "store", link: { state: "up", since: START } }], asked);
  assert.equal(model.plcs.get("store").link.state, "down");
});

test("alarms are not known from a lost stream on until they were asked for anew", () => {
  const { model } = connected();
  assert.equal(model.knowsAlarms(at(0)), false);
  model.setAlarms([], model.asked);
  assert.equal(model.knowsAlarms(at(0)), true);
  beginAgain(model, 5000);
  assert.equal(model.knowsAlarms(at(5000)), false);
  model.setAlarms([], model.asked);
  assert.equal(model.knowsAlarms(at(5000)), true);
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
  assert.equal(model.changeObstacle("engineer"), "Only engineers do this.");
});

test("who only looks, and everybody in read-only mode, changes nothing", () => {
  const { model } = connected();
  const may = () => [model.mayChange(), model.mayChange("operator", "dairy"), model.mayChange("engineer")];
  assert.deepEqual(may(), [true, true, false]);
  model.session = { role: "engineer", readOnly: false };
  assert.deepEqual(may(), [true, true, true]);
  model.plcs.get("dairy").readOnly = true;
  assert.deepEqual(may(), [true, false, true]);
  model.session.readOnly = true;
  assert.deepEqual(may(), [false, false, false]);
  model.session = { role: "viewer", readOnly: false };
  assert.deepEqual(may(), [false, false, false]);
  model.session = null;
  assert.deepEqual(may(), [false, false, false]);
});

test("where the server's clock went back, lines have what it tells since, and nothing is known of what it told of that time before", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]]), at(0));
  model.hear("values", values([[0, 8, "g", START + 2000]], null, START + 2000), at(2000));
  let back = null;
  model.listeners.add({ back: (time) => (back = time) });
  // A minute back: the event is as one that was under way for a minute.
  assert.equal(model.hear("values", values([[0, 9, "g", START - 57000]], null, START - 57000), at(3000)), false);
  model.lose();
  model.begin({ time: START - 56000 }, [...model.rows.values()], [], at(4000), at(4000));
  assert.equal(back, START - 56000);
  assert.deepEqual([row.trace.times, row.trace.words], [[START - 56000], ["not known"]]);
  model.hear("values", values([[0, 9, "g", START - 56000]], null, START - 56000), at(4000));
  model.hear("values", values([[0, 10, "g", START - 55000]], null, START - 55000), at(5000));
  assert.deepEqual([row.trace.times, row.trace.numbers], [[START - 56000, START - 56000, START - 55000], [NaN, 9, 10]]);
});

test("a stream that begins later takes nothing from the lines", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]]), at(0));
  let back = null;
  model.listeners.add({ back: (time) => (back = time) });
  beginAgain(model, 4000);
  assert.equal(back, null);
  assert.deepEqual(row.trace.numbers, [7, NaN]);
});

test("a value that is told later counts, also where the server's clock was put back a little", () => {
  const { model, row } = connected();
  model.hear("values", values([[0, 7, "g", START]], null, START), at(0));
  assert.equal(model.hear("values", values([[0, 8, "g", START - 1000]], null, START - 1000), at(1000)), true);
  assert.deepEqual([row.trace.times, row.trace.numbers], [[START, START], [7, 8]]);
});

test("time that the server's clock has left out is not known", () => {
  const { model, row } = connected();
  const told = [];
  // The stream goes on, so nothing that was asked for meanwhile is out of date.
  model.listeners.add({ gap: () => told.push("gap"), leap: (time) => told.push(time) });
  model.hear("values", values([[0, 7, "g", START]], START), at(0));
  model.hear("values", values([], START + 3000, START + 3000), at(3000));
  assert.deepEqual(told, []);
  model.hear("values", values([], START + 3603000, START + 3603000), at(3500));
  assert.deepEqual([row.trace.times, row.trace.numbers], [[START, START + 3000, START + 3603000], [7, NaN, 7]]);
  assert.deepEqual(told, [START + 3000]);
});
