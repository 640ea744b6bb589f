// The values of the plot: at the cursor, or now.

import { clockText, dateText } from "../state/ages.js";
import { DASHES } from "../trend/plot_lines.js";
import { formatShort } from "../values/format.js";
import { html } from "../html.js";
import { keyOf } from "../state/rows.js";
import { Mark } from "../parts/mark.js";

export function TrendLegend({ panel, curves, cursor }) {
  const { series } = panel.view;
  if (series.length === 0) return null;
  return html`<div class="legend">
    <p class="note legend-time">${cursor === null ? "Now" : `At ${dateText(cursor)} ${clockText(cursor)}`}</p>
    <ul>
      ${series.map((one, i) => html`<${Line} key=${keyOf(one)} panel=${panel} one=${one} index=${i} curve=${curves.curves.get(keyOf(one))} cursor=${cursor} />`)}
    </ul>
  </div>`;
}

function Line({ panel, one, index, curve, cursor }) {
  const row = panel.model.rows.get(keyOf(one));
  const several = panel.model.plcs.size > 1;
  const right = one.axis === "right";
  const swap = () => panel.show({
    series: panel.view.series.map((other) => (other === one ? (right ? { plc: one.plc, label: one.label } : { ...one, axis: "right" }) : other)),
  });
  return html`<li>
    <span class=${`legend-number series-${index + 1}`}>${index + 1}</span>
    <svg class=${`swatch series-${index + 1}`} viewBox="0 0 34 10" aria-hidden="true"><path d="M1 5H33" stroke-dasharray=${DASHES[index].join(" ")} /></svg>
    <span class="legend-label" title=${one.label}>${several && html`<span class="plc">${one.plc} </span>`}${one.label}</span>
    <${Reading} panel=${panel} row=${row} curve=${curve} cursor=${cursor} />
    <button type="button" class="quiet small" aria-label=${`${one.label}: to the ${right ? "left" : "right"} axis`} onClick=${swap}>${right ? "right" : "left"} axis</button>
    <button type="button" class="quiet small" aria-label=${`${one.label}: out of the trend`} onClick=${() => panel.toggleSeries(one)}>✕</button>
    ${curve?.note && html`<span class="legend-note note">${curve.note}</span>`}
  </li>`;
}

const sizeOf = (text) => (text.length > 14 ? "number long" : "number");

function Reading({ panel, row, curve, cursor }) {
  const unit = row?.unit || curve?.unit || "";
  if (cursor !== null && curve) {
    const { text, word } = curve.textAt(cursor, panel.model.clock.heardUntil);
    return html`<span class="legend-value"><span class=${sizeOf(text)}>${text}</span> <span class="unit">${unit}</span></span>
      <span class="legend-mark note">${word}</span>`;
  }
  if (!row) return html`<span class="legend-value">—</span><span class="legend-mark" />`;
  const mark = panel.mark(row);
  const text = formatShort(row.value, row.type);
  return html`<span class="legend-value">${mark === "fresh" ? html`<span class=${sizeOf(text)}>${text}</span>` : html`<s class=${sizeOf(text)}>${text}</s>`} <span class="unit">${unit}</span></span>
    <span class="legend-mark"><${Mark} mark=${mark} /></span>`;
}
