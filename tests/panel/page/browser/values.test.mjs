// Tree, search, table and what is kept of them.

import assert from "node:assert/strict";
import { after, before, test } from "node:test";

import { named, openPage, rowOf, shows, standIn, until, withBrowser } from "./support.mjs";

let server;
withBrowser();
before(async () => (server = await standIn()));
after(() => server.stop());

test("values are chosen in the tree, and shown live", async () => {
  const page = await openPage(server.address);
  await page.click("[role=treeitem]:has-text('dairy')");
  await page.click("[role=treeitem] >> text=Plant");
  await page.click("[role=treeitem]:has-text('mode')");
  await shows(rowOf(page, "Plant.mode").locator(".cell-value"), "2");
  await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "good");
  await page.click("[role=treeitem]:has-text('mode')");
  await until(async () => (await rowOf(page, "Plant.mode").count()) === 0, "the row has gone");
  await page.end();
});

test("a node brings all values below it into the table", async () => {
  const page = await openPage(server.address);
  await page.click("[role=treeitem]:has-text('store')");
  await page.locator("[role=treeitem]:has-text('Store') .node-add").click();
  await until(async () => (await page.locator(".row.value").count()) === 4, "four values of the store");
  await page.end();
});

test("the search finds labels and descriptions of all PLCs", async () => {
  const page = await openPage(server.address);
  await until(async () => (await page.locator("[role=treeitem]").count()) === 2, "both PLCs");
  await page.fill("#search", "temperature");
  await shows(page.locator(".hint"), "19 matches");
  await page.fill("#search", "cold nothing");
  await shows(page.locator(".hint"), "0 matches");
  await page.fill("#search", "air store");
  await shows(page.locator(".hint"), "1 match");
  await page.click("[role=treeitem]");
  await shows(rowOf(page, "Store.temperature").locator(".mark-word"), "good");
  await page.end();
});

test("values of each type are shown exactly as they were sent", async () => {
  for (const [label, value] of [["Totals.packs", "18446744073709551615"], ["Totals.energyBalance", "-9223372036854775808"], ["Totals.uptime", 90061001], ["Plant.lineSpeed", 0.1], ["Plant.faultWord", 3735928559]]) {
    server.plants.get("dairy").written.set(label, value);
  }
  const page = await openPage(server.address, { hash: named("Totals.packs", "Totals.energyBalance", "Totals.serial", "Totals.uptime", "Totals.note", "Plant.lineSpeed", "Plant.faultWord", "Plant.running") });
  for (const [label, text] of [
    ["Totals.packs", "18446744073709551615"],
    ["Totals.energyBalance", "-9223372036854775808"],
    ["Totals.serial", "16#FEDCBA9876543210 (18364758544493064720)"],
    ["Totals.uptime", "T#1d1h1m1s1ms"],
    ["Totals.note", "CIP of tank 3 is due"],
    ["Plant.lineSpeed", "0.1"],
    ["Plant.faultWord", "16#DEADBEEF (3735928559)"],
    ["Plant.running", "TRUE"],
  ]) await shows(rowOf(page, label).locator(".cell-value"), text);
  const cut = await page.locator(".cell-value .number").evaluateAll((all) => all.filter((one) => one.scrollWidth > one.parentElement.clientWidth).map((one) => one.textContent));
  assert.deepEqual(cut.filter((text) => /^[-\dT#]/.test(text)), []);
  server.plants.get("dairy").written.clear();
  await page.end();
});

test("a label that does not exist says so", async () => {
  const page = await openPage(server.address, { hash: named("Plant.nothing") });
  await shows(rowOf(page, "Plant.nothing").locator(".mark-word"), "no such value");
  await page.end();
});

test("the table is filtered, grouped and sorted, and the address says how", async () => {
  const page = await openPage(server.address, { hash: named("Plant.mode", "Totals.note", "Plant.heartbeat", "store|Store.packs") });
  await until(async () => (await page.locator(".row.group").count()) === 3, "three scopes");
  await page.fill("#filter", "plant mode");
  await until(async () => (await page.locator(".row.value").count()) === 1, "one row");
  await page.fill("#filter", "");
  await page.selectOption(".toolbar select", "none");
  await page.click("button.sort:has-text('Label')");
  await until(async () => (await page.locator(".row.value .cell-label").first().textContent()).includes("Plant.heartbeat"), "sorted by label");
  await until(async () => (await page.evaluate(() => location.hash)).includes("sort=label"), "kept in the address");
  const shared = await page.evaluate(() => location.href);
  const other = await openPage(shared);
  await until(async () => (await other.locator(".row.value").count()) === 4, "the same values elsewhere");
  await other.end();
  await page.goto("about:blank");
  await page.goto(server.address);
  await until(async () => (await page.locator(".row.value").count()) === 4, "kept in the browser");
  assert.deepEqual(page.seen.errors, []);
  await page.context().close();
});

test("minimum and maximum count from when a value was chosen or reset", async () => {
  const { written } = server.plants.get("dairy");
  const page = await openPage(server.address, { hash: named("Plant.interlock") });
  const row = rowOf(page, "Plant.interlock");
  await shows(row.locator(".cell-value"), "7");
  for (const value of [3, 9, 5]) {
    written.set("Plant.interlock", value);
    await shows(row.locator(".cell-value"), String(value));
  }
  await shows(row.locator(".cell-minimum"), "3");
  await shows(row.locator(".cell-maximum"), "9");
  await row.focus();
  await page.keyboard.press("r");
  await shows(row.locator(".cell-minimum"), "5");
  await shows(row.locator(".cell-maximum"), "5");
  written.clear();
  await page.end();
});

test("two thousand values are chosen and only those in sight are made", async () => {
  const labels = Array.from({ length: 2000 }, (_, i) => `Plant.nothing[${i}]`);
  const page = await openPage(server.address, { hash: named("Plant.mode", ...labels) });
  await shows(page.locator(".count"), "2001 values");
  await until(async () => (await page.locator(".row.value").count()) < 60, "few rows");
  await page.locator(".grid [tabindex='0']").focus();
  await page.keyboard.press("End");
  await shows(page.locator(".row.value:focus .cell-label"), /Plant\.nothing\[1999\]/);
  await page.end();
});
