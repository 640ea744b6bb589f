// The page with the panel and a simulated PLC, as programs.

import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { readFile } from "node:fs/promises";

import { inkOf, looksFresh, openPage, propose, rowOf, shows, until, withBrowser } from "./support.mjs";
import { Site } from "./programs.mjs";

const site = new Site();
withBrowser();
before(() => site.start());
after(() => site.stop());

const view = (...labels) => `#values?${labels.map((label) => `v=plant|${label}`).join("&")}`;
const open = (...labels) => openPage(site.address, { hash: view(...labels) });

test("the tree leads to a value, which is live", async () => {
  const page = await openPage(site.address);
  // One PLC alone opens by itself.
  await page.locator(".node-scope", { hasText: "Plant" }).click();
  await page.locator(".node-value", { hasText: "heartbeat" }).click();
  const row = rowOf(page, "Plant.heartbeat");
  await shows(row.locator(".mark-word"), "good");
  const first = await row.locator(".number").textContent();
  await until(async () => (await row.locator(".number").textContent()) !== first, "the value changes");
  await page.end();
});

test("values of all types are what the panel tells to programs", async () => {
  const expected = {
    "Plant.mode": "2",
    "Plant.running": "TRUE",
    "Plant.pump[1].setpoint": "20",
    "Plant.calibration[-2]": "-0.021",
    "Plant.tank[1].name": "Raw milk A",
    "Recipes.list[1].steps[2].temperature": "72.5",
    "Recipes.list[1].steps[2].duration": "T#15m",
    "Recipes.list[1].steps[3].options": "16#0004 (4)",
    "Recipes.operator": "Łucja Müller",
    "Totals.serial": "16#0000000000000000 (0)",
  };
  const page = await open(...Object.keys(expected));
  for (const [label, text] of Object.entries(expected)) {
    await shows(rowOf(page, label).locator(".cell-value"), text);
    await shows(rowOf(page, label).locator(".mark-word"), "good");
  }
  await page.end();
});

test("a value is written after it was asked for, and the PLC has it", async () => {
  const page = await open("Plant.pump[1].setpoint");
  const row = rowOf(page, "Plant.pump[1].setpoint");
  await shows(row.locator(".cell-value"), "20");
  await propose(page, row, "12.5");
  await shows(page.locator(".change"), "20 → 12.5 m³/h");
  await page.waitForSelector("dialog button.danger:focus");
  await page.keyboard.press("Enter");
  await shows(page.locator(".outcome strong"), "done");
  await page.keyboard.press("Enter");
  await shows(row.locator(".cell-value"), "12.5");
  const { values } = await site.get("values?plc=plant&label=Plant.pump[1].setpoint");
  assert.equal(values[0].value, 12.5);
  await page.end();
});

test("zeros with a sign, and numbers above all whole ones of 64 bits, come to the PLC as they were typed", async () => {
  const page = await open("Plant.pump[1].setpoint");
  const row = rowOf(page, "Plant.pump[1].setpoint");
  for (const [typed, shown] of [["-0", "-0"], ["0", "0"], ["1e20", "1e+20"], ["12.5", "12.5"]]) {
    await shows(row.locator(".mark-word"), "good");
    await propose(page, row, typed);
    await page.waitForSelector("dialog button.danger:focus");
    await page.keyboard.press("Enter");
    await shows(page.locator(".outcome strong"), "done");
    await page.keyboard.press("Enter");
    await shows(row.locator(".cell-value"), shown);
    const { values } = await site.get("values?plc=plant&label=Plant.pump[1].setpoint");
    assert.ok(Object.is(values[0].value, Number(typed)) || values[0].value === Math.fround(Number(typed)), `${values[0].value} for ${typed}`);
  }
  await page.end();
});

test("a write that the PLC refuses tells its number and words", async () => {
  site.command("fail-writes on");
  const page = await open("Plant.mode");
  const row = rowOf(page, "Plant.mode");
  await shows(row.locator(".mark-word"), "good");
  await propose(page, row, "1");
  await page.waitForSelector("dialog button.danger:focus");
  await page.keyboard.press("Enter");
  await shows(page.locator(".outcome strong"), "refused");
  // 0x0040: what the simulated PLC answers to a write that it refuses.
  await shows(page.locator(".outcome"), /0x0040|16#0040|\b64\b/i);
  site.command("fail-writes off");
  await page.keyboard.press("Enter");
  await shows(row.locator(".cell-value"), "2");
  await page.end();
});

test("a killed panel leaves nothing fresh, and all comes back with it", async () => {
  const page = await open("Plant.mode");
  const row = rowOf(page, "Plant.mode");
  await shows(row.locator(".mark-word"), "good");
  await site.panel.kill();
  await shows(row.locator(".mark-word"), "not known");
  assert.equal(await looksFresh(row), false);
  await site.startPanel();
  await shows(row.locator(".mark-word"), "good");
  assert.equal(await looksFresh(row), true);
  await page.end();
});

test("a killed PLC marks its values, and they are fresh again with it", async () => {
  const page = await open("Plant.mode", "Plant.heartbeat");
  const row = rowOf(page, "Plant.mode");
  await shows(row.locator(".mark-word"), "good");
  await site.simulator.kill();
  await shows(row.locator(".mark-word"), /no link|stale/);
  assert.equal(await looksFresh(row), false);
  await shows(page.locator(".link-word"), /no link|connecting/);
  await site.startSimulator();
  await shows(page.locator(".link-word"), "connected");
  await shows(row.locator(".mark-word"), "good");
  await page.end();
});

test("the trend goes on live", async () => {
  const page = await openPage(site.address, { hash: "#trend?t=plant|Plant.lineSpeed&span=60000" });
  await shows(page.locator(".legend .mark-word"), "good");
  const first = await page.locator(".legend .number").textContent();
  await until(async () => (await page.locator(".legend .number").textContent()) !== first, "the value changes");
  await page.end();
});

// What the CSV of the trend has: [{time, value, state}].
async function exported(page) {
  const file = page.waitForEvent("download");
  await page.click("button:has-text('CSV')");
  const lines = (await readFile(await (await file).path(), "utf8")).trim().split("\r\n").slice(1);
  return lines.map((line) => line.split(",")).map(([time, , , value, , , state]) => ({ time: Date.parse(time), value, state }));
}

test("the trend shows what was recorded before the page was there, and a killed PLC as a gap", async () => {
  const span = 60000;
  const hash = `#trend?t=plant|Plant.mode&span=${span}`;
  const before = await openPage(site.address, { hash: view("Plant.mode") });
  await shows(rowOf(before, "Plant.mode").locator(".mark-word"), "good");
  await before.end();
  await new Promise((done) => setTimeout(done, 6000));
  const killed = Date.now();
  await site.simulator.kill();
  await new Promise((done) => setTimeout(done, 8000));
  const back = Date.now();
  await site.startSimulator();
  await until(async () => (await site.get("plcs")).plcs[0].link.state === "up", "the PLC is back");
  const up = Date.now();
  await new Promise((done) => setTimeout(done, 8000));
  const page = await openPage(site.address, { hash });
  await shows(page.locator(".legend .mark-word"), "good");
  // The picture of now: from columns of a hundredth of a minute each.
  await until(async () => (await inkOf(page)).columns.length > 15, "the line is drawn");
  const columnOf = (time) => Math.round(100 * (1 - (Date.now() - time) / span));
  const wrong = async () => {
    const { columns } = await inkOf(page);
    // The PLC counts as lost when it has not answered in time, and is asked anew within a pass.
    const [from, to] = [columnOf(killed + 3000), columnOf(back - 1000)];
    assert.ok(to - from >= 5, `${from} to ${to}`);
    for (let column = from; column <= to; ++column) if (columns.includes(column)) return `${column} is in ${columns}`;
    for (const column of [columnOf(killed - 3000), columnOf(up + 3000)]) if (!columns.includes(column)) return `${column} is not in ${columns}`;
    return "";
  };
  let fault = "";
  await until(async () => !(fault = await wrong()), () => fault);
  await page.reload();
  await until(async () => (await inkOf(page)).columns.includes(columnOf(killed - 3000)), "the past is there again");
  // The recorder is some seconds behind.
  let lines = [];
  const isWhole = async () => {
    lines = await exported(page);
    const inGap = lines.filter(({ time }) => time > killed - 2000 && time < back && time !== lines[0].time);
    return inGap.length > 0 && inGap.every(({ value, state }) => value === "" && ["stale", "not recorded"].includes(state)) && lines.at(-1).value === "2";
  };
  await until(isWhole, () => JSON.stringify({ killed, back, lines }));
  // Up to the last pass before the end nothing is missing.
  assert.equal(lines.findLast(({ time }) => time < killed - 2000).value, "2");
  await page.end();
});

test("an alarm begins, is acknowledged, ends and stands in the history", async () => {
  const page = await openPage(site.address, { hash: "#alarms" });
  await shows(page.locator(".alarm .state"), "normal");
  site.command("set Plant.mode 0");
  await shows(page.locator(".alarm .state"), "▲ active");
  await shows(page.locator(".tab .badge"), "1 active");
  await page.click("button:has-text('Acknowledge')");
  await shows(page.locator("[data-name=Acknowledged]"), /^local/);
  site.command("set Plant.mode 2");
  await shows(page.locator(".alarm .state"), "normal");
  await page.click("button:has-text('History')");
  await shows(page.locator(".alarm .state"), "ended");
  await shows(page.locator(".alarm strong"), "The line stands");
  for (const name of ["Begin", "End"]) await shows(page.locator(`[data-name=${name}]`), /^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d/);
  await shows(page.locator("[data-name=Acknowledged]"), /^local ?\d{4}/);
  await page.end();
});

test("a recipe is saved, compared and restored with a report", async () => {
  const labels = ["Plant.pump[1].setpoint", "Plant.pump[2].setpoint"];
  site.command(`set ${labels[0]} 20`);
  site.command(`set ${labels[1]} 20`);
  const page = await openPage(site.address, { hash: view(...labels).replace("#values", "#recipes") });
  await shows(page.locator(".link-word"), "connected");
  await page.click("text=Save the table");
  await page.fill("input[name=name]", "Summer");
  await page.click("dialog button[type=submit]");
  await shows(page.locator(".list tbody td strong"), "Summer");
  site.command(`set ${labels[0]} 7.5`);
  await page.click("button:has-text('Compare')");
  await shows(page.locator(".result .summary"), "1 of 2 differ.");
  await shows(page.locator(".result .equal-false [data-name='In the PLC']"), "7.5");
  await page.click("button:has-text('Restore')");
  await page.click("dialog button:has-text('Restore')");
  await shows(page.locator(".result .summary"), "1 written, 1 equal, 0 not written, 0 not known.");
  await shows(page.locator(".result .outcome-done"), /Plant\.pump\[1\]\.setpoint ?7\.5 ?20 ?20 ?done read back equal/);
  const asked = `values?plc=plant&label=${encodeURIComponent(labels[0])}`;
  await until(async () => (await site.get(asked)).values[0].value === 20, "the PLC has it");
  await page.end();
});

test("who has written what stands in the audit", async () => {
  const body = { id: "audited", plc: "plant", label: "Plant.pump[1].setpoint", value: 21.5, old: 20 };
  const headers = { "Content-Type": "application/json" };
  const answer = await fetch(`${site.address}api/v1/writes`, { method: "POST", headers, body: JSON.stringify(body) });
  assert.equal((await answer.json()).outcome, "done");
  const page = await openPage(site.address, { hash: "#audit" });
  const lines = page.locator(".list tbody tr");
  await shows(lines.nth(0), /local ?127\.0\.0\.1 ?write ?plant ?Plant\.pump\[1\]\.setpoint ?20 ?20 ?21\.5 ?done$/);
  await shows(lines.nth(1), /Plant\.pump\[1\]\.setpoint ?20 ?20 ?21\.5 ?asked for$/);
  await shows(lines.last(), /the audit begins$/);
  await shows(page.locator(".toolbar [role=status]"), "No line was altered.");
  await page.end();
});
