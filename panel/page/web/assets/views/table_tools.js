// Above the table: filter, groups, and what is done with all rows.

import { html } from "../html.js";

const GROUP_WORDS = { none: "Not grouped", plc: "By PLC", scope: "By scope", mark: "By quality" };

export function TableTools({ panel, rows, shown }) {
  const { view } = panel;
  const leave = (event) => {
    if (event.key === "Escape") {
      panel.show({ filter: "" });
      document.querySelector(".grid [tabindex='0']")?.focus();
    }
  };
  return html`<div class="toolbar">
    <button type="button" class="side-switch" onClick=${() => panel.openTree(true)}>Choose …</button>
    <input id="filter" type="search" placeholder="Filter ( f )" aria-label="Filter the table" value=${view.filter}
      onInput=${(event) => panel.show({ filter: event.target.value })} onKeyDown=${leave} />
    <select aria-label="Groups" value=${view.group} onChange=${(event) => panel.show({ group: event.target.value })}>
      ${Object.entries(GROUP_WORDS).map(([name, text]) => html`<option key=${name} value=${name} selected=${view.group === name}>${text}</option>`)}
    </select>
    <span class="note count">${shown === rows.length ? `${rows.length} values` : `${shown} of ${rows.length} values`}</span>
    <button type="button" disabled=${rows.length === 0} onClick=${() => panel.resetExtremes(rows)}>Reset min / max</button>
    <button type="button" disabled=${rows.length === 0} onClick=${() => panel.show({ chosen: [] })}>Clear</button>
  </div>`;
}
