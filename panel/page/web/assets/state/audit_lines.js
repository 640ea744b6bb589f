// Lines of the audit, as the server's file has them: what each of them tells, and which of them a page
// shows.

import { OUTCOMES } from "./write_process.js";

export const PAGE = 100; // lines

// {time, user, address, action, plc, label, old, seen, next, outcome, word, reason} of a line. A line that
// is no record has a `note`, one that makes no sense is one.
export function lineOf(text) {
  const line = parsed(text);
  if (line === null) return { note: `no line of an audit: ${text}` };
  const time = Date.parse(line.time);
  if (line.audit === "new") return { time, note: "the audit begins" };
  if (line.audit === "continued") return { time, note: "goes on from the file before" };
  if (line.cut) return { time, note: "the line before was cut off" };
  const { user, address, action, plc, label, old, seen, outcome, reason } = line;
  return { time, user, address, action, plc, label, old, seen, next: line.new, ...endOf(line.phase, outcome), reason };
}

function endOf(phase, outcome) {
  if (phase !== "outcome") return { outcome: "asked", word: "asked for" };
  if (outcome === "notDone") return { outcome, word: "not done" }; // the panel itself could not
  return { outcome, word: OUTCOMES[outcome]?.word ?? outcome };
}

function parsed(text) {
  try {
    const line = JSON.parse(text);
    return typeof line === "object" && !Number.isNaN(Date.parse(line?.time)) ? line : null;
  } catch {
    return null;
  }
}

// {from, limit} to ask for the page that ends before line `end`; null: the newest one.
export function pageBefore(end) {
  if (end === null) return { from: -PAGE, limit: PAGE };
  const from = Math.max(0, end - PAGE);
  return { from, limit: Math.max(1, end - from) };
}

// {first, end} of the lines, counted from 0, that an answer to `asked` has.
export function placeOf(asked, { total, lines }) {
  const first = asked.from < 0 ? total - lines.length : asked.from;
  return { first, end: first + lines.length };
}
