// The chosen values, live. Only the lines in sight are made, so that thousands can be chosen.

import { arrange } from "../state/arrangement.js";
import { html, useEffect, useLayoutEffect, useRef, useState } from "../html.js";
import { markCut } from "../parts/whole.js";
import { TableTools } from "./table_tools.js";
import { ValueRow, GroupRow } from "./value_row.js";
import { startWrite } from "./write_dialog.js";

const SPARE = 6; // lines made beyond what is in sight

const COLUMNS = [
  ["label", "Label"],
  ["value", "Value"],
  [null, "Unit"],
  [null, "Trend"],
  ["age", "Age"],
  ["mark", "Quality"],
  [null, "Minimum"],
  [null, "Maximum"],
];

export function ValuesTable({ panel }) {
  const { view } = panel;
  const scroller = useRef(null);
  const place = usePlace(scroller);
  const rows = panel.rowsOf(view.chosen);
  const lines = arrange(rows, view, { mark: (row) => panel.mark(row), age: (row) => panel.age(row) });
  const shown = lines.filter((line) => line.row);
  const focus = useRowFocus(scroller, place, lines, shown);
  const press = (event) => pressKey(event, panel, place, shown, focus);
  useLayoutEffect(() => markCut(scroller.current));
  return html`<section class="table" aria-label="Chosen values">
    <${TableTools} panel=${panel} rows=${rows} shown=${shown.length} />
    <div class="grid" role="grid" aria-rowcount=${lines.length + 1} ref=${scroller} onKeyDown=${press}>
      <${Head} panel=${panel} />
      <${Lines} panel=${panel} lines=${lines} place=${place} current=${shown[focus.current]} onFocus=${focus.set} />
      ${lines.length === 0 && html`<${Empty} panel=${panel} chosen=${rows.length} />`}
    </div>
  </section>`;
}

// What of the table is in sight, in pixels; `line` is the height of one.
function usePlace(scroller) {
  const [place, setPlace] = useState({ top: 0, height: 600, line: 32 });
  useLayoutEffect(() => {
    const element = scroller.current;
    const measure = () => {
      const line = parseFloat(getComputedStyle(element).getPropertyValue("--line")) || 32;
      setPlace({ top: element.scrollTop, height: element.clientHeight, line });
    };
    const observer = new ResizeObserver(measure);
    observer.observe(element);
    element.addEventListener("scroll", measure, { passive: true });
    measure();
    return () => observer.disconnect();
  }, []);
  return place;
}

// The row that keys are for: {current, set(row), move(index)}. It may be one that is made only when it has
// been scrolled to.
function useRowFocus(scroller, place, lines, shown) {
  const [focused, setFocused] = useState("");
  const wanted = useRef(null);
  useEffect(() => {
    if (wanted.current === null) return;
    const row = scroller.current.querySelector(`[data-key="${CSS.escape(wanted.current)}"]`);
    if (!row) return;
    wanted.current = null;
    row.focus({ preventScroll: true });
  });
  const move = (index) => {
    const line = shown[Math.min(shown.length - 1, Math.max(0, index))];
    if (!line) return;
    setFocused(line.row.key);
    wanted.current = line.row.key;
    bringIntoSight(scroller.current, lines.indexOf(line) * place.line, place);
  };
  return { current: Math.max(0, shown.findIndex(({ row }) => row.key === focused)), set: (row) => setFocused(row.key), move };
}

function bringIntoSight(element, top, { line, height }) {
  if (top < element.scrollTop + line) element.scrollTop = top - line;
  else if (top + 2 * line > element.scrollTop + height) element.scrollTop = top + 2 * line - height;
}

function pressKey(event, panel, place, shown, { current, move }) {
  if (event.ctrlKey || event.altKey || event.metaKey || event.target.closest("button")) return;
  const row = shown[current]?.row;
  if (!row) return;
  const page = Math.max(1, Math.floor(place.height / place.line) - 2);
  const actions = {
    ArrowDown: () => move(current + 1),
    ArrowUp: () => move(current - 1),
    PageDown: () => move(current + page),
    PageUp: () => move(current - page),
    Home: () => move(0),
    End: () => move(shown.length - 1),
    Enter: () => startWrite(panel, row),
    t: () => panel.toggleSeries(row),
    r: () => panel.resetExtremes([row]),
    Delete: () => {
      move(current + 1 < shown.length ? current + 1 : current - 1);
      panel.remove([row]);
    },
  };
  if (!actions[event.key]) return;
  event.preventDefault();
  actions[event.key]();
}

// Those in sight, between spaces as high as the others.
function Lines({ panel, lines, place, current, onFocus }) {
  const first = Math.max(0, Math.floor(place.top / place.line) - SPARE);
  const last = Math.min(lines.length, Math.ceil((place.top + place.height) / place.line) + SPARE);
  const now = panel.now();
  const space = (count) => html`<div role="presentation" style=${{ height: `${count * place.line}px` }}></div>`;
  return html`
    ${space(first)}
    ${lines.slice(first, last).map((line, i) =>
      line.row
        ? html`<${ValueRow} key=${line.row.key} panel=${panel} row=${line.row} now=${now} index=${first + i + 2}
            focusable=${current === line} onFocus=${() => onFocus(line.row)} />`
        : html`<${GroupRow} key=${`group ${line.title}`} line=${line} />`,
    )}
    ${space(lines.length - last)}
  `;
}

function Head({ panel }) {
  const { sort, descending } = panel.view;
  const order = (name) => (sort === name ? (descending ? "descending" : "ascending") : null);
  const press = (name) => {
    if (sort !== name) panel.show({ sort: name, descending: false });
    else if (!descending) panel.show({ descending: true });
    else panel.show({ sort: "chosen", descending: false });
  };
  return html`<div class="row head" role="row">
    ${COLUMNS.map(([name, title]) => html`<div role="columnheader" key=${title} class=${`cell cell-${(name ?? title).toLowerCase().replace(" ", "-")}`} aria-sort=${name ? order(name) : null}>
      ${name ? html`<button type="button" class="sort" onClick=${() => press(name)}>${title}<span aria-hidden="true">${{ ascending: " ▲", descending: " ▼" }[order(name)] ?? ""}</span></button>` : title}
    </div>`)}
    <div role="columnheader" class="cell cell-actions"><span class="unseen">Actions</span></div>
  </div>`;
}

function Empty({ panel, chosen }) {
  if (chosen > 0) return html`<p class="empty">No chosen value fits the filter.</p>`;
  return html`<div class="empty">
    <p><strong>Nothing is chosen yet.</strong></p>
    <p>Open the tree and choose values, or search for them with <kbd>/</kbd>. What is chosen stays in the address of the page, which can be shared.</p>
  </div>`;
}
