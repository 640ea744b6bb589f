// Lines of values: steps, gaps, columns of pixels, windows of time.

import assert from "node:assert/strict";
import { test } from "node:test";

import { axisRange } from "../../../../panel/page/web/assets/trend/axis_range.js";
import { csvOf } from "../../../../panel/page/web/assets/trend/export.js";
import { Curves } from "../../../../panel/page/web/assets/trend/curves.js";
import { Curve } from "../../../../panel/page/web/assets/trend/curve.js";
import { noteOf, seriesOf, traceOf as traceOfSeries } from "../../../../panel/page/web/assets/trend/history.js";
import { drawSteps } from "../../../../panel/page/web/assets/trend/step_path.js";
import { extent, Trace } from "../../../../panel/page/web/assets/trend/trace.js";
import { LEAST_SPAN, pan, settle, spanChoices, spanText, windowOf, zoom } from "../../../../panel/page/web/assets/trend/time_window.js";

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

test("a span is told in its two greatest units, as the choices have it", () => {
  for (const [span, text] of spanChoices()) assert.equal(spanText(span), text);
  assert.deepEqual([1000, 1499, 90000, 300000, 6030000, 691200000, 90000000, 86460000].map(spanText),
    ["1 s", "1 s", "1 min 30 s", "5 min", "1 h 40 min", "8 days", "1 day 1 h", "1 day"]);
});

test("recorded changes keep what was recorded, and tell why a stretch is empty", () => {
  const trace = traceOfSeries(series({ kind: "changes", times: [0, 10, 20, 30], values: [1.5, null, 2.5, 2.5], qualities: ["g", "-", "g", "s"] }));
  assert.deepEqual(trace.numbers, [1.5, NaN, 2.5, NaN]);
  assert.deepEqual(trace.words, ["", "not recorded", "", "stale"]);
});

test("aggregates have mean, least and greatest, and gaps where nothing is known", () => {
  const trace = traceOfSeries(series({ kind: "aggregates", step: 10, times: [0, 10], mean: [5, null], minimum: [1, null], maximum: [9, null], coverage: [1, 0], qualities: ["g", "-"] }));
  assert.deepEqual([trace.numbers, trace.low, trace.high], [[5, NaN], [1, NaN], [9, NaN]]);
  assert.deepEqual(extent(trace, 0, 20), { least: 1, most: 9 });
});

function meanOf(type, mean, least, most) {
  const curve = new Curve({ plc: "dairy", label: "Plant.level" });
  curve.type = type;
  curve.takePast(traceOfSeries(series({
    type, kind: "aggregates", step: 10, times: [0], mean: [mean], minimum: [least], maximum: [most], coverage: [1], qualities: ["g"],
  })), 10);
  return curve;
}

test("the cursor has least and greatest of a mean with all of their digits, as the table writes them", () => {
  const textOf = (...one) => meanOf(...one).textAt(5, 10).text;
  assert.equal(textOf("LINT", -9007199254740990, "-9007199254740993", "-9007199254740989"), "-9.00719925474099e+15 (-9007199254740993 … -9007199254740989)");
  assert.equal(textOf("ULINT", 18446744073709551615, "18446744073709551614", "18446744073709551615"), "1.8446744073709552e+19 (18446744073709551614 … 18446744073709551615)");
  assert.equal(textOf("REAL", 0.15000000223517418, 0.10000000149011612, 0.20000000298023224), "0.15 (0.1 … 0.2)");
  assert.equal(textOf("REAL", 1234567.25, 1234567, 1234567.5), "1234567.25 (1234567 … 1234567.5)");
  assert.equal(textOf("LREAL", 1 / 3, 0.1, 0.7000000000000001), "0.333333 (0.1 … 0.7000000000000001)");
  assert.equal(textOf("TIME", 90000.4, 90000, 90001), "T#1m30s (T#1m30s … T#1m30s1ms)");
  assert.equal(textOf("BOOL", 0.25, false, true), "0.25 (FALSE … TRUE)");
  assert.equal(textOf("WORD", 127.5, 0, 255), "127.5 (16#0000 … 16#00FF)");
  assert.equal(textOf("INT", 0, 0, 0), "0");
  assert.equal(textOf("REAL", 0.10000000149011612, 0.10000000149011612, 0.10000000149011612), "0.1");
});

test("the CSV has least and greatest of a mean with all of their digits", () => {
  const lineOf = (...one) => csvOf([meanOf(...one)], { from: 0, to: 9 }, 10).split("\r\n")[1].split(",").slice(3, 7).join();
  assert.equal(lineOf("LINT", -9007199254740990, "-9007199254740993", "-9007199254740989"), "-9007199254740990,-9007199254740993,-9007199254740989,mean");
  assert.equal(lineOf("BOOL", 0.25, false, true), "0.25,false,true,mean");
});

function partlyKnown() {
  const curve = new Curve({ plc: "dairy", label: "Plant.level" });
  curve.type = "REAL";
  const mean = [5, 7, 8, null, null, null];
  curve.takePast(traceOfSeries(series({
    kind: "aggregates", step: 10, times: [0, 10, 20, 30, 40, 50], mean, minimum: mean, maximum: mean,
    coverage: [1, 0.009, 0.999, 0, 0, 0], qualities: ["g", "b", "-", "s", "b", "n"],
  })), 60);
  return curve;
}

test("of a mean of a part of the time the cursor tells the part, and what was in the rest", () => {
  const curve = partlyKnown();
  const words = [5, 15, 25, 35, 45, 55].map((time) => curve.textAt(time, 60).word);
  assert.deepEqual(words, [
    "mean", "mean of less than 1 % of the time, else bad", "mean of 99 % of the time, else not recorded", "stale", "bad", "no number",
  ]);
});

test("the CSV has the part of the time that a mean is of, and why nothing is known", () => {
  assert.deepEqual(csvOf([partlyKnown()], { from: 0, to: 59 }, 60).trim().split("\r\n").map((line) => line.split(",").slice(3).join()), [
    "value,minimum,maximum,state,coverage,otherwise",
    "5,5,5,mean,1,", "7,7,7,mean,0.009,bad", "8,8,8,mean,0.999,not recorded", ",,,stale,,", ",,,bad,,", ",,,no number,,",
  ]);
});

test("what is a mean of a part of the time is drawn apart from what is whole", () => {
  const curve = partlyKnown();
  const same = (number) => number;
  const place = { from: 0, to: 60, heardUntil: 60, toX: same, toY: same };
  const drawn = (isWhole) => {
    const points = [];
    const path = { moveTo: (...to) => points.push(["M", ...to]), lineTo: (...to) => points.push(["L", ...to]) };
    curve.draw(path, place, isWhole);
    return points;
  };
  assert.equal(curve.hasParts, true);
  assert.deepEqual(drawn(true), [["M", 0, 5], ["L", 10, 5]]);
  assert.deepEqual(drawn(false), [["M", 10, 7], ["L", 20, 7], ["L", 20, 8], ["L", 30, 8]]);
});

test("what was recorded with another unit is told and not called not recorded", () => {
  const others = [{ type: "INT", unit: "bar" }, { type: "STRING", unit: "" }, { type: "", unit: "" }];
  const one = series({ kind: "changes", type: "INT", unit: "mbar", others, times: [0, 10, 15], values: [null, 2000, null], qualities: ["-", "g", "-"] });
  assert.equal(noteOf(one), "Also recorded as INT [bar], as STRING, as text, which is not drawn");
  const trace = traceOfSeries(one);
  assert.deepEqual(trace.words, ["not recorded as INT [mbar]", "", "not recorded as INT [mbar]"]);
  assert.deepEqual(trace.end, { index: 2, time: 15 });
  const means = traceOfSeries({ ...one, kind: "aggregates", step: 10, times: [0, 10], mean: [null, 2000], minimum: [null, 1], maximum: [null, 9], coverage: [0, 1], qualities: ["-", "g"] });
  assert.deepEqual(means.words, ["not recorded as INT [mbar]", ""]);
});

test("a value that is not recorded is told apart from one of which nothing was in this time", () => {
  assert.equal(noteOf({ recorded: false }), "Is not recorded");
  assert.equal(noteOf({}), "");
});

test("what was recorded by a name that no PLC has is told and not called not recorded", () => {
  const gap = { kind: "changes", times: [0], values: [null], qualities: ["-"] };
  const never = series({ ...gap, recorded: false, recordedOf: ["plant", ""] });
  assert.equal(noteOf(never), "Is not recorded of dairy; recorded as a value of “plant”, without the name of a PLC");
  assert.deepEqual(traceOfSeries(never).words, ["not recorded of dairy"]);
  const renamed = series({ ...gap, others: [{ type: "INT", unit: "" }], recordedOf: ["plant"] });
  assert.equal(noteOf(renamed), "Also recorded as INT, as a value of “plant”, which is not drawn");
  assert.deepEqual(traceOfSeries(renamed).words, ["not recorded of dairy as REAL [%]"]);
});

test("labels that lead to nothing do not take the past of the others away", async () => {
  const asked = [];
  const ask = async (path) => {
    asked.push(new URL(path, "http://panel").searchParams.getAll("label").join());
    if (asked.length > 1) return { series: [{ plc: "dairy", label: "b" }] };
    throw Object.assign(new Error("a: there is no such thing"), { status: 404, body: { labels: ["a", "c"] } });
  };
  const found = await seriesOf({ plc: "dairy", label: ["a", "b", "c"], from: 0, to: 1 }, ask);
  assert.deepEqual(asked, ["a,b,c", "b"]);
  assert.deepEqual(found.map(({ label, isMissing }) => [label, isMissing]), [["a", true], ["c", true], ["b", undefined]]);
  assert.equal(noteOf(found[0]), "Neither in the project nor recorded");
  assert.equal(traceOfSeries(found[0]).length, 0);
});

test("where all labels lead to nothing, nothing else is asked; another refusal stays one", async () => {
  const refusing = (status, body) => async () => {
    throw Object.assign(new Error("refused"), { status, body });
  };
  assert.equal((await seriesOf({ plc: "dairy", label: ["a"], from: 0, to: 1 }, refusing(404, { labels: ["a"] }))).length, 1);
  const question = { plc: "dairy", label: ["a"], from: 0, to: 1 };
  await assert.rejects(seriesOf(question, refusing(404, { error: "nothing is recorded here" })), /refused/);
  await assert.rejects(seriesOf(question, refusing(503, { labels: ["a"] })), /refused/);
});

// Curves of "dairy" and of the PLCs named, with what `answer(plc)` gives as their past.
async function loaded(plcs, answer) {
  const model = { listeners: new Set(), rows: new Map(), clock: { now: () => 100 } };
  const ask = async (path) => answer(new URL(path, "http://panel").searchParams.get("plc"));
  const curves = new Curves(model, ask);
  curves.show(plcs.map((plc) => ({ plc, label: "Plant.level" })));
  const isKnown = await curves.load(0, 100);
  return { isKnown, error: curves.error, notes: curves.all.map(({ note }) => note), texts: curves.all.map((curve) => curve.textAt(50, 100).text) };
}

function refuse(status, text) {
  throw Object.assign(new Error(text), { status, body: { error: text } });
}

const recordedPast = (plc) => ({ series: [series({ plc, kind: "changes", times: [0], values: [1.5], qualities: ["g"] })] });

test("a PLC that there is not does not take the past of the others away", async () => {
  const answer = (plc) => (plc === "dairy" ? recordedPast(plc) : refuse(404, `there is no PLC "${plc}"`));
  assert.deepEqual(await loaded(["gone", "dairy"], answer), {
    isKnown: true, error: "", notes: ['No past: there is no PLC "gone"', ""], texts: ["—", "1.5"],
  });
});

test("where no PLC has a past, the reasons are told once", async () => {
  const nothing = await loaded(["dairy", "mill"], () => refuse(404, "nothing is recorded here"));
  assert.deepEqual([nothing.isKnown, nothing.error], [true, "nothing is recorded here"]);
  const gone = await loaded(["a", "b"], (plc) => refuse(404, `there is no PLC "${plc}"`));
  assert.deepEqual([gone.isKnown, gone.error], [true, 'there is no PLC "a"; there is no PLC "b"']);
});

test("where a recording cannot be read, that is told, also beside a PLC that there is not", async () => {
  const answer = (plc) => (plc === "gone" ? refuse(404, "there is no such PLC") : refuse(503, "the disk is gone"));
  const { isKnown, error } = await loaded(["gone", "dairy"], answer);
  assert.deepEqual([isKnown, error], [false, "What was recorded is not known: the disk is gone"]);
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
      "time,plc,label,value,minimum,maximum,state,coverage,otherwise",
      "1970-01-01T00:00:00.060Z,dairy,Plant.level,2,,,good,,",
      "1970-01-01T00:00:00.110Z,\"north \"\"a\"\"\",Plant.note,\"say \"\"a,b\"\"\",,,good,,",
      "1970-01-01T00:00:00.120Z,dairy,Plant.level,3,,,good,,",
      "",
    ].join("\r\n"),
  );
});

test("the export tells first what is not drawn of a value", () => {
  const curve = curveOf();
  curve.note = noteOf(series({ others: [{ type: "INT", unit: "" }] }));
  const rows = csvOf([curve], { from: 60, to: 100 }, 150).trim().split("\r\n").slice(1);
  assert.deepEqual(rows, [
    '1970-01-01T00:00:00.060Z,dairy,Plant.level,,,,"Also recorded as INT, which is not drawn",,',
    "1970-01-01T00:00:00.060Z,dairy,Plant.level,2,,,good,,",
  ]);
});

test("there is nothing to export of a span of which nothing is known", () => {
  const curve = new Curve({ plc: "dairy", label: "Plant.level" });
  assert.equal(csvOf([curve], { from: 60, to: 200 }, -Infinity), null);
  curve.recent.gap(100, "not known");
  assert.equal(csvOf([curve], { from: 60, to: 200 }, 150), null);
});

test("where the server's clock went back, nothing that was told of that time before is drawn", async () => {
  const model = { listeners: new Set(), rows: new Map(), clock: { now: () => 100 } };
  let answer = null;
  const curves = new Curves(model, () => new Promise((done) => (answer = done)));
  curves.show([{ plc: "dairy", label: "Plant.level" }]);
  const [curve] = curves.all;
  curve.type = "REAL";
  curve.takePast(traceOf([[0, 1], [50, 2]]), 100);
  curve.recent.append(120, 3, 3);
  const loading = curves.load(0, 100);
  for (const { back } of model.listeners) back(40);
  for (const { value } of model.listeners) value({ key: "dairy|Plant.level", quality: "g", number: 9, value: 9 }, 60);
  assert.deepEqual([30, 45, 70].map((time) => curve.textAt(time, 80)), [{ text: "1", word: "" }, { text: "—", word: "not known" }, { text: "9", word: "" }]);
  // The answer is to a question of the time before.
  answer({ series: [{ plc: "dairy", label: "Plant.level", type: "REAL", kind: "changes", times: [0], values: [5], qualities: ["g"] }] });
  assert.equal(await loading, null);
  assert.equal(curve.textAt(70, 80).text, "9");
});

// Curves of one value, at a time that a test sets.
function liveCurves(ask) {
  const model = { listeners: new Set(), rows: new Map(), time: 1000000, clock: { now: () => model.time } };
  const curves = new Curves(model, ask);
  curves.show([{ plc: "dairy", label: "Plant.level" }]);
  const tell = (time, number) => {
    model.time = time;
    for (const { value } of model.listeners) value({ key: "dairy|Plant.level", quality: "g", number, value: number }, time);
  };
  const isDue = (span) => curves.isDue(model.time - span, model.time);
  return { model, curves, tell, isDue };
}
const noChanges = async () => ({ series: [{ plc: "dairy", label: "Plant.level", type: "REAL", kind: "changes", times: [], values: [], qualities: [] }] });
const DAY = 86400000; // ms

test("the past of a live trend is asked for anew after a quarter of its span, and no minute is too short", async () => {
  const { model, curves, isDue } = liveCurves(noChanges);
  assert.equal(isDue(DAY), false);
  await curves.load(0, model.time);
  model.time += DAY / 4;
  assert.equal(isDue(DAY), false);
  model.time += 1;
  assert.equal(isDue(DAY), true);
  await curves.load(0, model.time);
  model.time += 60000;
  assert.equal(isDue(60000), false);
  model.time += 1;
  assert.equal(isDue(60000), true);
});

test("before more came live than is kept the past is asked for anew, so that no recorded time is lost", async () => {
  const { model, curves, tell, isDue } = liveCurves(noChanges);
  await curves.load(0, model.time);
  const begin = model.time;
  let asked = 0;
  for (let i = 1; i <= 60000; ++i) {
    tell(begin + i * 500, i);
    if (!isDue(DAY)) continue;
    ++asked;
    await curves.load(model.time - DAY, model.time);
  }
  assert.equal(asked, 5); // each 10,000
  const [curve] = curves.all;
  assert.ok(curve.recent.times[0] <= curve.pastUntil, `what is kept begins at ${curve.recent.times[0]}, the past ends at ${curve.pastUntil}`);
});

test("a question for the past that failed is asked again soon, also for a window back in time", async () => {
  let fails = true;
  const { model, curves } = liveCurves(async () => {
    if (fails) throw Object.assign(new Error("broken"), { status: 500 });
    return noChanges();
  });
  const isDue = () => curves.isDue(0, 100000);
  assert.equal(await curves.load(0, 100000), false);
  model.time += 5000;
  assert.equal(isDue(), false);
  model.time += 1;
  assert.equal(isDue(), true);
  fails = false;
  await curves.load(0, 100000);
  model.time += DAY;
  assert.equal(isDue(), false);
});

test("what has no past is not asked for again and again", async () => {
  const { model, curves } = liveCurves(async () => { throw Object.assign(new Error("there is no recorder"), { status: 404 }); });
  await curves.load(0, 100000);
  model.time += DAY;
  assert.equal(curves.isDue(0, 100000), false);
});

test("while the server is not heard nothing is asked for", async () => {
  const { model, curves } = liveCurves(noChanges);
  await curves.load(0, model.time);
  model.time = null;
  assert.equal(curves.isDue(0, 5000000), false);
});

test("time that the server's clock has left out is a gap of the live line", () => {
  const { model, curves, tell } = liveCurves(noChanges);
  tell(1000000, 7);
  for (const { leap } of model.listeners) leap(1002000);
  tell(5000000, 8);
  assert.deepEqual([1001000, 1002000, 5000000].map((time) => curves.all[0].textAt(time, 5000000).text), ["7", "—", "8"]);
});
