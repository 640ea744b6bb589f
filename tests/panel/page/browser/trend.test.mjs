// The trend: lines, gaps, zoom, pan, cursor, export, and how fast it is drawn.

import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { readFile } from "node:fs/promises";

import { drawn, follow, inkOf, looksFresh, named, openPage, rowOf, shows, standIn, until, withBrowser } from "./support.mjs";
import { now, setClock } from "../stand_in/clock.mjs";

let server;
withBrowser();
before(async () => (server = await standIn()));
after(() => server.stop());

const inked = async (page) => (await inkOf(page)).columns;

const rangeOf = async (page) => {
  const fields = new URLSearchParams((await page.evaluate(() => location.hash)).split("?")[1]);
  return fields.has("from") ? { from: Number(fields.get("from")), to: Number(fields.get("to")) } : null;
};

test("what was recorded and what comes live are one line, with a gap where nothing was recorded", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.lineSpeed") });
  await until(async () => (await inked(page)).length > 60, "the line is drawn");
  const columns = await inked(page);
  // The gap is 5 to 3 minutes ago: in the window of ten minutes from half to seven tenths of the width.
  for (const column of [1, 20, 47, 73, 90, 97]) assert.ok(columns.includes(column), `${column} is not in ${columns}`);
  for (const column of [53, 58, 62, 67]) assert.ok(!columns.includes(column), `${column} is in ${columns}`);
  await shows(page.locator(".legend .mark-word"), "good");
  await page.end();
});

test("the legend tells what is not recorded, what there is not, and what was recorded as something else", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.tank[2].setpoint", "Plant.tank[3].setpoint", "Plant.gone", "former|Plant.level", "Plant.lineSpeed") });
  await until(async () => (await inked(page)).length > 60, "the last line is drawn");
  const noteOf = (i) => page.locator(".legend li").nth(i).locator(".legend-note");
  await shows(noteOf(0), "Also recorded as REAL [K], which is not drawn");
  await shows(noteOf(1), "Is not recorded");
  await shows(noteOf(2), "Neither in the project nor recorded");
  await shows(noteOf(3), 'No past: there is no PLC "former", and none of this name was recorded');
  assert.equal(await noteOf(4).count(), 0);
  assert.equal(await page.locator(".plot-error").count(), 0);
  await page.end();
});

test("the wheel zooms, dragging pans back in time, End is live again", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.lineSpeed") });
  await until(async () => (await inked(page)).length > 60, "the line is drawn");
  const box = await page.locator(".plot").boundingBox();
  await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
  await page.mouse.wheel(0, -300);
  await until(async () => (await rangeOf(page)) !== null, "the view is back in time");
  const zoomed = await rangeOf(page);
  assert.ok(Math.abs(zoomed.to - zoomed.from - 500000) < 2000, `span ${zoomed.to - zoomed.from}`);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width / 2 + 200, box.y + 50, { steps: 4 });
  await page.mouse.up();
  await until(async () => (await rangeOf(page)).to < zoomed.to - 50000, "panned to the past");
  const panned = await rangeOf(page);
  assert.ok(Math.abs(panned.to - panned.from - (zoomed.to - zoomed.from)) < 5, "the span stays");
  await page.locator(".plot").focus();
  await page.keyboard.press("End");
  await until(async () => (await rangeOf(page)) === null, "live");
  await page.end();
});

test("keys zoom, pan and move the cursor, whose values stand in the legend", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.lineSpeed", "Plant.mode") });
  await until(async () => (await inked(page)).length > 60, "the line is drawn");
  await page.locator(".plot").focus();
  await page.keyboard.press("PageUp");
  await until(async () => (await rangeOf(page)) !== null, "a window back");
  await page.keyboard.press("ArrowRight");
  await shows(page.locator(".legend-time"), /^At \d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}$/);
  await shows(page.locator(".legend li").nth(1).locator(".number"), "2");
  const before = await page.locator(".legend-time").textContent();
  await page.keyboard.press("ArrowLeft");
  await until(async () => (await page.locator(".legend-time").textContent()) !== before, "the cursor moves");
  const wide = await rangeOf(page);
  await page.keyboard.press("+");
  await until(async () => { const now = await rangeOf(page); return now.to - now.from < (wide.to - wide.from) * 0.7; }, "narrower");
  await page.end();
});

test("two fingers zoom", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.lineSpeed"), touch: true });
  await until(async () => (await inked(page)).length > 60, "the line is drawn");
  await page.locator(".plot").evaluate((plot) => {
    plot.setPointerCapture = () => {};
    const { left, width } = plot.getBoundingClientRect();
    const touch = (type, pointerId, x) => plot.dispatchEvent(new PointerEvent(type, { pointerId, pointerType: "touch", clientX: x, clientY: 300 }));
    touch("pointerdown", 1, left + width * 0.45);
    touch("pointerdown", 2, left + width * 0.55);
    touch("pointermove", 1, left + width * 0.35);
    touch("pointermove", 2, left + width * 0.65);
    touch("pointerup", 1, 0);
    touch("pointerup", 2, 0);
  });
  await until(async () => (await rangeOf(page)) !== null, "zoomed");
  const { from, to } = await rangeOf(page);
  assert.ok(Math.abs(to - from - 200000) < 5000, `a third of ten minutes: ${to - from}`);
  await page.end();
});

test("a value on the right axis is drawn by the range of that axis", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.mode", "Plant.interlock") });
  await until(async () => (await inked(page)).length > 60, "the line is drawn");
  // 7 beside 2, with six hundredths of the difference as room: 1.7 to 7.3.
  const together = (await inkOf(page)).rows;
  assert.ok(together.includes(5) && together.at(-1) < 10, `drawn in ${together}`);
  await page.locator(".legend li").nth(1).locator("text=left axis").click();
  // Alone: 6.5 to 7.5.
  await until(async () => (await inkOf(page)).rows.some((row) => row === 49 || row === 50), "the line is in the middle");
  await page.end();
});

test("an axis has the range that was given, tells what is beyond it, and keeps it", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.interlock") });
  const isAt = (row) => until(async () => (await inkOf(page)).rows.some((one) => one === row || one === row - 1), `the line is at ${row}`);
  const limit = async (lowest, highest) => {
    await page.click("button:has-text('Axes')");
    await page.fill("input[name=left-lowest]", lowest);
    await page.fill("input[name=left-highest]", highest);
    await page.click("dialog button[type=submit]");
  };
  await isAt(50);
  await limit("9", "3");
  await shows(page.locator("dialog .error"), "Left axis: The lowest has to be less than the highest.");
  await page.keyboard.press("Escape");
  // 7 of 0 to 10.
  await limit("0", "10");
  await isAt(30);
  await page.reload();
  await isAt(30);
  await limit("0", "5");
  await shows(page.locator(".plot-beyond"), "Beyond the axes that were set: line 1");
  await limit("", "");
  await isAt(50);
  await until(async () => (await page.locator(".plot-beyond").count()) === 0, "nothing is beyond");
  await page.end();
});

// The texts that the page draws into the plot, as from now on.
const drawnTexts = (page) =>
  page.evaluate(() => {
    const draw = CanvasRenderingContext2D.prototype.fillText;
    window.drawnTexts = new Set();
    CanvasRenderingContext2D.prototype.fillText = function (text, ...place) {
      window.drawnTexts.add(String(text));
      return draw.call(this, text, ...place);
    };
  });

test("numbers of any size are drawn, with ticks that differ and read as in the table", async () => {
  const values = server.plants.get("dairy").values;
  const ways = [
    // A part in 6e15 of the number, which is less than two ticks can differ by.
    ["Totals.energyBalance", (time) => String(95000000000000000n + 16n * BigInt(Math.floor(time / 1000) % 2)), /^9\.5\d*e\+16$/],
    ["Plant.lineSpeed", (time) => (Math.floor(time / 1000) % 2 ? 3.4e38 : -3.4e38), /^-?[24]e\+38$/],
    ["Plant.tank[1].level", (time) => (Math.floor(time / 1000) % 2 ? 1.7e308 : -1.7e308), /^-?[12]e\+308$|^-?(1|0\.5|1\.5)e\+308$|^-?5e\+307$/],
    ["Plant.tank[2].level", (time) => (Math.floor(time / 1000) % 2 ? 0.00015 : 0.00035), /^0\.0003$/],
    ["Plant.tank[3].level", (time) => (Math.floor(time / 1000) % 2 ? 2900 : 3000), /^2950$/],
    ["Plant.tank[1].temperature", (time) => (Math.floor(time / 1000) % 2 ? 1e-30 : 3e-30), /^2e-30$/],
  ];
  for (const [label, at, tick] of ways) {
    const one = values.get(label);
    const before = { at: one.at, type: one.type };
    Object.assign(one, { at, type: one.type === "REAL" ? "LREAL" : one.type });
    try {
      const page = await openPage(server.address);
      await drawnTexts(page);
      await follow(page, drawn(label));
      await until(async () => (await inked(page)).length > 60, `the line of ${label} is drawn`);
      await until(() => page.evaluate((text) => [...window.drawnTexts].some((one) => new RegExp(text).test(one)), tick.source), `a tick ${tick}`);
      await follow(page, named(label));
      await until(async () => /^M[\d.]+ [\d.]+L/.test(await rowOf(page, label).locator(".sparkline path").getAttribute("d")), "the small line is drawn");
      await page.end();
    } finally {
      Object.assign(one, before);
    }
  }
});

test("ticks of time are at full hours, whatever the fraction of a millisecond is at which the window begins", async () => {
  const page = await openPage(server.address);
  await drawnTexts(page);
  await follow(page, `${drawn("Plant.lineSpeed")}&span=691200000`);
  // The window begins with another fraction in each picture.
  await page.evaluate(() => (window.pictures = 0, setInterval(() => window.drawnTexts.has("00:00") && ++window.pictures, 100)));
  await until(() => page.evaluate(() => window.pictures > 30), "pictures of three seconds");
  const texts = await page.evaluate(() => [...window.drawnTexts].filter((text) => /^\d\d:\d\d$/.test(text)));
  assert.deepEqual(texts.sort(), ["00:00", "12:00"]);
  await page.end();
});

test("a picture that cannot be drawn is hidden and said to be, and not left as it was", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.lineSpeed") });
  await until(async () => (await inked(page)).length > 60, "the line is drawn");
  await page.evaluate(() => {
    const { prototype } = CanvasRenderingContext2D;
    window.stroke = prototype.stroke;
    prototype.stroke = () => { throw new RangeError("out of numbers"); };
  });
  await page.setViewportSize({ width: 1000, height: 700 });
  await shows(page.locator(".plot-error"), "The plot cannot be drawn: out of numbers");
  assert.equal(await page.locator(".plot canvas").isVisible(), false);
  await page.evaluate(() => void (CanvasRenderingContext2D.prototype.stroke = window.stroke));
  await until(() => page.locator(".plot canvas").isVisible(), "the plot is drawn again");
  await until(async () => (await page.locator(".plot-error").count()) === 0, "nothing is said any more");
  await page.end();
});

test("eight values at most, on two axes", async () => {
  const labels = ["tank[1].level", "tank[2].level", "tank[3].level", "tank[1].volume", "tank[2].volume", "tank[3].volume", "mode", "lineSpeed"];
  const page = await openPage(server.address, { hash: drawn(...labels.map((label) => `Plant.${label}`)) });
  await until(async () => (await page.locator(".legend li").count()) === 8, "eight lines");
  await page.locator(".legend li").nth(3).locator("text=left axis").click();
  await until(async () => (await page.evaluate(() => location.hash)).includes("tank[1].volume|right"), "on the right");
  await page.fill("#search", "heartbeat");
  await page.click("[role=treeitem]:has-text('heartbeat')");
  await shows(page.locator(".notice"), "The trend shows at most 8 values; take one out first.");
  await page.end();
});

test("what is seen is exported as CSV and as PNG", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.mode") });
  await until(async () => (await inked(page)).length > 60, "the line is drawn");
  const csv = page.waitForEvent("download");
  await page.click("button:has-text('CSV')");
  const lines = (await readFile(await (await csv).path(), "utf8")).split("\r\n");
  assert.equal(lines[0], "time,plc,label,value,minimum,maximum,state,coverage,otherwise");
  assert.match(lines[1], /^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z,dairy,Plant\.mode,2,,,good,,$/);
  assert.equal(lines.filter((line) => line.endsWith(",,,,not recorded,,")).length, 1);
  const png = page.waitForEvent("download");
  await page.click("button:has-text('PNG')");
  const picture = await readFile(await (await png).path());
  assert.equal(picture.subarray(1, 4).toString(), "PNG");
  assert.ok(picture.readUInt32BE(16) > 800, "as wide as the plot");
  // Its line in the legend takes 40.
  const columns = await colouredColumns(page, picture);
  assert.ok(columns > 400, `the line is in ${columns} columns`);
  await page.end();
});

test("the picture of a narrow plot has the whole legend", async () => {
  const page = await openPage(server.address, { width: 320, height: 640, hash: drawn("Plant.tank[1].temperature", "Plant.lineSpeed") });
  await until(async () => (await inked(page)).length > 60, "the lines are drawn");
  // Where each text ends, of a picture as wide as it is.
  await page.evaluate(() => {
    const draw = CanvasRenderingContext2D.prototype.fillText;
    window.ends = [];
    CanvasRenderingContext2D.prototype.fillText = function (text, x, y) {
      const end = this.getTransform().transformPoint({ x: x + this.measureText(text).width, y: 0 }).x;
      if (/axis$| to /.test(text)) window.ends.push({ text, end, width: this.canvas.width });
      return draw.call(this, text, x, y);
    };
  });
  const png = page.waitForEvent("download");
  await page.click("button:has-text('PNG')");
  await png;
  const ends = await page.evaluate(() => window.ends);
  assert.deepEqual(ends.map(({ text }) => text).slice(1), ["dairy Plant.tank[1].temperature [°C], left axis", "dairy Plant.lineSpeed [packs/min], left axis"]);
  for (const { text, end, width } of ends) assert.ok(end <= width, `${text} ends at ${end} of ${width}`);
  await page.end();
});

test("an export without a connection tells that it failed, and saves nothing", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.mode") });
  await until(async () => (await inked(page)).length > 60, "the line is drawn");
  let saved = 0;
  page.on("download", () => ++saved);
  const { port } = server;
  await server.stop();
  await page.click("button:has-text('CSV')");
  await shows(page.locator(".notice"), /^Not exported: What was recorded is not known: /);
  await page.click("button:has-text('All changes')");
  await shows(page.locator(".notice"), /^Not exported: Failed to fetch/);
  await server.start(port);
  await shows(page.locator(".legend .mark-word"), "good");
  server.faults.history = 503;
  await page.click("button:has-text('All changes')");
  await shows(page.locator(".notice"), "Not exported: Fault 503.");
  server.faults.history = null;
  assert.equal(saved, 0);
  const file = page.waitForEvent("download");
  await page.click("button:has-text('All changes')");
  assert.match(await readFile(await (await file).path(), "utf8"), /^time,plc,label/);
  await page.end();
});

test("the export of all changes has what there is, and tells what there is not", async () => {
  const page = await openPage(server.address, { hash: drawn("Plant.mode", "Plant.gone") });
  const file = page.waitForEvent("download");
  await page.click("button:has-text('All changes')");
  const lines = (await readFile(await (await file).path(), "utf8")).split("\r\n");
  assert.deepEqual(lines.map((line) => line.split(",")[2]), ["label", "Plant.mode", undefined]);
  await shows(page.locator(".notice"), "Neither in the project nor recorded, and so not in the file: Plant.gone.");
  await page.end();
});

test("a PLC that is away leaves a gap of that time", async () => {
  const span = 60000;
  const page = await openPage(server.address, { hash: `${drawn("Plant.mode")}&span=${span}` });
  await until(async () => (await inked(page)).length > 60, "the line is drawn");
  await shows(page.locator(".legend .mark-word"), "good");
  const down = Date.now();
  server.setLink("dairy", "down", "gone");
  await shows(page.locator(".legend .mark-word"), "no link");
  await page.waitForTimeout(9000);
  const up = Date.now();
  server.setLink("dairy", "up");
  await shows(page.locator(".legend .mark-word"), "good");
  const known = Date.now();
  // The picture may be a second old; an older one is that of a page that was held up.
  const columnOf = (time) => Math.round(100 * (1 - (Date.now() - time) / span));
  const wrong = async () => {
    const { columns } = await inkOf(page);
    const [from, to] = [columnOf(down) + 2, columnOf(up) - 2];
    assert.ok(to - from >= 8, `${from} to ${to}`);
    for (let column = from; column <= to; ++column) if (columns.includes(column)) return `${column} is in ${columns}`;
    for (const column of [from - 5, columnOf(known) + 4]) if (!columns.includes(column)) return `${column} is not in ${columns}`;
    return "";
  };
  let fault = "";
  await until(async () => !(fault = await wrong()), () => fault);
  await page.end();
});

test("where the server's clock is put back, the line has what the PLC has since, and the table is fresh", async () => {
  const [written, label] = [server.plants.get("dairy").written, "Plant.interlock"];
  written.set(label, 7);
  server.setLink("dairy", "up"); // a moment ago, which is later than the time that comes a second time
  const page = await openPage(server.address, { hash: `${drawn(label)}&span=60000` });
  await until(async () => (await inked(page)).length > 90, "the line is drawn");
  try {
    written.set(label, 9);
    setClock(-60000);
    await shows(page.locator(".legend .number"), "9");
    // A little before now, which is at the right edge.
    const { left, top } = await page.locator(".plot .u-over").evaluate((over) => {
      const box = over.getBoundingClientRect();
      return { left: box.left + box.width * 0.93, top: box.top + box.height / 2 };
    });
    await page.mouse.move(left, top);
    // Behind what was recorded, which is asked for when the page hears of the server anew.
    const live = now() + 5000;
    await until(async () => {
      await page.mouse.move(left - (Date.now() % 2), top);
      const [, day, time] = /At (\S+) (\S+)/.exec(await page.locator(".legend-time").textContent()) ?? [];
      return day !== undefined && Date.parse(`${day}T${time}`) > live;
    }, "the cursor is in the time since");
    await shows(page.locator(".legend .number"), "9");
    await follow(page, named(label));
    await until(() => looksFresh(rowOf(page, label)), "the value is fresh");
  } finally {
    setClock(60000);
    written.delete(label);
  }
  await page.end();
});

test("eight values of 3,600 points each are drawn while somebody pans", async () => {
  const labels = ["tank[1].level", "tank[2].level", "tank[3].level", "tank[1].volume", "tank[2].volume", "tank[3].volume", "heartbeat", "lineSpeed"];
  server.answered = [];
  const page = await openPage(server.address, { hash: `${drawn(...labels.map((label) => `Plant.${label}`))}&span=3600000` });
  await until(async () => (await inked(page)).length > 60, "the lines are drawn");
  await until(() => server.answered.length >= 8, "all have their past");
  // An hour with a value each second, less the gap of two minutes.
  assert.ok(server.answered.every(({ times }) => times.length > 3450), "points of each");
  assert.equal(server.answered.length, 8);
  const { frames, milliseconds, slow } = await page.locator(".plot").evaluate(pan180);
  console.log(`frames a second while panning: ${((frames / milliseconds) * 1000).toFixed(1)}, median ${slow.median.toFixed(1)} ms, of a hundred the fifth longest ${slow.long.toFixed(1)} ms`);
  assert.equal(frames, 180);
  await page.end();
});

// Columns of a PNG in which something is coloured; texts and axes are grey.
const colouredColumns = (page, picture) =>
  page.evaluate(async (bytes) => {
    const bitmap = await createImageBitmap(new Blob([new Uint8Array(bytes)], { type: "image/png" }));
    const context = Object.assign(document.createElement("canvas"), { width: bitmap.width, height: bitmap.height }).getContext("2d");
    context.drawImage(bitmap, 0, 0);
    const { data } = context.getImageData(0, 0, bitmap.width, bitmap.height);
    const columns = new Set();
    for (let i = 0; i < data.length; i += 4) {
      const [r, g, b] = data.subarray(i, i + 3);
      if (Math.max(r, g, b) - Math.min(r, g, b) > 60) columns.add((i / 4) % bitmap.width);
    }
    return columns.size;
  }, [...picture]);

// Pans in every frame and counts those in which all eight lines were drawn.
async function pan180(plot) {
  plot.setPointerCapture = () => {};
  const touch = (type, x) => plot.dispatchEvent(new PointerEvent(type, { pointerId: 1, pointerType: "touch", clientX: x, clientY: 300 }));
  const colours = new Set();
  const probe = document.createElement("canvas").getContext("2d");
  const lines = new Set(Array.from({ length: 8 }, (_, i) => {
    probe.strokeStyle = getComputedStyle(plot).getPropertyValue(`--series-${i + 1}`).trim();
    return probe.strokeStyle;
  }));
  const { stroke } = CanvasRenderingContext2D.prototype;
  CanvasRenderingContext2D.prototype.stroke = function (...path) {
    if (path.length && lines.has(this.strokeStyle)) colours.add(this.strokeStyle);
    return stroke.apply(this, path);
  };
  let pictures = 0;
  touch("pointerdown", 300);
  await new Promise(requestAnimationFrame);
  const gaps = [];
  const begin = performance.now();
  let last = begin;
  for (let i = 1; i <= 180; ++i) {
    colours.clear();
    touch("pointermove", 300 + 2 * i);
    await new Promise(requestAnimationFrame);
    pictures += colours.size === 8;
    gaps.push(performance.now() - last);
    last = performance.now();
  }
  touch("pointerup", 0);
  CanvasRenderingContext2D.prototype.stroke = stroke;
  gaps.sort((a, b) => a - b);
  return { frames: pictures, milliseconds: last - begin, slow: { median: gaps[90], long: gaps[171] } };
}
