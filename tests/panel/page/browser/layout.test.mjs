// Sizes, colours, keys.

import assert from "node:assert/strict";
import { after, before, test } from "node:test";

import { drawn, follow, named, openPage, rowOf, shows, standIn, until, withBrowser } from "./support.mjs";

const SIZES = { desktop: [1280, 800], panel: [800, 480], phone: [360, 740] };
const VALUES = named("Plant.mode", "Plant.lineSpeed", "Totals.packs", "Totals.serial", "Totals.uptime", "Plant.faultWord", "store|Store.temperature");

let server;
withBrowser();
before(async () => {
  server = await standIn();
  server.setAlarm({ id: "1", plc: "dairy", label: "Plant.mode", text: "The line stands", condition: "is 0", state: "active", since: Date.now(), ended: null, value: 0, acknowledgedBy: null, acknowledgedAt: null });
  const line = { time: "2026-11-22T16:04:30.600Z", action: "write", phase: "outcome", user: "erna", address: "10.1.2.3", plc: "dairy", label: "Plant.tank[1].setpoint", old: "6.5", seen: "6.5", new: "7", outcome: "refused", reason: "refused: the PLC's status 0x0031: it may not have this address" };
  server.audit = [JSON.stringify({ ...line, audit: "new" }), JSON.stringify(line), JSON.stringify({ ...line, outcome: "done", reason: "" })];
  server.recipes.set("Morning", { plc: "dairy", savedAt: Date.now(), values: [{ label: "Plant.mode", saved: 2 }] });
});
after(() => server.stop());

for (const [name, [width, height]] of Object.entries(SIZES)) {
  test(`nothing is wider than a ${name} of ${width} by ${height}, and links are in sight`, async () => {
    const page = await openPage(server.address, { width, height, hash: VALUES });
    await until(async () => (await page.locator(".link-up").count()) === 2, "both links");
    for (const hash of [VALUES, drawn("Plant.lineSpeed"), "#alarms", "#recipes", "#audit"]) {
      await follow(page, hash);
      await page.waitForTimeout(400);
      assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), width, hash);
      for (const link of await page.locator(".link").all()) {
        const box = await link.boundingBox();
        assert.ok(box.x >= 0 && box.x + box.width <= width && box.y + box.height <= height, `${hash} ${JSON.stringify(box)}`);
      }
    }
    await page.end();
  });
}

// The least contrast of any text in sight to what it stands on, as WCAG 2 counts it.
function leastContrast() {
  const numbers = (colour) => colour.match(/[\d.]+/g).map(Number);
  const luminance = ([r, g, b]) => {
    const part = (value) => (value / 255 <= 0.03928 ? value / 255 / 12.92 : ((value / 255 + 0.055) / 1.055) ** 2.4);
    return 0.2126 * part(r) + 0.7152 * part(g) + 0.0722 * part(b);
  };
  const ground = (element) => {
    for (let one = element; one; one = one.parentElement) {
      const colour = numbers(getComputedStyle(one).backgroundColor);
      if (colour.length === 3 || colour[3] === 1) return colour;
    }
    return [255, 255, 255];
  };
  const found = [];
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const element = walker.currentNode.parentElement;
    if (!walker.currentNode.textContent.trim() || !element.checkVisibility() || element.closest(":disabled, .unseen, noscript")) continue;
    const [a, b] = [luminance(numbers(getComputedStyle(element).color)), luminance(ground(element))];
    found.push({ contrast: (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05), text: walker.currentNode.textContent.trim() });
  }
  return found.sort((a, b) => a.contrast - b.contrast)[0];
}

for (const dark of [false, true]) {
  test(`all text has a contrast of 4.5 in ${dark ? "dark" : "light"} colours`, async () => {
    const page = await openPage(server.address, { dark, hash: VALUES });
    await until(async () => (await page.locator(".link-up").count()) === 2, "both links");
    for (const hash of [VALUES, drawn("Plant.lineSpeed", "Plant.mode"), "#alarms", "#recipes", "#audit"]) {
      await follow(page, hash);
      await page.waitForTimeout(400);
      const { contrast, text } = await page.evaluate(leastContrast);
      assert.ok(contrast >= 4.5, `${hash} ${text} ${contrast}`);
    }
    await page.keyboard.press("?");
    await page.waitForSelector("dialog[open]");
    const help = await page.evaluate(leastContrast);
    assert.ok(help.contrast >= 4.5, `help ${help.text} ${help.contrast}`);
    await page.end();
  });
}

test("what is not fresh can be read too, in both colours", async () => {
  for (const dark of [false, true]) {
    const page = await openPage(server.address, { dark, hash: VALUES });
    await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "good");
    server.setLink("dairy", "down", "gone");
    await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "no link");
    const { contrast, text } = await page.evaluate(leastContrast);
    assert.ok(contrast >= 4.5, `${text} ${contrast}`);
    server.setLink("dairy", "up");
    await page.end();
  }
});

test("the switch outweighs the system's colours, and is kept", async () => {
  const page = await openPage(server.address, { hash: VALUES });
  const ground = () => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
  const light = await ground();
  await page.click("button:has-text('Auto')");
  await page.click(".tools button:has-text('Light')");
  await until(async () => (await ground()) !== light, "dark");
  const dark = await ground();
  await page.reload();
  await until(async () => (await ground()) === dark, "dark after all");
  await page.end();
});

test("the keyboard alone chooses, draws and writes a value", async () => {
  const page = await openPage(server.address);
  const press = async (...keys) => {
    for (const key of keys) await page.keyboard.press(key);
  };
  await until(async () => (await page.locator("[role=treeitem]").count()) === 2, "both PLCs");
  await press("/");
  await page.waitForSelector("#search:focus");
  await page.keyboard.type("mode automatic");
  await shows(page.locator(".hint"), "1 match");
  await press("ArrowDown");
  await page.waitForSelector("[role=treeitem]:focus");
  await press("Enter");
  await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "good");
  await press("g");
  await page.waitForSelector(".row.value:focus");
  await press("t");
  await shows(page.locator(".notice"), "Plant.mode is in the trend.");
  await press("Enter");
  await page.waitForSelector("#new-value:focus");
  await page.keyboard.type("1");
  await press("Enter");
  await page.waitForSelector("dialog button.danger:focus");
  await press("Enter");
  await shows(page.locator(".outcome strong"), "done");
  await press("Enter");
  await page.waitForSelector(".row.value:focus");
  await press("2");
  await shows(page.locator(".legend-label"), /Plant\.mode/);
  await press("1", "g");
  await page.waitForSelector(".row.value:focus");
  await press("Delete");
  await until(async () => (await page.locator(".row.value").count()) === 0, "taken out");
  await page.end();
});

test("the tree is opened, walked and closed by arrows", async () => {
  const page = await openPage(server.address);
  await until(async () => (await page.locator("[role=treeitem]").count()) === 2, "both PLCs");
  await page.keyboard.press("b");
  await page.waitForSelector("[role=treeitem]:focus");
  await page.keyboard.press("ArrowRight");
  await until(async () => (await page.locator("[role=treeitem]").count()) === 4, "the scopes");
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("ArrowRight");
  await until(async () => (await page.locator("[role=treeitem]").count()) === 11, "the variables of Plant");
  await shows(page.locator("[role=treeitem]:focus"), /Plant/);
  await page.keyboard.press("ArrowLeft");
  await until(async () => (await page.locator("[role=treeitem]").count()) === 4, "closed");
  await page.keyboard.press("ArrowLeft");
  await shows(page.locator("[role=treeitem]:focus"), /dairy/);
  await page.end();
});

test("a dialog keeps the focus inside and gives it back", async () => {
  const page = await openPage(server.address, { hash: VALUES });
  await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "good");
  await rowOf(page, "Plant.mode").focus();
  await page.keyboard.press("Enter");
  await page.waitForSelector("#new-value:focus");
  for (let i = 0; i < 8; ++i) {
    await page.keyboard.press("Tab");
    assert.equal(await page.evaluate(() => document.activeElement === document.body || document.activeElement.closest("dialog") !== null), true);
  }
  await page.keyboard.press("Escape");
  await page.waitForSelector(".row.value:focus");
  await page.end();
});

test("where the focus is can be seen", async () => {
  const page = await openPage(server.address, { hash: VALUES });
  await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "good");
  for (let i = 0; i < 12; ++i) {
    await page.keyboard.press("Tab");
    const { name, width } = await page.evaluate(() => ({ name: document.activeElement.outerHTML.slice(0, 80), width: parseFloat(getComputedStyle(document.activeElement).outlineWidth) }));
    assert.ok(width >= 2, name);
  }
  await page.end();
});

test("who wants no motion gets none", async () => {
  const page = await openPage(server.address, { hash: VALUES, calm: true });
  await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "good");
  const moving = await page.evaluate(() => [...document.querySelectorAll("*")].filter((one) => parseFloat(getComputedStyle(one).transitionDuration) > 0).length);
  assert.equal(moving, 0);
  await page.end();
});
