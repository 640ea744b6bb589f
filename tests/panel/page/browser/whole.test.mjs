// Nothing of a number, a unit or a label is cut off where the rest would read as something else.

import assert from "node:assert/strict";
import { after, afterEach, before, test } from "node:test";

import { drawn, follow, named, openPage, rowOf, shows, standIn, until, withBrowser } from "./support.mjs";

const SIZES = { desktop: [1280, 800], panel: [800, 480], phone: [390, 844], "small phone": [360, 740] };

// Numbers of every length that a value can have, of the widest signs: label, value, what is shown.
const WIDEST = [
  [["Totals.uptime", 4294967295, "T#49d17h2m47s295ms"], ["Totals.packs", "18446744073709551615", "18446744073709551615"], ["Totals.energyBalance", "-9223372036854775808", "-9223372036854775808"], ["Totals.serial", "15987178197214944733", "16#DDDDDDDDDDDDDDDD (15987178197214944733)"], ["Plant.lineSpeed", Math.fround(-1.17549435e-38), "-1.1754944e-38"], ["Plant.faultWord", 3722304989, "16#DDDDDDDD (3722304989)"], ["store|Store.limit", -2.2250738585072014e-308, "-2.2250738585072014e-308"]],
  [["Totals.uptime", 4294967295, "T#49d17h2m47s295ms"], ["Totals.serial", "18446744073709551615", "16#FFFFFFFFFFFFFFFF (18446744073709551615)"], ["store|Store.limit", -1.7976931348623157e308, "-1.7976931348623157e+308"]],
  [["Plant.lineSpeed", Math.fround(1.7e38), "1.7e+38"], ["store|Store.limit", 1.7e308, "1.7e+308"]],
  [["Totals.uptime", 92295172, "T#1d1h38m15s172ms"], ["Totals.packs", "88888888888888888", "88888888888888888"], ["store|Store.limit", -0.00012345678901234, "-0.00012345678901234"]],
  [["Totals.uptime", 92285172, "T#1d1h38m5s172ms"], ["Totals.packs", "888888888888888", "888888888888888"], ["store|Store.limit", -1.234567890123456, "-1.234567890123456"]],
  [["Totals.uptime", 90065172, "T#1d1h1m5s172ms"], ["Totals.packs", "88888888888888", "88888888888888"], ["store|Store.limit", -1.234567890123, "-1.234567890123"]],
  [["Totals.uptime", 2295172, "T#38m15s172ms"], ["Totals.packs", "888888888888", "888888888888"], ["store|Store.limit", -1.23456789012, "-1.23456789012"]],
];
const WIDE = named(...WIDEST[0].map(([label]) => label));

const LONG = ["Plant.nothing.ofTheKind.andOfALongName[12].member", "store|Store.nothing.ofTheKind.thatIsNamed.longerStill[100,200].andLonger.member[4711].value"];

let server;
withBrowser();
before(async () => (server = await standIn()));
after(() => server.stop());
afterEach(() => {
  for (const plant of server.plants.values()) plant.written.clear();
  server.faults.stale.clear();
  server.faults.staleFor = 10000;
});

function write(label, value) {
  const [plc, own] = label.includes("|") ? label.split("|") : ["dairy", label];
  server.plants.get(plc).written.set(own, value);
}

// What of the table is not wholly in its place: each text in the frame of its cell, and no number broken.
function cutTexts() {
  const found = [];
  const box = (one) => {
    const { left, right, top, bottom } = one.getBoundingClientRect();
    return { left, right, top, bottom };
  };
  for (const cell of document.querySelectorAll(".row .cell:not(.cell-trend, .cell-actions)")) {
    if (!cell.checkVisibility()) continue;
    if (cell.querySelector(".name[data-cut]")) continue; // "…" stands for its beginning
    const row = box(cell.parentElement);
    const frame = box(cell);
    const walker = document.createTreeWalker(cell, NodeFilter.SHOW_TEXT, (node) => (node.parentElement.closest(".description, .text, .unseen") ? 2 : 1));
    while (walker.nextNode()) {
      if (!walker.currentNode.data.trim()) continue;
      const range = document.createRange();
      range.selectNodeContents(walker.currentNode);
      const text = box(range);
      const lines = new Set([...range.getClientRects()].map(({ top }) => Math.round(top))).size;
      const isOut = text.left < frame.left - 1 || text.right > frame.right + 1 || text.top < row.top - 1.5 || text.bottom > row.bottom + 1.5;
      const isBroken = lines > 1 && /cell-(value|age|minimum|maximum)/.test(cell.className);
      const isHidden = cell.hasAttribute("data-cut");
      const hasRoom = getComputedStyle(cell).textOverflow === "clip" || cell.scrollWidth <= cell.clientWidth;
      if (isOut || isBroken || isHidden || !hasRoom) found.push(`${cell.className} "${cell.textContent}" in ${lines} lines, ${Math.round(text.right - text.left)} by ${Math.round(text.bottom - text.top)} in ${Math.round(frame.right - frame.left)} by ${Math.round(row.bottom - row.top)}`);
    }
  }
  return found;
}

for (const [name, [width, height]] of Object.entries(SIZES)) {
  for (const dark of [false, true]) {
    test(`nothing of a number is cut off on a ${name} in ${dark ? "dark" : "light"} colours`, async () => {
      const page = await openPage(server.address, { width, height, dark, hash: WIDE });
      for (const values of WIDEST) {
        for (const [label, value] of values) write(label, value);
        for (const [label, , text] of values) {
          const row = rowOf(page, label.split("|").pop());
          await row.scrollIntoViewIfNeeded();
          await shows(row.locator(".cell-value"), text);
          assert.deepEqual(await page.evaluate(cutTexts), []);
        }
      }
      await page.end();
    });
  }

  test(`nothing that has its room has a mark in its place on a ${name}`, async () => {
    // Short and long ones, in letters of either size.
    const labels = ["Plant.running", "Plant.tank[1].temperature", "Plant.tank[1].alarms[1]"];
    const page = await openPage(server.address, { width, height, hash: named(...labels) });
    for (const label of labels) await shows(rowOf(page, label).locator(".mark-word"), "good");
    assert.deepEqual(await page.locator("[data-cut]").evaluateAll((all) => all.map((one) => one.textContent)), []);
    await page.end();
  });

  test(`labels, ages and qualities are whole on a ${name}`, async () => {
    server.faults.stale.add("Plant.lineSpeed");
    server.faults.staleFor = 119 * 60000;
    const page = await openPage(server.address, { width, height, hash: named("Plant.lineSpeed", "Plant.tank[1].alarms[1]", ...LONG) });
    await shows(rowOf(page, "Plant.lineSpeed").locator(".cell-age"), /^(118|119|120) min$/);
    for (const label of LONG) await shows(rowOf(page, label.split("|").pop()).locator(".mark-word"), "no such value");
    const overlapping = await page.locator(".row.value .name").evaluateAll((all) => all.filter((one) => one.getBoundingClientRect().top < one.closest(".row").getBoundingClientRect().top).length);
    assert.equal(overlapping, 0);
    assert.deepEqual(await page.evaluate(cutTexts), []);
    if (name === "desktop") assert.equal(await rowOf(page, LONG[0]).locator("[data-cut]").count(), 0);
    await page.end();
  });
}

// Words of the places that stand in more than one line or reach out of what they stand in.
function brokenWords(selector) {
  const found = [];
  for (const place of document.querySelectorAll(selector)) {
    const frame = place.getBoundingClientRect();
    const walker = document.createTreeWalker(place, NodeFilter.SHOW_TEXT);
    while (walker.nextNode()) {
      for (const { 0: word, index } of walker.currentNode.data.matchAll(/\S{1,24}(?!\S)/g)) {
        if (/\S/.test(walker.currentNode.data[index - 1] ?? " ")) continue; // a longer one
        const range = document.createRange();
        range.setStart(walker.currentNode, index);
        range.setEnd(walker.currentNode, index + word.length);
        const { left, right } = range.getBoundingClientRect();
        const lines = new Set([...range.getClientRects()].map(({ top }) => Math.round(top))).size;
        if (lines > 1 || left < frame.left - 1 || right > frame.right + 1) found.push(`${word} in ${lines} lines, ${Math.round(left)} to ${Math.round(right)} in ${Math.round(frame.left)} to ${Math.round(frame.right)}`);
      }
    }
  }
  return found;
}

const LINE = { time: "2026-11-22T16:04:30.600Z", action: "write", phase: "outcome", user: "erna", address: "10.1.2.3", plc: "dairy", label: "Plant.tank[1].setpoint", outcome: "refused", reason: "refused: the PLC's status 0x0031: it may not have this address" };
const audited = (old, seen, next) => JSON.stringify({ ...LINE, old, seen, new: next });

for (const [name, [width, height]] of Object.entries(SIZES)) {
  test(`numbers in lists and in the legend are not broken on a ${name}`, async () => {
    write("Totals.energyBalance", "-9223372036854775808");
    write("Totals.serial", "18446744073709551615");
    write("Plant.tank[1].setpoint", Math.fround(-3.4028235e38));
    write("store|Store.limit", -1.7976931348623157e308);
    const saved = [["Totals.energyBalance", "-9223372036854775807"], ["Totals.serial", "18446744073709551614"], ["Plant.tank[1].setpoint", 7]];
    server.recipes.set("Evening", { plc: "dairy", savedAt: 1700000000000, values: saved.map(([label, value]) => ({ label, saved: value })) });
    server.session.audit = true;
    server.audit = [audited("-497769", "-497769", "-497770"), audited("-1.7976931348623157e+308", "-9223372036854775808", "16#FFFFFFFFFFFFFFFF (18446744073709551615)"), audited("C".repeat(90), "a", "b")];
    const page = await openPage(server.address, { width, height, hash: "#audit" });
    await shows(page.locator("td[data-name=Old]").last(), "-497769");
    assert.deepEqual(await page.evaluate(brokenWords, ".list td:not([data-name=Outcome], [data-name=Label])"), []);
    await follow(page, "#recipes");
    await page.click("text=Compare");
    await shows(page.locator("[data-name='In the PLC']"), "-9223372036854775808");
    assert.deepEqual(await page.evaluate(brokenWords, ".result td[data-name]"), []);
    await page.click("text=Restore …");
    await page.click("dialog .primary");
    await shows(page.locator("[data-name=Before]"), "-9223372036854775808");
    assert.deepEqual(await page.evaluate(brokenWords, ".result td[data-name]"), []);
    await follow(page, drawn("store|Store.limit", "Totals.energyBalance", "Totals.serial", "Plant.lineSpeed"));
    await shows(page.locator(".legend-value .number"), "-1.7976931348623157e+308");
    await shows(page.locator(".legend-mark").last(), "● good");
    assert.deepEqual(await page.evaluate(brokenWords, ".legend-value, .legend-mark, .legend-label"), []);
    const places = await page.locator(".legend li").first().locator("> *").evaluateAll((all) => all.map((one) => one.getBoundingClientRect()));
    for (const a of places) {
      for (const b of places) assert.ok(a === b || a.right <= b.left + 1 || b.right <= a.left + 1 || a.bottom <= b.top + 1 || b.bottom <= a.top + 1, JSON.stringify([a, b]));
    }
    await page.end();
  });
}

test("spaces in texts of the PLC are all shown", async () => {
  const text = "a  b   c";
  write("Totals.note", text);
  server.recipes.clear();
  server.recipes.set("Spaces", { plc: "dairy", savedAt: 1700000000000, values: [{ label: "Totals.note", saved: "a b  c" }] });
  server.session.audit = true;
  server.audit = [audited(text, "a  b", "a\nb   c")];
  server.setAlarm({ id: "7", plc: "dairy", label: "Totals.note", text: "The note", condition: `is '${text}'`, state: "active", since: Date.now(), ended: null, value: text, acknowledgedBy: null, acknowledgedAt: null });
  const page = await openPage(server.address, { hash: named("Totals.note") });
  const reads = async (selector, expected) => until(async () => (await page.locator(selector).first().innerText().catch(() => "")).includes(expected), `${selector}: ${expected}`);
  await reads(".row.value .cell-value", text);
  await rowOf(page, "Totals.note").focus();
  await page.keyboard.press("Enter");
  await reads("dialog .old", text);
  await page.fill("#new-value", "d  e");
  await page.keyboard.press("Enter");
  await reads(".change .old", text);
  await reads(".change .new", "d  e");
  await page.click("dialog button.danger");
  await shows(page.locator(".outcome strong"), "done");
  await reads("dialog dl", "d  e");
  await page.keyboard.press("Escape");
  write("Totals.note", text);
  await follow(page, "#audit");
  await reads("td[data-name=Old]", text);
  await reads("td[data-name=New]", "b   c");
  await follow(page, "#alarms");
  await reads(".alarm .note", text);
  await follow(page, "#recipes");
  await page.click("text=Compare");
  await reads("td[data-name=Saved] >> nth=1", "a b  c");
  await reads("td[data-name='In the PLC']", text);
  await page.click("text=Restore …");
  await page.click("dialog .primary");
  await reads("td[data-name=Before]", text);
  await reads("td[data-name=After]", "a b  c");
  server.alarms.clear();
  await page.end();
});

test("what fits nowhere is a mark instead of a part of it", async () => {
  const page = await openPage(server.address, { width: 800, height: 480, hash: WIDE });
  for (const [label, value, text] of WIDEST[0]) {
    write(label, value);
    await shows(rowOf(page, label.split("|").pop()).locator(".cell-value"), text);
  }
  // As in a browser whose letters are much larger.
  await page.evaluate(() => document.documentElement.style.setProperty("--text", "30px"));
  const value = rowOf(page, "Totals.packs").locator(".cell-value");
  await until(() => value.evaluate((one) => getComputedStyle(one, "::after").content === '"…"'), "the mark");
  assert.equal(await value.locator(".number").evaluate((one) => getComputedStyle(one).visibility), "hidden");
  await page.evaluate(() => document.documentElement.style.removeProperty("--text"));
  await until(() => value.locator(".number").evaluate((one) => getComputedStyle(one).visibility === "visible"), "the number");
  await page.end();
});
