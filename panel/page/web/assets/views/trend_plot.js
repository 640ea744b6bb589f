// Keeps the plot drawn: each frame in which the picture has moved by a pixel or has new values.

import { html, useEffect, useRef } from "../html.js";
import { keyOf } from "../state/rows.js";
import { listenForGestures } from "../trend/gestures.js";
import { Plot } from "../trend/plot.js";

const LOAD_DELAY = 200; // ms of rest before the past of another window is asked for
const CALM_INTERVAL = 1000; // ms between two pictures for those who want no motion

export function TrendPlot({ panel, curves, plot, window, cursor, onChange, onCursor }) {
  const element = useRef(null);
  const state = useRef({ cursor: null });
  state.current.cursor = cursor;
  const { view } = panel;

  usePlot(element, state, { panel, curves, plot, window, onChange, onCursor });
  useCurves(panel, curves, window);
  return html`<div class="plot-frame">
    <div class="plot" ref=${element} tabindex="0" role="application" aria-label="Plot. Arrows move the cursor, plus and minus zoom, shift and arrows pan, End is live."></div>
    ${view.series.length === 0 && html`<p class="empty plot-empty">Choose up to eight values in the tree, or press <kbd>t</kbd> at a row of the table.</p>`}
    <${Beyond} curves=${curves} plot=${plot.current} />
    ${plot.current?.trouble && html`<p class="plot-error" role="alert">${plot.current.trouble}</p>`}
    ${curves.error && html`<p class="plot-error" role="status">${curves.error}</p>`}
  </div>`;
}

// The plot as long as its element is there, drawn and moved.
function usePlot(element, state, { panel, curves, plot, window, onChange, onCursor }) {
  useEffect(() => {
    plot.current = new Plot(element.current, { onCursor });
    const stops = [
      listenForGestures(plot.current, element.current, {
        window,
        change: onChange,
        live: () => panel.show({ range: null }),
        cursor: () => state.current.cursor,
        setCursor: (time) => {
          plot.current.setCursor(time);
          onCursor(time);
        },
      }),
      keepDrawn(panel, curves, plot.current, window),
      followStyle(plot.current),
    ];
    return () => {
      for (const stop of stops) stop();
      plot.current.dispose();
      plot.current = null;
    };
  }, []);
}

// The curves of the view, with the past of its window.
function useCurves(panel, curves, window) {
  const { series, span, range } = panel.view;
  useEffect(() => {
    curves.show(panel.view.series);
    curves.describe();
  }, [series.map((one) => `${keyOf(one)}|${one.axis ?? ""}`).join("\n")]);
  useEffect(() => {
    const timer = setTimeout(() => load(curves, window), curves.loaded ? LOAD_DELAY : 0);
    return () => clearTimeout(timer);
  }, [series.map(keyOf).join("\n"), span, range?.from, range?.to, panel.model.streams]);
}

// What given axes cut off must not look as if it were not there.
function Beyond({ curves, plot }) {
  const numbers = curves.all.flatMap((curve, i) => (plot?.beyond.includes(curve) ? [i + 1] : []));
  if (numbers.length === 0) return null;
  return html`<p class="plot-beyond" role="status">Beyond the axes that were set: line ${numbers.join(", ")}</p>`;
}

function load(curves, window) {
  if (curves.all.length === 0) return;
  const { from, to } = window();
  curves.load(from, to);
}

// Returns what stops it.
function keepDrawn(panel, curves, plot, window) {
  const calm = matchMedia("(prefers-reduced-motion: reduce)");
  let frame = requestAnimationFrame(function draw() {
    frame = requestAnimationFrame(draw);
    const { from, to } = window();
    if (curves.isDue(from, to)) load(curves, window);
    const last = plot.drawn;
    const pixels = last ? ((to - last.to) / (to - from)) * plot.width : Infinity;
    const moved = !last || Math.abs(pixels) >= 1 || Math.abs(to - from - (last.to - last.from)) > 1;
    const news = !last || last.version !== curves.version || last.heard !== panel.model.clock.heardUntil || last.axes !== panel.axes || last.size !== plot.plot.width;
    if (!moved && !news) return;
    if (calm.matches && last && panel.view.range === null && performance.now() - last.at < CALM_INTERVAL) return;
    curves.describe();
    plot.draw(curves.all, { from, to }, panel.model.clock.heardUntil, panel.axes);
    plot.drawn = { from, to, version: curves.version, heard: panel.model.clock.heardUntil, axes: panel.axes, size: plot.plot.width, at: performance.now() };
  });
  return () => cancelAnimationFrame(frame);
}

function followStyle(plot) {
  const restyle = () => {
    plot.restyle();
    plot.drawn = null;
  };
  const scheme = matchMedia("(prefers-color-scheme: dark)");
  const observer = new MutationObserver(restyle);
  observer.observe(document.documentElement, { attributes: true, attributeFilter: ["data-theme"] });
  scheme.addEventListener("change", restyle);
  return () => {
    observer.disconnect();
    scheme.removeEventListener("change", restyle);
  };
}
