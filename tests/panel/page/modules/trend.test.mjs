// Lines of values: steps, gaps, columns of pixels, windows of time.

import assert from "node:assert/strict";
import { test } from "node:test";

import { drawSteps } from "../../../../panel/page/web/assets/trend/step_path.js";
import { extent, Trace } from "../../../../panel/page/web/assets/trend/trace.js";
import { LEAST_SPAN, pan, settle, windowOf, zoom } from "../../../../panel/page/web/assets/trend/time_window.js";

class Recorder {
  steps = [];
  moveTo(x, y) {
    this.steps.push(["M", x, y]);
  }
  lineTo(x, y) {
    this.steps.push(["L", x, y]);
  }
}

function traceOf(entries, limit = 1000) {
  const trace = new Trace(limit);
  for (const [time, number] of entries) trace.append(time, number, number);
  return trace;
}

// One pixel for a unit of time and of value.
function drawn(entries, { from = 0, to = 100, until = to } = {}) {
  const path = new Recorder();
  drawSteps(path, traceOf(entries), { from, to, until, toX: (time) => time - from, toY: (number) => number });
  return path.steps;
}

test("a value holds until the next one, and the last one until now", () => {
  assert.deepEqual(drawn([[0, 5], [40, 7]]), [["M", 0, 5], ["L", 40, 5], ["L", 40, 7], ["L", 100, 7]]);
});

test("nothing is drawn beyond the time until which the value is known", () => {
  assert.deepEqual(drawn([[0, 5]], { until: 30 }), [["M", 0, 5], ["L", 30, 5]]);
});

test("a gap breaks the line where it begins, and nothing bridges it", () => {
  assert.deepEqual(drawn([[0, 5], [20, NaN], [60, 5]]), [["M", 0, 5], ["L", 20, 5], ["M", 60, 5], ["L", 100, 5]]);
});

test("what held before the window is drawn from its edge on", () => {
  assert.deepEqual(drawn([[0, 5], [200, 9]], { from: 100, to: 150 }), [["M", 0, 5], ["L", 50, 5]]);
});

test("what falls into one column of pixels is one stroke from the lowest to the highest", () => {
  const steps = drawn([[0, 5], [10.1, 1], [10.2, 9], [10.3, 4], [20, 4]]);
  assert.deepEqual(steps, [["M", 0, 5], ["L", 10.1, 5], ["L", 10.1, 1], ["L", 10.1, 1], ["L", 10.1, 9], ["L", 10.1, 4], ["L", 20, 4], ["L", 100, 4]]);
});

test("a thousand changes in a hundred columns cost hundreds of strokes, not thousands", () => {
  const entries = Array.from({ length: 10000 }, (_, i) => [i / 100, i % 7]);
  assert.ok(drawn(entries).length <= 100 * 5 + 2);
});

test("the extent is that of the window, with what held at its beginning", () => {
  const trace = traceOf([[0, 50], [100, 5], [150, NaN], [160, 8], [300, 99]]);
  assert.deepEqual(extent(trace, 50, 200), { least: 5, most: 50 });
  assert.deepEqual(extent(trace, 110, 200), { least: 5, most: 8 });
  assert.equal(extent(traceOf([[0, NaN]]), 0, 10), null);
});

test("a trace finds what held at a time", () => {
  const trace = traceOf([[10, 1], [20, 2]]);
  assert.equal(trace.at(9), -1);
  assert.equal(trace.at(10), 0);
  assert.equal(trace.at(19), 0);
  assert.equal(trace.at(25), 1);
});

test("a trace is bounded and drops the oldest", () => {
  const trace = traceOf(Array.from({ length: 1000 }, (_, i) => [i, i]), 100);
  assert.ok(trace.length <= 125);
  assert.equal(trace.times.at(-1), 999);
  assert.equal(trace.times.length, trace.words.length);
});

test("zooming keeps the time under the pointer where it is", () => {
  assert.deepEqual(zoom({ from: 0, to: 100000 }, 0.5, 25000), { from: 12500, to: 62500 });
  assert.equal(zoom({ from: 0, to: 1500 }, 0.1, 0).to, LEAST_SPAN);
});

test("panning moves by a share of the width", () => {
  assert.deepEqual(pan({ from: 1000, to: 2000 }, -0.5), { from: 500, to: 1500 });
});

test("a window that reaches now is live", () => {
  assert.deepEqual(settle({ from: 5000, to: 15000 }, 15000), { range: null, span: 10000 });
  assert.deepEqual(settle({ from: 5000, to: 15000 }, 15001), { range: { from: 5000, to: 15000 }, span: 10000 });
  assert.deepEqual(windowOf({ range: null, span: 10000 }, 15000), { from: 5000, to: 15000 });
});
