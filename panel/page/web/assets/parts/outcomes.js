// Outcomes of writes whose dialog was closed before they came: they stay until somebody has read them.

import { formatValue } from "../values/format.js";
import { html } from "../html.js";
import { outcomeText } from "../state/write_process.js";

export function Outcomes({ panel }) {
  const close = (process) => {
    panel.outcomes = panel.outcomes.filter((one) => one !== process);
    panel.changed();
  };
  return html`<ul class="outcomes" role="status" aria-label="Outcomes of writes">
    ${panel.outcomes.map((process) => html`<${Outcome} key=${process.id} process=${process} onClose=${() => close(process)} />`)}
  </ul>`;
}

function Outcome({ process, onClose }) {
  const { plc, label, value, type, unit, outcome } = process;
  const { word, text } = outcomeText(outcome);
  return html`<li class=${`outcome-${outcome.outcome}`}>
    <p>${plc} ${label} = <span class="exact">${formatValue(value, type)}</span>${unit && ` ${unit}`}: <strong>${word}</strong> ${text}</p>
    <button type="button" class="quiet small" aria-label=${`Close the outcome of ${label}`} onClick=${onClose}>✕</button>
  </li>`;
}
