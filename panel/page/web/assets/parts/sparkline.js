// The last minute of a value as a small line in its row.

import { html } from "../html.js";
import { drawSteps } from "../trend/step_path.js";
import { shareOf } from "../trend/axis_range.js";
import { extent } from "../trend/trace.js";

const SPAN = 60000; // ms
const WIDTH = 120;
const HEIGHT = 22;
const MARGIN = 2;

class PathText {
  parts = [];
  moveTo(x, y) {
    this.parts.push(`M${x.toFixed(1)} ${y.toFixed(1)}`);
  }
  lineTo(x, y) {
    this.parts.push(`L${x.toFixed(1)} ${y.toFixed(1)}`);
  }
}

export function Sparkline({ trace, now, fresh }) {
  if (now === null || trace.length === 0) return html`<svg class="sparkline" aria-hidden="true" />`;
  const from = now - SPAN;
  const range = extent(trace, from, now);
  if (!range) return html`<svg class="sparkline" aria-hidden="true" />`;
  const isFlat = range.most === range.least;
  const path = new PathText();
  drawSteps(path, trace, {
    from,
    to: now,
    until: now,
    toX: (time) => ((time - from) / SPAN) * WIDTH,
    toY: (number) =>
      isFlat ? HEIGHT / 2 : HEIGHT - MARGIN - shareOf(number, { min: range.least, max: range.most }) * (HEIGHT - 2 * MARGIN),
  });
  return html`<svg class=${fresh ? "sparkline" : "sparkline old"} viewBox=${`0 0 ${WIDTH} ${HEIGHT}`} preserveAspectRatio="none" aria-hidden="true">
    <path d=${path.parts.join("")} vector-effect="non-scaling-stroke" />
  </svg>`;
}
