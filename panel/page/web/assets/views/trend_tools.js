// Above the plot: the span of time, live or back in time, zoom, export.

import { AXES, isSet } from "../state/axis_limits.js";
import { csvOf, download, pngOf } from "../trend/export.js";
import { html } from "../html.js";
import { pan, spanChoices, spanText, zoom } from "../trend/time_window.js";
import { getFile, query } from "../server/api.js";
import { timeText } from "../state/ages.js";
import { withoutMissing } from "../trend/history.js";

const ATTEMPTS = 5; // of the export, where other questions for the past overtake its own

export function TrendTools({ panel, curves, plot, window, onChange }) {
  const { view } = panel;
  const { from, to } = window();
  const around = (factor) => () => {
    const { from: begin, to: end } = window();
    onChange(zoom({ from: begin, to: end }, factor, view.range ? (begin + end) / 2 : end));
  };
  const move = (share) => () => onChange(pan(window(), share));
  const known = spanChoices().some(([span]) => span === Math.round(view.span));
  return html`<div class="toolbar">
    <button type="button" class="side-switch" onClick=${() => panel.openTree(true)}>Choose …</button>
    <button type="button" class="live" aria-pressed=${String(view.range === null)} onClick=${() => panel.show({ range: null })}>Live</button>
    <select aria-label="Span of time" value=${known ? view.span : ""} onChange=${(event) => setSpan(panel, Number(event.target.value))}>
      ${!known && html`<option value="" selected>${spanText(view.span)}</option>`}
      ${spanChoices().map(([span, text]) => html`<option key=${span} value=${span} selected=${view.span === span}>${text}</option>`)}
    </select>
    <span class="group">
      <button type="button" aria-label="Earlier" onClick=${move(-0.5)}>◀</button>
      <button type="button" aria-label="Later" onClick=${move(0.5)}>▶</button>
      <button type="button" aria-label="Wider" onClick=${around(2)}>−</button>
      <button type="button" aria-label="Narrower" onClick=${around(0.5)}>+</button>
    </span>
    <button type="button" aria-pressed=${String(AXES.some((axis) => isSet(panel.axes[axis])))} onClick=${() => panel.open({ name: "axes" })}>Axes …</button>
    <span class="note count">${view.range ? `${timeText(from)} to ${timeText(to)}` : "up to now"}</span>
    <${Exports} panel=${panel} curves=${curves} plot=${plot} window=${window} />
  </div>`;
}

function setSpan(panel, span) {
  const { range } = panel.view;
  panel.show({ span, range: range && { from: range.to - span, to: range.to } });
}

function Exports({ panel, curves, plot, window }) {
  const none = panel.view.series.length === 0;
  const fail = (reason) => panel.tell(`Not exported: ${reason}`);
  const nameOf = (from, ending) => `trend-${timeText(from).replaceAll(":", "").replace(" ", "-")}.${ending}`;
  const csv = async () => {
    const { from, to } = window();
    let isKnown = null;
    for (let i = 0; isKnown === null && i < ATTEMPTS; ++i) isKnown = await curves.load(from, to);
    if (!isKnown) return fail(curves.error || "another span of time was asked for meanwhile.");
    const text = csvOf(curves.all, { from, to }, panel.model.clock.heardUntil);
    if (text === null) return fail("nothing is known of this span of time.");
    download(nameOf(from, "csv"), new Blob([text], { type: "text/csv" }));
  };
  const png = async () => {
    const { from, to } = window();
    download(nameOf(from, "png"), await pngOf(plot.current, curves.all, `${timeText(from)} to ${timeText(to)}`));
  };
  const plcs = [...new Set(panel.view.series.map(({ plc }) => plc))];
  const exact = async (plc) => {
    const { from, to } = window();
    const labels = panel.view.series.filter((one) => one.plc === plc).map((one) => one.label);
    const span = { from: Math.floor(from), to: Math.ceil(to) };
    try {
      const { answer, missing } = await withoutMissing(labels, (label) => getFile(`/history.csv${query({ plc, label, ...span })}`));
      if (answer === null) return fail("neither in the project nor recorded.");
      download(`${plc}-${nameOf(from, "csv")}`, answer);
      if (missing.length > 0) panel.tell(`Neither in the project nor recorded, and so not in the file: ${missing.join(", ")}.`);
    } catch (error) {
      fail(error.message);
    }
  };
  return html`<span class="group">
    <button type="button" disabled=${none} title="What the plot shows" onClick=${csv}>CSV</button>
    <button type="button" disabled=${none} title="A picture of the plot" onClick=${png}>PNG</button>
    ${plcs.map((plc) => html`<button type="button" key=${plc} title=${`Every recorded change of ${plc} in this span of time`} onClick=${() => exact(plc)}>${plcs.length > 1 ? `${plc}: all` : "All changes"}</button>`)}
  </span>`;
}
