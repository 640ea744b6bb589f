// The lines of the plot, clipped to it. Beside its colour each has a pattern and, at its end, a number.

import { shareOf } from "./axis_range.js";

export const DASHES = [[], [8, 3], [2, 3], [10, 3, 2, 3], [5, 5], [14, 4], [2, 6], [10, 3, 2, 3, 2, 3]];

const LINE_WIDTH = 1.6;
// Lines of one pixel are drawn many times as fast as wider ones, and where a line changes in most
// columns of pixels nobody sees the difference.
const HAIRLINE = 1;
const BAND_OPACITY = 0.18;
const PALE = 0.4;
const SPARSE = 0.25; // changes a pixel above which a pattern shows nothing and takes a browser's time

export function drawLines(plot, { curves, window, ranges, heardUntil, colours }) {
  const { ctx, bbox } = plot;
  const { from, to } = window;
  const ratio = devicePixelRatio;
  ctx.save();
  ctx.beginPath();
  ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
  ctx.clip();
  ctx.lineJoin = "bevel";
  const ends = [];
  curves.forEach((curve, i) => {
    const isSparse = curve.count(from, to) < SPARSE * bbox.width;
    const place = { from, to, heardUntil, ...pixels(bbox, window, ranges[curve.axis], isSparse ? same : centre) };
    ctx.strokeStyle = ctx.fillStyle = colours.series[i];
    ctx.lineWidth = isSparse ? LINE_WIDTH * ratio : HAIRLINE;
    ctx.setLineDash(isSparse ? DASHES[i].map((length) => length * ratio) : []);
    const end = drawCurve(ctx, curve, place);
    if (end) ends.push({ text: String(i + 1), ...end, colour: colours.series[i] });
  });
  ctx.setLineDash([]);
  drawNumbers(ctx, ends, { bbox, colours, ratio });
  ctx.restore();
}

// What is a mean of a part of its time is paler. Returns where the line ends; null where there is none.
function drawCurve(ctx, curve, place) {
  let end = null;
  for (const isWhole of curve.hasParts ? [true, false] : [true]) {
    const band = new Path2D();
    curve.drawBand(band, place, isWhole);
    ctx.globalAlpha = isWhole ? BAND_OPACITY : BAND_OPACITY * PALE;
    ctx.fill(band);
    const path = new LinePath();
    curve.draw(path, place, isWhole);
    ctx.globalAlpha = isWhole ? 1 : PALE;
    ctx.stroke(path.path);
    if (path.x !== null && !(path.x <= end?.x)) end = { x: path.x, y: path.y };
  }
  ctx.globalAlpha = 1;
  return end;
}

const same = (pixel) => pixel;
// A hairline between two pixels would be a grey line of two.
const centre = (pixel) => Math.floor(pixel) + 0.5;

function pixels({ left, top, width, height }, { from, to }, range, place) {
  return {
    toX: (time) => place(left + ((time - from) / (to - from)) * width),
    toY: (number) => place(top + height - shareOf(number, range) * height),
  };
}

// A path that knows where its line ends.
class LinePath {
  path = new Path2D();
  x = null;
  y = null;

  moveTo(x, y) {
    this.path.moveTo(x, y);
    this.x = x;
    this.y = y;
  }

  lineTo(x, y) {
    this.path.lineTo(x, y);
    this.x = x;
    this.y = y;
  }
}

// The numbers of the legend at the ends of the lines, one below the other where lines meet.
function drawNumbers(ctx, ends, { bbox, colours, ratio }) {
  const height = 13 * ratio;
  ctx.font = colours.font.replace("12px", `bold ${11 * ratio}px`);
  ctx.textAlign = "center";
  ctx.textBaseline = "middle";
  const places = spread(ends.map(({ y }) => y), height, bbox.top, bbox.top + bbox.height);
  ends.forEach(({ text, x, colour }, i) => {
    ctx.fillStyle = colours.ground;
    ctx.fillRect(x - 13 * ratio, places[i] - height / 2, 12 * ratio, height);
    ctx.fillStyle = colour;
    ctx.fillText(text, x - 7 * ratio, places[i]);
  });
}

// Middles as near to the given ones as texts of that height can be without one hiding another or leaving
// [top, bottom].
export function spread(middles, height, top, bottom) {
  const order = middles.map((_, i) => i).sort((a, b) => middles[a] - middles[b]);
  const places = [...middles];
  let free = top + height / 2;
  for (const i of order) {
    places[i] = Math.max(middles[i], free);
    free = places[i] + height;
  }
  free = bottom - height / 2;
  for (const i of order.reverse()) {
    places[i] = Math.min(places[i], free);
    free = places[i] - height;
  }
  return places;
}
