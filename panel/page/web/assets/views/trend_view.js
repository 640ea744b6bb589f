// Up to eight values over time: live, or back in time.

import { Curves } from "../trend/curves.js";
import { html, useEffect, useRef, useState } from "../html.js";
import { settle, windowOf } from "../trend/time_window.js";
import { SERIES_LIMIT } from "../state/view_address.js";
import { SymbolTree } from "./symbol_tree.js";
import { TrendLegend } from "./trend_legend.js";
import { TrendPlot } from "./trend_plot.js";
import { TrendTools } from "./trend_tools.js";

export function TrendView({ panel }) {
  const curves = useRef(null);
  curves.current ??= new Curves(panel.model);
  const plot = useRef(null);
  const [cursor, setCursor] = useState(null);
  useEffect(() => () => curves.current.dispose(), []);

  const { view } = panel;
  const change = (window) => panel.show(settle(window, panel.now() ?? Date.now()));
  const current = () => windowOf(panel.view, panel.now() ?? Date.now());
  const choice = {
    isChosen: (name) => panel.isDrawn(name),
    toggle: (name) => panel.toggleSeries(name),
    addAll: (names) => names.filter((name) => !panel.isDrawn(name)).slice(0, SERIES_LIMIT + 1 - view.series.length).forEach((name) => panel.toggleSeries(name)),
  };
  return html`
    <aside class=${panel.treeOpen ? "side open" : "side"} aria-label="Symbols">
      <button type="button" class="side-switch primary" onClick=${() => panel.openTree(false)}>Show the trend</button>
      <${SymbolTree} panel=${panel} choice=${choice} />
    </aside>
    <section class="trend" aria-label="Trend">
      <${TrendTools} panel=${panel} curves=${curves.current} plot=${plot} window=${current} onChange=${change} />
      <${TrendPlot} panel=${panel} curves=${curves.current} plot=${plot} window=${current} cursor=${cursor} onChange=${change} onCursor=${setCursor} />
      <${TrendLegend} panel=${panel} curves=${curves.current} cursor=${cursor} />
    </section>
  `;
}
