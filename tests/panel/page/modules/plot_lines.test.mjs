// The numbers at the ends of the lines.

import assert from "node:assert/strict";
import { test } from "node:test";

import { spread } from "../../../../panel/page/web/assets/trend/plot_lines.js";

test("numbers stay at their lines where there is room", () => {
  assert.deepEqual(spread([50, 20], 10, 0, 100), [50, 20]);
});

test("numbers of lines that meet stand one below the other", () => {
  assert.deepEqual(spread([50, 50, 52], 10, 0, 100), [50, 60, 70]);
});

test("at the lower edge they are moved up, and none leaves the plot", () => {
  assert.deepEqual(spread([98, 99, 100], 10, 0, 100), [75, 85, 95]);
  assert.deepEqual(spread([70, 90, 100, 100], 10, 0, 100), [65, 75, 85, 95]);
});

test("at the upper edge they are moved down", () => {
  assert.deepEqual(spread([0, 1], 10, 0, 100), [5, 15]);
});

test("lines whose end is beyond the axes have their number at the edge", () => {
  assert.deepEqual(spread([-500, 900], 10, 0, 100), [5, 95]);
});
