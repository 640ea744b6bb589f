// Nothing that may not hold now looks as if it did.

import assert from "node:assert/strict";
import { after, before, test } from "node:test";

import { looksFresh, named, openPage, rowOf, shows, standIn, until, withBrowser } from "./support.mjs";

let server;
withBrowser();
before(async () => (server = await standIn()));
after(() => server.stop());

async function withFreshRow(label = "Plant.mode") {
  const page = await openPage(server.address, { hash: named(label) });
  const row = rowOf(page, label);
  await shows(row.locator(".mark-word"), "good");
  assert.equal(await looksFresh(row), true);
  return { page, row };
}

test("a server that falls silent leaves nothing fresh after three seconds", async () => {
  const { page, row } = await withFreshRow();
  server.faults.silent = true;
  await shows(row.locator(".mark-word"), "not known");
  assert.equal(await looksFresh(row), false);
  await shows(page.locator(".banner"), /Not connected to the server/);
  await shows(page.locator(".link-word"), "not known");
  server.faults.silent = false;
  await shows(row.locator(".mark-word"), "good");
  assert.equal(await page.locator(".banner").count(), 0);
  await page.end();
});

test("a killed server leaves nothing fresh, and all comes back with it", async () => {
  const { page, row } = await withFreshRow();
  const { port } = server;
  await server.stop();
  await shows(row.locator(".mark-word"), "not known");
  assert.equal(await looksFresh(row), false);
  await server.start(port);
  await shows(row.locator(".mark-word"), "good");
  assert.equal(await looksFresh(row), true);
  await page.end();
});

test("a sixth tab of a browser says that it is one too many, and leaves the others what they need", async () => {
  const tabs = [(await withFreshRow()).page];
  const freshTab = async () => {
    const tab = await tabs[0].context().newPage();
    await tab.goto(server.address + named("Plant.mode"));
    return tab;
  };
  while (tabs.length < 5) {
    tabs.push(await freshTab());
    await shows(rowOf(tabs.at(-1), "Plant.mode").locator(".mark-word"), "good");
  }
  const sixth = await freshTab();
  await shows(sixth.locator(".banner"), /Not connected to the server.*Five tabs of this browser show this panel already/);
  assert.notEqual(await rowOf(sixth, "Plant.mode").locator(".mark-word").textContent(), "good");
  for (const tab of tabs) {
    const status = await tab.evaluate(async () => (await fetch("/api/v1/session", { signal: AbortSignal.timeout(20000) })).status);
    assert.equal(status, 200);
    assert.equal(await looksFresh(rowOf(tab, "Plant.mode")), true);
  }
  await tabs.pop().close();
  await shows(rowOf(sixth, "Plant.mode").locator(".mark-word"), "good");
  assert.equal(await sixth.locator(".banner").count(), 0);
  await tabs[0].end();
});

test("a computer that slept shows nothing fresh until it has heard of the server anew", async () => {
  const { page, row } = await withFreshRow();
  const before = await page.evaluate(() => {
    window.slept = 3600000;
    return new Promise((done) => {
      const look = () => {
        const word = document.querySelector(".row.value .mark-word").textContent;
        if (word !== "good") done(word);
        else requestAnimationFrame(look);
      };
      look();
      setTimeout(() => done("never"), 30000);
    });
  });
  assert.equal(before, "not known");
  await shows(row.locator(".mark-word"), "good");
  await page.end();
});

test("a lost PLC marks its values and no others", async () => {
  const page = await openPage(server.address, { hash: named("Plant.mode", "store|Store.packs") });
  const lost = rowOf(page, "Plant.mode");
  const other = rowOf(page, "Store.packs");
  await shows(lost.locator(".mark-word"), "good");
  server.setLink("dairy", "down", "The PLC does not answer.");
  await shows(lost.locator(".mark-word"), "no link");
  assert.equal(await looksFresh(lost), false);
  await shows(page.locator(".link-down .link-word"), "no link");
  await shows(other.locator(".mark-word"), "good");
  server.setLink("dairy", "connecting");
  await shows(page.locator(".link-connecting .link-word"), "connecting");
  assert.equal(await looksFresh(lost), false);
  server.setLink("dairy", "up");
  await shows(lost.locator(".mark-word"), "good");
  await page.end();
});

test("stale and refused values carry their word", async () => {
  const { page, row } = await withFreshRow();
  server.faults.stale.add("Plant.mode");
  await shows(row.locator(".mark-word"), "stale");
  assert.equal(await looksFresh(row), false);
  server.faults.stale.clear();
  server.faults.bad.add("Plant.mode");
  await shows(row.locator(".mark-word"), "bad");
  assert.equal(await looksFresh(row), false);
  server.faults.bad.clear();
  await shows(row.locator(".mark-word"), "good");
  await page.end();
});

test("values that stay the same are still young while the PLC confirms them", async () => {
  const { page, row } = await withFreshRow();
  // Without a confirmation it would only grow older from here on.
  for (let i = 0; i < 3; ++i) {
    await page.waitForTimeout(3000);
    await shows(row.locator(".cell-age"), /^[0-2]\.\d s$/);
  }
  await page.end();
});
