// Alarms: what is active, what waits for somebody, what was.

import { ageText, timeText } from "../state/ages.js";
import { ALARM_WORDS, attentionFirst, needsAcknowledgement, occurrenceNow } from "../state/alarm_list.js";
import { ask, get, query } from "../server/api.js";
import { html, useEffect, useState } from "../html.js";

const HISTORY_LIMIT = 500;

export function AlarmsView({ panel }) {
  const [past, setPast] = useState(null); // null: now; otherwise {}, {alarms} or {error}
  const load = async () => {
    setPast({});
    try {
      const { alarms } = await get(`/alarms/history${query({ limit: HISTORY_LIMIT })}`);
      setPast((shown) => shown && { alarms });
    } catch (error) {
      setPast((shown) => shown && { error: error.message });
    }
  };
  const isPast = past !== null;
  // What came while nothing was heard.
  useEffect(() => void (isPast && load()), [panel.model.streams]);
  return html`<section class="page-section" aria-label="Alarms">
    <div class="toolbar">
      <button type="button" aria-pressed=${String(!isPast)} onClick=${() => setPast(null)}>Now</button>
      <button type="button" aria-pressed=${String(isPast)} onClick=${load}>History</button>
      <span class="note count"></span>
    </div>
    <div class="scroll">${isPast ? html`<${Past} panel=${panel} past=${past} />` : html`<${Current} panel=${panel} />`}</div>
  </section>`;
}

function Past({ panel, past: { alarms, error } }) {
  if (error) return html`<p class="empty error">The history is not known: ${error}</p>`;
  if (!alarms) return html`<p class="empty">…</p>`;
  if (alarms.length === 0) return html`<p class="empty">Nothing is recorded.</p>`;
  const known = panel.knowsAlarms();
  return html`${alarms.length >= HISTORY_LIMIT && html`<p class="empty">The newest ${HISTORY_LIMIT}.</p>`}
    <${List} panel=${panel} alarms=${alarms.map((one) => occurrenceNow(one, panel.model.alarms.get(one.id), known))} past />`;
}

function Current({ panel }) {
  const { alarms } = panel.model;
  const known = panel.knowsAlarms();
  if (alarms.size === 0) return html`<p class="empty">${known ? "No alarm is configured." : "The alarms are not known yet."}</p>`;
  const shown = attentionFirst(alarms.values());
  return html`<${List} panel=${panel} alarms=${known ? shown : shown.map((one) => ({ ...one, state: "unknown" }))} old=${!known} />`;
}

function List({ panel, alarms, past, old }) {
  return html`<table class=${old ? "list alarms old" : "list alarms"}>
    <thead><tr><th>State</th><th>Alarm</th><th>Begin</th><th>End</th><th>Acknowledged</th><th><span class="unseen">Actions</span></th></tr></thead>
    <tbody>${alarms.map((alarm) => html`<${Alarm} key=${`${alarm.id} ${alarm.since}`} panel=${panel} alarm=${alarm} past=${past} />`)}</tbody>
  </table>`;
}

function Alarm({ panel, alarm, past }) {
  const { state } = alarm;
  const now = panel.now();
  const begun = state !== "normal" && alarm.since;
  const lasting = state === "active" && now !== null && alarm.since ? ` (${ageText(now - alarm.since)})` : "";
  const asks = !past && needsAcknowledgement(alarm) && panel.model.mayChange();
  return html`<tr class=${`alarm alarm-${state}`}>
    <td><span class="state">${state === "active" ? "▲ " : ""}${ALARM_WORDS[state] ?? state}</span></td>
    <td><strong>${alarm.text || alarm.label}</strong><div class="note">${alarm.plc} · ${alarm.label} ${alarm.condition}</div></td>
    <td data-name="Begin">${begun ? timeText(alarm.since) + lasting : "—"}</td>
    <td data-name="End">${timeText(alarm.ended)}</td>
    <td data-name="Acknowledged">${alarm.acknowledgedBy ? html`${alarm.acknowledgedBy}<div class="note">${timeText(alarm.acknowledgedAt)}</div>` : "—"}</td>
    <td>${asks && html`<button type="button" onClick=${() => acknowledge(panel, alarm)}>Acknowledge</button>`}</td>
  </tr>`;
}

async function acknowledge(panel, alarm) {
  const name = alarm.text || alarm.label;
  const { status, body } = await ask("POST", `/alarms/${encodeURIComponent(alarm.id)}/acknowledge`, { since: alarm.since });
  panel.tellChange(status, body, { done: `${name} is acknowledged.`, failed: `${name} is not acknowledged`, unknown: `Whether ${name} is acknowledged is not known` });
  panel.refresh();
}
