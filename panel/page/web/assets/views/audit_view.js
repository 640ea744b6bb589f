// The audit: who has changed what, the newest first.

import { ask, query } from "../server/api.js";
import { html, useEffect, useRef, useState } from "../html.js";
import { lineOf, PAGE, pageBefore, placeOf } from "../state/audit_lines.js";
import { ValueCell } from "../parts/value_cell.js";
import { timeText } from "../state/ages.js";

const PATIENCE = 60000; // ms: the server looks through the whole file
const COLUMNS = [
  ["Who", (line) => line.user],
  ["From", (line) => line.address],
  ["Action", (line) => line.action],
  ["PLC", (line) => line.plc],
  ["Label", (line) => line.label],
  ["Old", (line) => line.old],
  ["Seen", (line) => line.seen],
  ["New", (line) => line.next],
];

export function AuditView({ panel }) {
  const [end, setEnd] = useState(null); // before which line the page ends; null: the newest
  const [{ answer, error, at }, setShown] = useState({});
  const loads = useRef(0); // an answer that was overtaken counts no more
  const load = async (wanted) => {
    const number = ++loads.current;
    const asked = pageBefore(wanted);
    const { status, body } = await ask("GET", `/audit${query(asked)}`, undefined, { patience: PATIENCE });
    if (number !== loads.current) return;
    setEnd(wanted);
    if (status === 200) setShown({ answer: { ...body, ...placeOf(asked, body) }, at: panel.now() });
    else setShown({ error: body?.error ?? "the server does not answer." });
  };
  const isEngineer = panel.model.hasRole("engineer");
  const isShown = panel.views.includes("audit");
  useEffect(() => void (isShown && load(end)), [panel.model.streams, isShown]);
  if (!isEngineer) return html`<section class="page-section" aria-label="Audit"><p class="empty">Engineers read the audit.</p></section>`;
  if (!isShown) return html`<section class="page-section" aria-label="Audit"><p class="empty">This panel keeps no audit; <code>--audit</code> or its configuration names a file for it.</p></section>`;
  return html`<section class="page-section" aria-label="Audit">
    <div class="toolbar">
      <button type="button" onClick=${() => load(null)}>Newest</button>
      <button type="button" disabled=${!answer || answer.end >= answer.total} onClick=${() => load(laterEnd(answer))}>Newer</button>
      <button type="button" disabled=${!answer || answer.first <= 0} onClick=${() => load(answer.first)}>Older</button>
      ${answer && html`<${Chain} answer=${answer} at=${at} />`}
    </div>
    <div class="scroll">
      ${error && html`<p class="empty error" role="status">The audit is not known: ${error}</p>`}
      ${!error && !answer && html`<p class="empty">…</p>`}
      ${answer && html`<${Lines} lines=${answer.lines} />`}
    </div>
  </section>`;
}

const laterEnd = ({ end, total }) => (end + PAGE >= total ? null : end + PAGE);

function Chain({ answer: { first, end, total, intact, flaw, head }, at }) {
  return html`<span class="note count" title=${`The hash of the last line is ${head}`}>${total === 0 ? "No lines" : `${first + 1} to ${end} of ${total} lines`} at ${timeText(at)}</span>
    <span class=${intact ? "note" : "error"} role="status">${intact ? "No line was altered." : `Not intact: ${flaw}`}</span>`;
}

function Lines({ lines }) {
  const shown = lines.map((text) => lineOf(text)).reverse();
  const hasSeen = shown.some(({ seen }) => seen !== undefined);
  const columns = COLUMNS.filter(([title]) => title !== "Seen" || hasSeen);
  return html`<table class="list audit">
    <thead><tr><th>Time</th>${columns.map(([title]) => html`<th key=${title}>${title}</th>`)}<th>Outcome</th></tr></thead>
    <tbody>${shown.map((line, i) => html`<${Line} key=${i} line=${line} columns=${columns} />`)}</tbody>
  </table>`;
}

function Line({ line, columns }) {
  if (line.note) return html`<tr><td>${timeText(line.time)}</td><td colspan=${columns.length + 1} class="note">${line.note}</td></tr>`;
  return html`<tr class=${`outcome-${line.outcome}`}>
    <td>${timeText(line.time)}</td>
    ${columns.map(([title, textOf]) => html`<${ValueCell} key=${title} name=${title} text=${textOf(line) || "—"} />`)}
    <td data-name="Outcome"><span class="state">${line.word}</span>${line.reason && html`<div class="note">${line.reason}</div>`}</td>
  </tr>`;
}
