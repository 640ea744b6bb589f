// Groups, order and filter of the table, and the address that keeps them.

import assert from "node:assert/strict";
import { test } from "node:test";

import { arrange } from "../../../../panel/page/web/assets/state/arrangement.js";
import { emptyView, readAddress, writeAddress } from "../../../../panel/page/web/assets/state/view_address.js";

const row = (plc, label, value, mark = "fresh", age = 0) => ({ plc, label, value, mark, age, description: "", unit: "" });
const judge = { mark: (one) => one.mark, age: (one) => one.age };
const rows = [
  row("dairy", "Plant.tank[10].level", 5),
  row("dairy", "Plant.tank[2].level", "18446744073709551615", "stale", 9000),
  row("store", "Store.door", true, "lost"),
  row("dairy", "Totals.packs", "18446744073709551614", "fresh", 100),
];
const shown = (view) => arrange(rows, { ...emptyView(), ...view }, judge).map((line) => line.title ?? line.row.label);

test("groups stand in the order in which their first value was chosen", () => {
  assert.deepEqual(shown({ group: "scope" }), [
    "dairy · Plant", "Plant.tank[10].level", "Plant.tank[2].level", "store · Store", "Store.door", "dairy · Totals", "Totals.packs",
  ]);
  assert.deepEqual(shown({ group: "plc" }), ["dairy", "Plant.tank[10].level", "Plant.tank[2].level", "Totals.packs", "store", "Store.door"]);
});

test("labels are ordered as people count", () => {
  assert.deepEqual(shown({ group: "none", sort: "label" }), ["Plant.tank[2].level", "Plant.tank[10].level", "Store.door", "Totals.packs"]);
});

test("values are ordered exactly, also where numbers of JavaScript are equal", () => {
  assert.deepEqual(shown({ group: "none", sort: "value", descending: true }), ["Plant.tank[2].level", "Totals.packs", "Plant.tank[10].level", "Store.door"]);
});

test("what is not known comes last in both directions, and what is equal keeps its order", () => {
  const some = [row("a", "never", null, "unread", null), row("a", "first", 1, "fresh", 5), row("a", "second", 1, "fresh", 5), row("a", "less", 0, "fresh", 2), row("a", "refused", null, "bad", null)];
  const order = (view) => arrange(some, { ...emptyView(), group: "none", ...view }, judge).map((line) => line.row.label);
  for (const sort of ["value", "age"]) {
    assert.deepEqual(order({ sort }), ["less", "first", "second", "never", "refused"]);
    assert.deepEqual(order({ sort, descending: true }), ["first", "second", "less", "never", "refused"]);
  }
  assert.deepEqual(order({ sort: "mark", descending: true }), ["first", "second", "less", "never", "refused"]);
});

test("groups by quality are called as the rows are marked", () => {
  assert.deepEqual(shown({ group: "mark" }).filter((text) => !text.includes(".")), ["good", "stale", "no link"]);
});

test("what needs attention comes first in the order of quality", () => {
  assert.deepEqual(shown({ group: "none", sort: "mark" }).slice(0, 2), ["Store.door", "Plant.tank[2].level"]);
});

test("the filter wants all words", () => {
  assert.deepEqual(shown({ group: "none", filter: "LEVEL 10" }), ["Plant.tank[10].level"]);
  assert.deepEqual(shown({ group: "none", filter: "level nothing" }), []);
  assert.equal(shown({ group: "none", filter: "  " }).length, 4);
});

test("a view comes back from its address as it was", () => {
  const view = {
    ...emptyView(),
    view: "trend",
    chosen: [{ plc: "dairy", label: "Plant.zone[1,2]" }, { plc: "cold store", label: "A&B.c=d" }],
    series: [{ plc: "dairy", label: "Plant.tank[1].level" }, { plc: "dairy", label: "Plant.mode", axis: "right" }],
    group: "plc",
    sort: "age",
    descending: true,
    filter: "tank #1 & more?",
    span: 3600000,
    range: { from: 1700000000000, to: 1700000600000 },
  };
  assert.deepEqual(readAddress(writeAddress(view)), view);
});

test("names come back from an address whatever signs they have", () => {
  const names = ["Hall|A", "50%", "a%7Cb", "x%25|", "|right", "#1 & 2?", "a=b+c", "Größe [1]", "%", "a;b,c/d\\e\"f'"];
  const chosen = names.flatMap((plc) => names.map((label) => ({ plc, label })));
  const series = names.slice(0, 8).map((plc, i) => (i % 2 ? { plc, label: "P.x", axis: "right" } : { plc, label: "right" }));
  const view = { ...emptyView(), view: "trend", chosen, series, filter: "100% | a" };
  assert.deepEqual(readAddress(writeAddress(view)), view);
  assert.deepEqual(readAddress("#values?v=50%25|P.x").chosen, [{ plc: "50%", label: "P.x" }]);
});

test("an address that makes no sense is an empty view", () => {
  assert.deepEqual(readAddress("#nonsense?v=x&sort=wrong&group=7&span=-1&from=5&to=4"), emptyView());
  assert.deepEqual(readAddress(""), emptyView());
});

test("an address names a value once, and at most eight for the trend", () => {
  const view = readAddress(`#values?v=a|b&v=a|b&${Array.from({ length: 9 }, (_, i) => `t=a|x${i}`).join("&")}`);
  assert.equal(view.chosen.length, 1);
  assert.equal(view.series.length, 8);
});
