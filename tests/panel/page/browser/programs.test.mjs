// The page with the panel and a simulated PLC, as programs.

import assert from "node:assert/strict";
import { after, before, test } from "node:test";

import { looksFresh, openPage, rowOf, shows, until, withBrowser } from "./support.mjs";
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
  await row.focus();
  await page.keyboard.press("Enter");
  await page.fill("#new-value", "12.5");
  await page.keyboard.press("Enter");
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

test("a write that the PLC refuses tells its number and words", async () => {
  site.simulator.child.stdin.write("fail-writes on\n");
  const page = await open("Plant.mode");
  const row = rowOf(page, "Plant.mode");
  await shows(row.locator(".mark-word"), "good");
  await row.focus();
  await page.keyboard.press("Enter");
  await page.fill("#new-value", "1");
  await page.keyboard.press("Enter");
  await page.waitForSelector("dialog button.danger:focus");
  await page.keyboard.press("Enter");
  await shows(page.locator(".outcome strong"), "refused");
  // 0x0040: what the simulated PLC answers to a write that it refuses.
  await shows(page.locator(".outcome"), /0x0040|16#0040|\b64\b/i);
  site.simulator.child.stdin.write("fail-writes off\n");
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
