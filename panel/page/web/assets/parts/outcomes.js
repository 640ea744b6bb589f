// Outcomes of writes whose dialog was closed before they came, and of other changes that were not done or are not
// known to be: they stay until somebody has read them.

import { formatValue } from "../values/format.js";
import { html } from "../html.js";
import { outcomeText } from "../state/write_process.js";

export function Outcomes({ panel }) {
  const close = (outcome) => {
    panel.outcomes = panel.outcomes.filter((one) => one !== outcome);
    panel.changed();
  };
  return html`<ul class="outcomes" role="status" aria-label="Outcomes">
    ${panel.outcomes.map((one) => html`<li key=${one.id} class=${one.process && `outcome-${one.process.outcome.outcome}`}>
      <p>${one.process ? html`<${Written} process=${one.process} />` : one.text}</p>
      <button type="button" class="quiet small" aria-label=${`Close the outcome of ${one.process?.label ?? one.text}`} onClick=${() => close(one)}>✕</button>
    </li>`)}
  </ul>`;
}

function Written({ process: { plc, label, value, type, unit, outcome } }) {
  const { word, text } = outcomeText(outcome);
  return html`${plc} ${label} = <span class="exact">${formatValue(value, type)}</span>${unit && ` ${unit}`}: <strong>${word}</strong> ${text}`;
}
