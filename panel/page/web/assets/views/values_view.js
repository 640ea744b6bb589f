// Tree of symbols beside the table of chosen values.

import { html } from "../html.js";
import { VALUES_LIMIT } from "../panel.js";
import { SymbolTree } from "./symbol_tree.js";
import { ValuesTable } from "./values_table.js";

export function ValuesView({ panel }) {
  const open = panel.treeOpen;
  const choice = {
    isChosen: (name) => panel.isChosen(name),
    toggle: (name) => (panel.isChosen(name) ? panel.remove([name]) : panel.add([name])),
    addAll: (names) => {
      panel.add(names);
      panel.tell(names.length < VALUES_LIMIT ? `${names.length} values are in the table.` : `The first ${names.length} values are in the table.`);
    },
  };
  return html`
    <aside class=${open ? "side open" : "side"} aria-label="Symbols">
      <button type="button" class="side-switch primary" onClick=${() => panel.openTree(false)}>Show the table</button>
      <${SymbolTree} panel=${panel} choice=${choice} />
    </aside>
    <${ValuesTable} panel=${panel} />
  `;
}
