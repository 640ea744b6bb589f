// The keys, and what the marks mean.

import { Dialog } from "../parts/dialog.js";
import { html } from "../html.js";
import { Mark } from "../parts/mark.js";
import { MARKS } from "../state/freshness.js";

const KEYS = [
  ["Everywhere", [
    ["1 2 3 4 5", "values, trend, alarms, recipes, audit"],
    ["/", "search for values"],
    ["b", "to the tree of symbols"],
    ["?", "this help"],
    ["Esc", "close a dialog, leave a field"],
  ]],
  ["Tree", [
    ["↑ ↓", "move"],
    ["→ ←", "open and close"],
    ["Enter", "choose a value; all values below a node"],
  ]],
  ["Table", [
    ["g", "to the rows"],
    ["f", "to the filter"],
    ["↑ ↓ Home End", "move"],
    ["Enter", "write the value"],
    ["t", "into the trend, or out of it"],
    ["r", "minimum and maximum anew"],
    ["Delete", "take the value out of the table"],
  ]],
  ["Trend, with the plot in focus", [
    ["← →", "move the cursor"],
    ["Shift ← →", "earlier, later"],
    ["+ −", "narrower, wider"],
    ["PgUp PgDn", "a whole window earlier, later"],
    ["End", "live"],
  ]],
];

export function HelpDialog({ panel }) {
  return html`<${Dialog} title="Keys and marks" wide onClose=${() => panel.close()}>
    <div class="help">
      ${KEYS.map(([title, keys]) => html`<section key=${title}>
        <h3>${title}</h3>
        <dl>${keys.map(([key, text]) => html`<div key=${key}><dt>${key.split(" ").map((one) => html`<kbd>${one}</kbd> `)}</dt><dd>${text}</dd></div>`)}</dl>
      </section>`)}
      <section>
        <h3>Marks</h3>
        <dl>${Object.entries(MARKS).map(([mark, { text }]) => html`<div key=${mark}><dt><${Mark} mark=${mark} /></dt><dd>${text}</dd></div>`)}</dl>
      </section>
    </div>
    <footer class="dialog-foot">
      <a href="/assets/licences.txt" target="_blank" rel="noopener">Licences of what this page is made with</a>
      <span class="note">plc-panel ${panel.model.session?.version}</span>
    </footer>
  <//>`;
}
