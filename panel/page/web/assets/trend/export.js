// What the plot shows, as CSV and as PNG.

import { formatValue } from "../values/format.js";
import { isTextOfDigits } from "../values/types.js";
import { DASHES } from "./plot_lines.js";

const field = (text) => (/[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text);

// RFC 4180, times in UTC: what held at the beginning of the window, and every change in it. A line
// with a state and without a value says from when on nothing is known; one at the beginning, what is not drawn of
// a value. Of a mean `coverage` is the part of its
// time of which it is, `otherwise` what was in the rest. Null where nothing is known at all.
export function csvOf(curves, { from, to }, heardUntil) {
  const lines = curves.flatMap((curve, i) => curveLines(curve, from, to, heardUntil).map((line) => ({ ...line, i })));
  if (lines.every(({ cells }) => cells[0] === "")) return null;
  lines.sort((a, b) => a.time - b.time || a.i - b.i);
  const rows = lines.map(({ time, i, cells }) => [new Date(time).toISOString(), curves[i].plc, curves[i].label, ...cells]);
  return [["time", "plc", "label", "value", "minimum", "maximum", "state", "coverage", "otherwise"], ...rows]
    .map((row) => row.map((text) => field(String(text))).join(",") + "\r\n")
    .join("");
}

function curveLines(curve, from, to, heardUntil) {
  // Before what held at the beginning, so that this counts for whoever goes by times.
  const lines = curve.note ? [{ time: from, cells: ["", "", "", curve.note, "", ""] }] : [];
  for (const { trace, from: begin, to: end } of curve.parts(from, Math.min(to, heardUntil), heardUntil)) {
    for (let i = Math.max(0, trace.at(begin)); i < trace.length && trace.times[i] <= end; ++i) {
      const cells = cellsOf(trace, i, curve.type);
      // What was recorded goes on live with the same value.
      if (i <= trace.at(begin) && lines.at(-1)?.cells.join() === cells.join()) continue;
      lines.push({ time: Math.max(begin, Math.round(trace.times[i])), cells });
    }
  }
  return lines;
}

function cellsOf(trace, i, type) {
  if (trace.words[i]) return ["", "", "", trace.words[i], "", ""];
  if (trace.low) {
    const { least, most } = trace.raw[i];
    return [trace.numbers[i], plainText(least, type), plainText(most, type), "mean", trace.coverage[i], trace.rests[i]];
  }
  return [plainText(trace.raw[i], type), "", "", "good", "", ""];
}

// Numbers as numbers, so that spreadsheets read them.
function plainText(value, type) {
  if (typeof value === "boolean" || isTextOfDigits(type)) return String(value);
  return typeof value === "number" ? String(value) : formatValue(value, type);
}

const LINE = 20; // pixels, as those below
const EDGE = 12;
const SAMPLE = 50; // of a line of the legend, with the room behind it

const nameOf = ({ plc, label, unit, axis }) => `${plc} ${label}${unit ? ` [${unit}]` : ""}, ${axis} axis`;

// A picture of the plot with its names, as wide as the longest of these.
export function pngOf(plot, curves, title) {
  const source = plot.plot.ctx.canvas;
  const ratio = devicePixelRatio;
  const { ground, text, font } = plot.colours;
  const canvas = document.createElement("canvas");
  const ctx = canvas.getContext("2d");
  ctx.font = font;
  const widthOf = (words) => ctx.measureText(words).width + 2 * EDGE;
  const width = Math.max(widthOf(title), ...curves.map((curve) => SAMPLE + widthOf(nameOf(curve))));
  canvas.width = Math.max(source.width, Math.ceil(width * ratio));
  canvas.height = source.height + LINE * ratio * (curves.length + 1.6);
  ctx.fillStyle = ground;
  ctx.fillRect(0, 0, canvas.width, canvas.height);
  ctx.drawImage(source, 0, LINE * 1.3 * ratio);
  ctx.scale(ratio, ratio);
  ctx.font = font;
  ctx.fillStyle = text;
  ctx.fillText(title, EDGE, LINE * 0.9);
  curves.forEach((curve, i) => drawName(ctx, curve, i, { y: source.height / ratio + LINE * (1.9 + i), colours: plot.colours }));
  return new Promise((done) => canvas.toBlob(done, "image/png"));
}

function drawName(ctx, curve, i, { y, colours }) {
  ctx.strokeStyle = colours.series[i];
  ctx.lineWidth = 2;
  ctx.setLineDash(DASHES[i]);
  ctx.beginPath();
  ctx.moveTo(EDGE, y - 4);
  ctx.lineTo(EDGE + 40, y - 4);
  ctx.stroke();
  ctx.fillText(nameOf(curve), EDGE + SAMPLE, y);
}

// Hands a file to the browser's downloads.
export function download(name, blob) {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(blob);
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}
