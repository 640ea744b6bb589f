// Lines of values: steps, gaps, columns of pixels, windows of time.

import assert from "node:assert/strict";
import { test } from "node:test";

import { axisRange } from "../../../../panel/page/web/assets/trend/axis_range.js";
import { csvOf } from "../../../../panel/page/web/assets/trend/export.js";
import { Curve } from "../../../../panel/page/web/assets/trend/curve.js";
import { traceOf as traceOfSeries } from "../../../../panel/page/web/assets/trend/history.js";
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
  drawSteps(path, traceOf(entries, Infinity), { from, to, until, toX: (time) => time - from, toY: (number) => number });
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
  const steps = drawn(entries);
  assert.ok(steps.length <= 100 * 5 + 2);
  // Each column has all seven values in it.
  for (let column = 0; column < 100; ++column) {
    const ys = steps.filter(([, x]) => Math.floor(x) === column).map(([, , y]) => y);
    assert.deepEqual([Math.min(...ys), Math.max(...ys)], [0, 6], `column ${column}`);
  }
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

const series = (extra) => ({ plc: "dairy", label: "Plant.level", type: "REAL", unit: "%", ...extra });

test("recorded changes keep what was recorded, and tell why a stretch is empty", () => {
  const trace = traceOfSeries(series({ kind: "changes", times: [0, 10, 20, 30], values: [1.5, null, 2.5, 2.5], qualities: ["g", "-", "g", "s"] }));
  assert.deepEqual(trace.numbers, [1.5, NaN, 2.5, NaN]);
  assert.deepEqual(trace.words, ["", "not recorded", "", "stale"]);
});

test("aggregates have mean, least and greatest, and gaps where nothing is known", () => {
  const trace = traceOfSeries(series({ kind: "aggregates", step: 10, times: [0, 10], mean: [5, null], minimum: [1, null], maximum: [9, null], coverage: [1, 0] }));
  assert.deepEqual([trace.numbers, trace.low, trace.high], [[5, NaN], [1, NaN], [9, NaN]]);
  assert.deepEqual(extent(trace, 0, 20), { least: 1, most: 9 });
});

function curveOf() {
  const curve = new Curve({ plc: "dairy", label: "Plant.level" });
  curve.type = "REAL";
  curve.takePast(traceOf([[0, 1], [50, 2]]), 100);
  curve.recent.append(90, 2, 2);
  curve.recent.append(120, 3, 3);
  return curve;
}

test("what came live fills in what is not recorded yet, and nothing else does", () => {
  const answer = () => traceOfSeries(series({ kind: "changes", times: [0, 50, 80, 80], values: [1, 2, 2, null], qualities: ["g", "g", "g", "-"] }));
  const live = new Curve({ plc: "dairy", label: "Plant.level" });
  live.recent.append(70, 2, 2);
  live.recent.append(90, 3, 3);
  live.takePast(answer(), 100);
  assert.deepEqual(live.parts(0, 120, 120).map(({ from, to }) => [from, to]), [[0, 80], [80, 120]]);
  assert.equal(live.textAt(85, 120).text, "2");
  assert.doesNotMatch(csvOf([live], { from: 0, to: 80 }, 80), /not recorded/);
  const late = new Curve({ plc: "dairy", label: "Plant.level" });
  late.recent.append(90, 3, 3);
  late.takePast(answer(), 100);
  assert.deepEqual(late.textAt(85, 120), { text: "—", word: "not recorded" });
  const whole = traceOfSeries(series({ kind: "changes", times: [0, 50], values: [null, 2], qualities: ["-", "g"] }));
  live.takePast(whole, 100);
  assert.equal(live.pastUntil, 100);
});

test("a curve goes on live where the recorded past ends", () => {
  const path = new Recorder();
  curveOf().draw(path, { from: 0, to: 200, heardUntil: 150, toX: (time) => time, toY: (number) => number });
  assert.deepEqual(path.steps, [["M", 0, 1], ["L", 50, 1], ["L", 50, 2], ["L", 100, 2], ["M", 100, 2], ["L", 120, 2], ["L", 120, 3], ["L", 150, 3]]);
});

test("the cursor reads what held, and knows nothing beyond what was heard", () => {
  const curve = curveOf();
  assert.deepEqual(curve.textAt(49, 150), { text: "1", word: "" });
  assert.deepEqual(curve.textAt(99, 150), { text: "2", word: "" });
  assert.deepEqual(curve.textAt(130, 150), { text: "3", word: "" });
  assert.deepEqual(curve.textAt(151, 150), { text: "—", word: "not known" });
  curve.recent.gap(140, "no link");
  assert.deepEqual(curve.textAt(145, 150), { text: "—", word: "no link" });
});

test("an axis has room around what is seen, and switches have their two states", () => {
  const curve = curveOf();
  assert.deepEqual(axisRange([curve], 0, 200), { min: 1 - 0.12, max: 3 + 0.12 });
  curve.type = "BOOL";
  assert.deepEqual(axisRange([curve], 0, 200), { min: -0.1, max: 1.1 });
  assert.deepEqual(axisRange([], 0, 200), { min: 0, max: 1 });
});

test("the export has what is seen, in the order of time, as RFC 4180 has it", () => {
  const curve = curveOf();
  const text = new Curve({ plc: 'north "a"', label: "Plant.note" });
  text.type = "STRING";
  text.recent.append(110, NaN, 'say "a,b"');
  assert.equal(
    csvOf([curve, text], { from: 60, to: 200 }, 150),
    [
      "time,plc,label,value,minimum,maximum,state",
      "1970-01-01T00:00:00.060Z,dairy,Plant.level,2,,,good",
      "1970-01-01T00:00:00.110Z,\"north \"\"a\"\"\",Plant.note,\"say \"\"a,b\"\"\",,,good",
      "1970-01-01T00:00:00.120Z,dairy,Plant.level,3,,,good",
      "",
    ].join("\r\n"),
  );
});

test("there is nothing to export of a span of which nothing is known", () => {
  const curve = new Curve({ plc: "dairy", label: "Plant.level" });
  assert.equal(csvOf([curve], { from: 60, to: 200 }, -Infinity), null);
  curve.recent.gap(100, "not known");
  assert.equal(csvOf([curve], { from: 60, to: 200 }, 150), null);
});
