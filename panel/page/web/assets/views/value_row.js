// One value in the table.

import { ageText, timeText } from "../state/ages.js";
import { formatShort, formatValue } from "../values/format.js";
import { html } from "../html.js";
import { isDrawn, typeOf } from "../values/types.js";
import { Mark } from "../parts/mark.js";
import { Sparkline } from "../parts/sparkline.js";
import { startWrite } from "./write_dialog.js";

export function GroupRow({ line }) {
  return html`<div class="row group" role="row">
    <div role="gridcell" class="cell">${line.title} <span class="note">${line.count}</span></div>
  </div>`;
}

export function ValueRow({ panel, row, now, index, focusable, onFocus }) {
  const mark = panel.mark(row);
  const fresh = mark === "fresh";
  const named = panel.model.plcs.size > 1 && !["plc", "scope"].includes(panel.view.group);
  return html`<div class=${`row value is-${mark}`} role="row" data-key=${row.key} aria-rowindex=${index} tabindex=${focusable ? 0 : -1}
      onFocus=${onFocus} onDblClick=${() => startWrite(panel, row)}>
    <div role="gridcell" class="cell cell-label" title=${[row.label, row.type, row.description, row.error].filter(Boolean).join("\n")}>
      <span class=${`name${sizeOfLabel(row.label)}`} data-whole><span>${named && html`<span class="plc">${row.plc} </span>`}${breakable(row.label)}</span></span>
      ${row.description && html`<span class="description">${row.description}</span>`}
    </div>
    <${ValueCell} row=${row} fresh=${fresh} />
    <div role="gridcell" class="cell cell-unit" data-whole title=${row.unit}><span>${breakable(row.unit)}</span></div>
    <div role="gridcell" class="cell cell-trend" title="The last minute">${isDrawn(row.type) && html`<${Sparkline} trace=${row.trace} now=${now} fresh=${fresh} />`}</div>
    <div role="gridcell" class="cell cell-age" data-whole><span>${ageText(panel.age(row))}</span></div>
    <div role="gridcell" class="cell cell-mark" data-whole><${Mark} mark=${mark} /></div>
    <${ExtremeCell} name="minimum" row=${row} value=${row.minimum} />
    <${ExtremeCell} name="maximum" row=${row} value=${row.maximum} />
    <div role="gridcell" class="cell cell-actions"><${Actions} panel=${panel} row=${row} /></div>
  </div>`;
}

// From so many widths of a digit on smaller digits, so that none is cut off.
const LONG = 14;
const SIZES = [[21, "longest"], [17, "longer"], [LONG, "long"]];

// How wide a text is, in widths of a digit: durations and bit patterns have wide letters.
const widthOf = (text) => [...text].reduce((sum, sign) => sum + (/[A-Z#m]/.test(sign) ? 1.35 : /[-.:]/.test(sign) ? 0.6 : 1), 0);

function sizeOf(text, type) {
  if (typeOf(type).form === "text") return "text";
  const width = widthOf(text);
  return SIZES.find(([most]) => width > most)?.[1] ?? "";
}

// A label may go on in the next line before each of its parts, a unit after "/".
const breakable = (text) => text.split(/(?=[.[])|(?<=\/)/).map((part) => html`${part}<wbr />`);

const sizeOfLabel = (label) => (label.length > 40 ? " longest" : label.length > 24 ? " long" : "");

function ExtremeCell({ name, row, value }) {
  const text = value === null ? "" : formatShort(value, row.type);
  const title = `${text}\nsince ${timeText(row.since)}`;
  return html`<div role="gridcell" class=${`cell cell-${name}`} data-whole title=${title}><span class=${sizeOf(text, row.type)}>${text}</span></div>`;
}

function ValueCell({ row, fresh }) {
  const text = formatValue(row.value, row.type);
  const [, main, beside] = /^(16#\S+) (\(\d+\))$/.exec(text) ?? [null, text, ""];
  const size = `number ${sizeOf(main, row.type)}`;
  return html`<div role="gridcell" class=${typeOf(row.type).form === "text" ? "cell cell-value is-text" : "cell cell-value"} data-whole title=${text}>
    ${fresh ? html`<span class=${size}>${main}</span>` : html`<s class=${size}>${main}</s>`}
    ${beside && html` <span class=${widthOf(main + beside) > LONG ? "beside below" : "beside"}>${beside}</span>`}
  </div>`;
}

function Actions({ panel, row }) {
  const drawn = panel.isDrawn(row);
  const obstacle = panel.model.writeObstacle(row);
  const button = (sign, text, action, { disabled, pressed } = {}) => html`<button type="button" class="quiet small" tabindex="-1"
    title=${text} aria-label=${`${text}: ${row.label}`} aria-pressed=${pressed} disabled=${disabled} onClick=${action}>${sign}</button>`;
  return html`
    ${button("✎", obstacle || "Write (Enter)", () => startWrite(panel, row), { disabled: obstacle !== "" })}
    ${button("∿", drawn ? "Out of the trend (t)" : "Into the trend (t)", () => panel.toggleSeries(row), { disabled: !drawn && !isDrawn(row.type), pressed: String(drawn) })}
    ${button("✕", "Take out of the table (Delete)", () => panel.remove([row]))}
  `;
}
