// Axes of numbers of any size.

import assert from "node:assert/strict";
import { test } from "node:test";

import { axisRange, shareOf } from "../../../../panel/page/web/assets/trend/axis_range.js";
import { Curve } from "../../../../panel/page/web/assets/trend/curve.js";
import { numberTexts, unitOf } from "../../../../panel/page/web/assets/trend/number_axis.js";

function curveOf(...numbers) {
  const curve = new Curve({ plc: "dairy", label: "Plant.level" });
  numbers.forEach((number, i) => curve.recent.append(10 * i, number, number));
  return curve;
}
const rangeOf = (...numbers) => axisRange([curveOf(...numbers)], 0, 1000);

test("ticks have all digits in which they differ, and are written as in the table", () => {
  assert.deepEqual(numberTexts([0.00015, 0.0002, 0.00025], 0.00005), ["0.00015", "0.0002", "0.00025"]);
  assert.deepEqual(numberTexts([2850, 2900, 2950], 50), ["2850", "2900", "2950"]);
  assert.deepEqual(numberTexts([-0.5, 0, 0.5], 0.5), ["-0.5", "0", "0.5"]);
  assert.deepEqual(numberTexts([9.75, 10, 10.25], 0.25), ["9.75", "10", "10.25"]);
});

test("what arithmetic leaves at a tick is not shown", () => {
  assert.deepEqual(numberTexts([-0.1, 1e-17, 0.1, 0.2, 0.30000000000000004], 0.1), ["-0.1", "0", "0.1", "0.2", "0.3"]);
});

test("numbers of common size are divided by nothing", () => {
  for (const most of [1e-6, 1, 2950, 9.9e14]) assert.equal(unitOf({ min: -most / 2, max: most }), 1);
});

test("very large and small numbers are divided by their power of ten, which the texts have again", () => {
  assert.equal(unitOf({ min: -3.4e38, max: 3.4e38 }), 1e38);
  assert.deepEqual(numberTexts([-2, 0, 2.5], 0.5, 1e38), ["-2e+38", "0", "2.5e+38"]);
  assert.equal(unitOf({ min: 0, max: 3e-9 }), 1e-9);
  assert.deepEqual(numberTexts([0.5, 1.5], 0.5, 1e-9), ["5e-10", "1.5e-09"]);
  assert.equal(unitOf({ min: 0, max: 5e-324 }), 1e-300);
});

test("the digits of a small tick of large numbers are kept", () => {
  assert.deepEqual(numberTexts([9.5, 9.50000000001], 1e-11, 1e16), ["9.5e+16", "9.50000000001e+16"]);
});

test("a range of numbers too near to each other is as wide as their digits allow", () => {
  // 95,000,000,000,000,000 and 16 more: a part in 6e15.
  const { min, max } = rangeOf(95e15, 95e15 + 16);
  assert.ok(Math.abs(max - min - 95000) < 100, `${max - min}`);
  assert.ok(min < 95e15 && max > 95e15 + 16);
});

test("a range that reaches from the least to the greatest number can be drawn", () => {
  const most = Number.MAX_VALUE;
  assert.deepEqual(rangeOf(-most, most), { min: -most, max: most });
  assert.deepEqual([-most, 0, most].map((number) => shareOf(number, { min: -most, max: most })), [0, 0.5, 1]);
  assert.deepEqual(rangeOf(most), { min: 0.95 * most, max: most });
});

test("a share is where a number is in its range", () => {
  assert.deepEqual([2, 3, 4, 6].map((number) => shareOf(number, { min: 2, max: 4 })), [0, 0.5, 1, 2]);
});

test("given limits that are too near to each other or to infinity can be drawn", () => {
  const narrow = axisRange([curveOf(1)], 0, 1000, { lowest: 95e15, highest: 95e15 + 16 });
  assert.ok(narrow.max - narrow.min > 90000);
  const beyond = axisRange([curveOf(1)], 0, 1000, { lowest: Number.MAX_VALUE, highest: null });
  assert.ok(Number.isFinite(beyond.max) && beyond.min < beyond.max);
});
