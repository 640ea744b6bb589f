// Axes whose lowest and highest number somebody has given.

import assert from "node:assert/strict";
import { beforeEach, test } from "node:test";

import { axisRange, beyondRange } from "../../../../panel/page/web/assets/trend/axis_range.js";
import { Curve } from "../../../../panel/page/web/assets/trend/curve.js";
import { keepLimits, keptLimits, parseLimits } from "../../../../panel/page/web/assets/state/axis_limits.js";

const storage = new Map();
globalThis.localStorage = {
  getItem: (name) => storage.get(name) ?? null,
  setItem: (name, text) => storage.set(name, text),
  removeItem: (name) => storage.delete(name),
};
beforeEach(() => storage.clear());

const none = { lowest: null, highest: null };

function curveOf(...numbers) {
  const curve = new Curve({ plc: "dairy", label: "Plant.level" });
  curve.type = "REAL";
  numbers.forEach((number, i) => curve.recent.append(10 * i, number, number));
  return curve;
}

test("an axis has the limits that were given, and what the values need for the rest", () => {
  const curves = [curveOf(0, 100)];
  assert.deepEqual(axisRange(curves, 0, 100, none), { min: -6, max: 106 });
  assert.deepEqual(axisRange(curves, 0, 100, { lowest: -50, highest: 50 }), { min: -50, max: 50 });
  assert.deepEqual(axisRange(curves, 0, 100, { lowest: 0, highest: null }), { min: 0, max: 106 });
  assert.deepEqual(axisRange(curves, 0, 100, { lowest: null, highest: 90 }), { min: -6, max: 90 });
});

test("a limit beyond all values leaves an axis that can be drawn", () => {
  const curves = [curveOf(0, 100)];
  assert.deepEqual(axisRange(curves, 0, 100, { lowest: 200, highest: null }), { min: 200, max: 210 });
  assert.deepEqual(axisRange(curves, 0, 100, { lowest: null, highest: -200 }), { min: -210, max: -200 });
});

test("curves of which something is outside are told", () => {
  const [low, inside, high] = [curveOf(-1, 5), curveOf(0, 10), curveOf(5, 11)];
  assert.deepEqual(beyondRange([low, inside, high], 0, 100, { min: 0, max: 10 }), [low, high]);
});

test("limits are numbers or nothing, the lowest below the highest", () => {
  assert.deepEqual(parseLimits(" -1.5 ", "2e3"), { limits: { lowest: -1.5, highest: 2000 } });
  assert.deepEqual(parseLimits("", " "), { limits: none });
  assert.match(parseLimits("1,5", "").error, /number/);
  assert.match(parseLimits("", "1e999").error, /number/);
  assert.match(parseLimits("5", "5").error, /less/);
});

test("limits are kept, and nothing of them when all is automatic again", () => {
  assert.deepEqual(keptLimits(), { left: none, right: none });
  const limits = { left: { lowest: 0, highest: null }, right: none };
  keepLimits(limits);
  assert.deepEqual(keptLimits(), limits);
  keepLimits({ left: none, right: none });
  assert.equal(storage.size, 0);
});

test("what was kept and makes no sense is automatic", () => {
  for (const text of ["nonsense", "7", '{"left":{"lowest":9,"highest":1}}', '{"left":{"lowest":"0","highest":null}}']) {
    storage.set("plc-panel.axes", text);
    assert.deepEqual(keptLimits(), { left: none, right: none });
  }
});
