// The plot: axes and grid by uPlot, lines of our own, since each value has times of its own and
// holds until the next one.

import uPlot from "../lib/uplot.js";
import { AXES, isSet } from "../state/axis_limits.js";
import { axisRange, beyondRange } from "./axis_range.js";
import { drawLines } from "./plot_lines.js";
import { numberTexts, unitOf } from "./number_axis.js";
import { timeRoom, timeTexts } from "./time_axis.js";

const MIN_HEIGHT = 120;

export class Plot {
  // onCursor(time or null): the pointer moved over the plot.
  constructor(element, { onCursor }) {
    this.element = element;
    this.curves = [];
    this.beyond = [];
    this.trouble = "";
    this.window = { from: 0, to: 1 };
    this.ranges = {}; // of each axis: {min, max}
    this.heardUntil = -Infinity;
    this.onCursor = onCursor;
    this.observer = new ResizeObserver(() => this.resize());
    this.restyle();
    this.observer.observe(element);
  }

  dispose() {
    this.observer.disconnect();
    this.plot.destroy();
  }

  // Anew, with the colours that the page has now.
  restyle() {
    const size = this.#size();
    this.plot?.destroy();
    this.colours = readColours(this.element);
    this.plot = new uPlot(this.#options(size), [[0, 1], [null, null], [null, null]], this.element);
  }

  resize() {
    this.#attempt(() => this.plot.batch(() => this.plot.setSize(this.#size())));
  }

  // limits: of each axis; see state/axis_limits.js. Afterwards `beyond` has the curves of which something
  // is outside of them. A picture that cannot be made is hidden, and `trouble` says why: the one before
  // would look like the one of now.
  draw(curves, window, heardUntil, limits) {
    // Ticks of uPlot are beside the full minute where the window begins between two milliseconds.
    this.window = { from: Math.round(window.from), to: Math.round(window.to) };
    Object.assign(this, { curves, heardUntil });
    this.#attempt(() => this.#draw(limits));
  }

  #attempt(draw) {
    let trouble = "";
    try {
      draw();
    } catch (error) {
      trouble = `The plot cannot be drawn: ${error.message}`;
    }
    if (this.trouble === trouble) return;
    this.trouble = trouble;
    this.element.classList.toggle("undrawn", trouble !== "");
  }

  #draw(limits) {
    const { curves, window } = this;
    const { from, to } = window;
    const on = (axis) => curves.filter((curve) => curve.axis === axis);
    const ranges = Object.fromEntries(AXES.map((axis) => [axis, axisRange(on(axis), from, to, limits[axis])]));
    this.beyond = AXES.flatMap((axis) => (isSet(limits[axis]) ? beyondRange(on(axis), from, to, ranges[axis]) : []));
    this.ranges = ranges;
    const showsRight = on("right").length > 0;
    if (this.showsRight !== showsRight) {
      this.showsRight = showsRight;
      this.restyle();
    }
    this.plot.batch(() => {
      this.plot.setScale("x", { min: from, max: to });
      for (const axis of AXES) {
        const { min, max } = ranges[axis];
        const unit = unitOf(ranges[axis]);
        this.plot.setScale(axis, { min: min / unit, max: max / unit });
      }
    });
  }

  timeAt(clientX) {
    const left = clientX - this.plot.over.getBoundingClientRect().left;
    return this.plot.posToVal(left, "x");
  }

  get width() {
    return Math.max(1, this.plot.over.clientWidth);
  }

  setCursor(time) {
    const left = time === null ? -10 : this.plot.valToPos(time, "x");
    this.plot.setCursor({ left, top: time === null ? -10 : this.plot.over.clientHeight / 2 }, false);
  }

  #size() {
    const { clientWidth, clientHeight } = this.element;
    return { width: Math.max(200, clientWidth), height: Math.max(MIN_HEIGHT, clientHeight) };
  }

  #texts(axis) {
    return (_, splits, __, ___, distance) => numberTexts(splits, distance, this.ranges[axis] && unitOf(this.ranges[axis]));
  }

  #options(size) {
    const { ink, edge } = this.colours;
    const line = { stroke: ink, grid: { stroke: edge, width: 1 }, ticks: { stroke: edge, width: 1 }, font: this.colours.font };
    return {
      ...size,
      ms: 1,
      legend: { show: false },
      cursor: { drag: { setScale: false, x: false, y: false }, points: { show: false }, y: false },
      scales: { x: { time: true, auto: false }, left: { auto: false, range: axisLimits }, right: { auto: false, range: axisLimits } },
      axes: [
        { ...line, values: (_, splits, __, ___, distance) => timeTexts(splits, distance), space: (_, __, from, to, width) => timeRoom(to - from, width), size: 52 },
        { ...line, scale: "left", values: this.#texts("left"), size: axisSize },
        { ...line, scale: "right", side: 1, grid: { show: false }, values: this.#texts("right"), size: axisSize, show: this.showsRight === true },
      ],
      series: [{}, { scale: "left", show: true }, { scale: "right", show: true }],
      hooks: {
        draw: [(plot) => drawLines(plot, this)],
        setCursor: [(plot) => this.onCursor(plot.cursor.left >= 0 ? plot.posToVal(plot.cursor.left, "x") : null)],
      },
    };
  }
}

const axisLimits = (_, min, max) => [min ?? 0, max ?? 1];

// As wide as the longest text.
function axisSize(_, values) {
  const longest = Math.max(0, ...(values ?? []).map((text) => String(text ?? "").length));
  return Math.max(42, 18 + 7.5 * longest);
}

function readColours(element) {
  const style = getComputedStyle(element);
  const colour = (name) => style.getPropertyValue(name).trim();
  return {
    ink: colour("--soft"),
    edge: colour("--edge"),
    ground: colour("--surface"),
    text: colour("--ink"),
    series: Array.from({ length: 8 }, (_, i) => colour(`--series-${i + 1}`)),
    font: `12px ${style.fontFamily}`,
  };
}
