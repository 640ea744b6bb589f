// Alarms: what is active, what waits for somebody, what was.

import { ageText, timeText } from "../state/ages.js";
import { ALARM_WORDS, attentionFirst, needsAcknowledgement } from "../state/alarm_list.js";
import { get, query, request } from "../server/api.js";
import { html, useEffect, useState } from "../html.js";

const HISTORY_LIMIT = 500;

export function AlarmsView({ panel }) {
  const [past, setPast] = useState(null); // null: now; otherwise {alarms} or {error}
  const load = async () => {
    setPast({ alarms: [] });
    try {
      const { alarms } = await get(`/alarms/history${query({ limit: HISTORY_LIMIT })}`);
      setPast({ alarms });
    } catch (error) {
      setPast({ error: error.message });
    }
  };
  return html`<section class="page-section" aria-label="Alarms">
    <div class="toolbar">
      <button type="button" aria-pressed=${String(past === null)} onClick=${() => setPast(null)}>Now</button>
      <button type="button" aria-pressed=${String(past !== null)} onClick=${load}>History</button>
      <span class="note count"></span>
    </div>
    <div class="scroll">
      ${past === null ? html`<${Current} panel=${panel} />` : past.error ? html`<p class="empty error">The history did not come: ${past.error}</p>` : html`<${List} panel=${panel} alarms=${past.alarms} past />`}
    </div>
  </section>`;
}

function Current({ panel }) {
  const { alarms, alarmsKnown } = panel.model;
  if (!alarmsKnown) return html`<p class="empty">The alarms are not known yet.</p>`;
  if (alarms.size === 0) return html`<p class="empty">No alarm is configured.</p>`;
  return html`<${List} panel=${panel} alarms=${attentionFirst(alarms.values())} />`;
}

function List({ panel, alarms, past }) {
  const heard = panel.isHeard();
  if (alarms.length === 0) return html`<p class="empty">Nothing is recorded.</p>`;
  return html`<table class=${heard || past ? "list alarms" : "list alarms old"}>
    <thead><tr><th>State</th><th>Alarm</th><th>Begin</th><th>End</th><th>Acknowledged</th><th><span class="unseen">Actions</span></th></tr></thead>
    <tbody>${alarms.map((alarm) => html`<${Alarm} key=${`${alarm.id} ${alarm.since}`} panel=${panel} alarm=${alarm} known=${heard} past=${past} />`)}</tbody>
  </table>`;
}

function Alarm({ panel, alarm, known, past }) {
  const state = past ? (alarm.ended ? "ended" : alarm.state) : known ? alarm.state : "unknown";
  const now = panel.now();
  const begun = alarm.state !== "normal" && alarm.since;
  const lasting = state === "active" && now !== null && alarm.since ? ` (${ageText(now - alarm.since)})` : "";
  return html`<tr class=${`alarm alarm-${state}`}>
    <td><span class="state">${state === "active" ? "▲ " : ""}${ALARM_WORDS[state] ?? state}</span></td>
    <td><strong>${alarm.text || alarm.label}</strong><div class="note">${alarm.plc} · ${alarm.label} ${alarm.condition}</div></td>
    <td data-name="Begin">${begun ? timeText(alarm.since) + lasting : "—"}</td>
    <td data-name="End">${timeText(alarm.ended)}</td>
    <td data-name="Acknowledged">${alarm.acknowledgedBy ? html`${alarm.acknowledgedBy}<div class="note">${timeText(alarm.acknowledgedAt)}</div>` : "—"}</td>
    <td>${!past && needsAcknowledgement(alarm) && html`<button type="button" disabled=${!known || !canAcknowledge(panel)} onClick=${() => acknowledge(panel, alarm)}>Acknowledge</button>`}</td>
  </tr>`;
}

const canAcknowledge = (panel) => ["operator", "engineer"].includes(panel.model.session?.role);

async function acknowledge(panel, alarm) {
  try {
    const { status, body } = await request("POST", `/alarms/${encodeURIComponent(alarm.id)}/acknowledge`, { since: alarm.since });
    if (status >= 200 && status < 300) panel.tell(`${alarm.text || alarm.label} is acknowledged.`);
    else panel.tell(`Not acknowledged: ${body?.error ?? status}`);
  } catch {
    panel.tell("Whether it is acknowledged is not known: the server does not answer.");
  }
  panel.refresh();
}
