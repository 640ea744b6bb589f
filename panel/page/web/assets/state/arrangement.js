// Rows of the table in the order and the groups in which they are shown.

import { compareValues } from "../values/number.js";
import { wordOf } from "./freshness.js";

const MARK_ORDER = ["wrong", "unknown", "lost", "bad", "stale", "unread", "fresh"];
const naturally = new Intl.Collator("en", { numeric: true }).compare;

// "Plant" of "Plant.tank[1].level".
const scopeOf = (label) => label.split(/[.[]/, 1)[0];

// Rows whose PLC, label or description has all words of `filter`, without regard to case.
export function filtered(rows, filter) {
  const words = filter.toLowerCase().split(/\s+/).filter(Boolean);
  if (words.length === 0) return rows;
  return rows.filter((row) => {
    const text = `${row.plc} ${row.label} ${row.description} ${row.unit}`.toLowerCase();
    return words.every((word) => text.includes(word));
  });
}

// In the order of `sort`, or its reverse; what is not known comes last in both. Rows that are equal in it stay in
// the order in which they were chosen.
export function sorted(rows, { sort, descending }, { mark, age }) {
  const orders = {
    label: [(row) => row, (a, b) => naturally(a.label, b.label) || naturally(a.plc, b.plc)],
    value: [(row) => row.value, compareValues],
    age: [age, (a, b) => a - b],
    mark: [(row) => MARK_ORDER.indexOf(mark(row)), (a, b) => a - b],
  };
  if (!orders[sort]) return rows;
  const [keyOf, compare] = orders[sort];
  const sign = descending ? -1 : 1;
  return rows
    .map((row) => ({ row, key: keyOf(row) ?? null }))
    .sort((a, b) => (a.key === null) - (b.key === null) || (a.key !== null && sign * compare(a.key, b.key)))
    .map(({ row }) => row);
}

// [{title, rows}]; one group without a title where nothing is grouped.
export function grouped(rows, group, mark) {
  const titles = {
    plc: (row) => row.plc,
    scope: (row) => `${row.plc} · ${scopeOf(row.label)}`,
    mark: (row) => wordOf(mark(row)),
  };
  if (!titles[group]) return rows.length ? [{ title: "", rows }] : [];
  const groups = new Map();
  for (const row of rows) {
    const title = titles[group](row);
    if (!groups.has(title)) groups.set(title, { title, rows: [] });
    groups.get(title).rows.push(row);
  }
  return [...groups.values()];
}

// What the table shows, line by line: {title, count} before each group, then its {row}s.
export function arrange(rows, view, judge) {
  const lines = [];
  for (const { title, rows: members } of grouped(
    sorted(filtered(rows, view.filter), view, judge),
    view.group,
    judge.mark,
  )) {
    if (title) lines.push({ title, count: members.length });
    for (const row of members) lines.push({ row });
  }
  return lines;
}
