// Writing a value: asked, told, and never sent twice.

import assert from "node:assert/strict";
import { after, before, beforeEach, test } from "node:test";

import { named, openPage, propose, rowOf, shows, standIn, until, withBrowser } from "./support.mjs";

let server;
withBrowser();
before(async () => (server = await standIn()));
after(() => server.stop());
beforeEach(() => {
  server.sent.length = 0;
  server.plants.get("dairy").written.clear();
  Object.assign(server.faults, { losesAnswer: false, delay: 0 });
});

async function proposed(label, text) {
  const page = await openPage(server.address, { hash: named(label) });
  const row = rowOf(page, label);
  await shows(row.locator(".mark-word"), "good");
  await propose(page, row, text);
  return { page, row };
}

test("a write shows old and new value, asks, and tells that it was done", async () => {
  const { page, row } = await proposed("Plant.mode", "3");
  await shows(page.locator(".change .old"), "2");
  await shows(page.locator(".change .new"), "3");
  assert.deepEqual(server.sent, []);
  await page.click("dialog button.danger");
  await shows(page.locator(".outcome strong"), "done");
  assert.equal(server.sent.length, 1);
  const { id, ...rest } = server.sent[0];
  assert.match(id, /^[0-9a-f]{32}$/);
  assert.deepEqual(rest, { plc: "dairy", label: "Plant.mode", value: 3, old: 2 });
  await page.keyboard.press("Escape");
  await shows(row.locator(".cell-value"), "3");
  await page.end();
});

test("what was seen last beside the question is told with the write", async () => {
  const { page } = await proposed("Plant.mode", "3");
  await shows(page.locator(".change .old"), "2");
  server.plants.get("dairy").written.set("Plant.mode", 1);
  await shows(page.locator(".change .old"), "1");
  await page.click("dialog button.danger");
  await shows(page.locator(".outcome strong"), "done");
  assert.equal(server.sent[0].old, 1);
  await page.end();
});

test("a switch is offered its other state, and keeps what was chosen when somebody goes back", async () => {
  const page = await openPage(server.address, { hash: named("Plant.running") });
  await shows(rowOf(page, "Plant.running").locator(".cell-value"), "TRUE");
  await rowOf(page, "Plant.running").focus();
  await page.keyboard.press("Enter");
  for (const state of ["FALSE", "FALSE", "TRUE"]) {
    if (state === "TRUE") await page.selectOption("#new-value", "TRUE");
    assert.equal(await page.inputValue("#new-value"), state);
    await page.click("dialog button[type=submit]");
    await shows(page.locator(".change .new"), state);
    await page.click("text=Back");
    assert.equal(await page.inputValue("#new-value"), state);
  }
  await page.keyboard.press("Escape");
  assert.deepEqual(server.sent, []);
  await page.end();
});

test("a refused write tells the number and the words of the PLC", async () => {
  const { page } = await proposed("Plant.interlock", "8");
  await page.click("dialog button.danger");
  await shows(page.locator(".outcome"), /^refused The PLC refused it with status 3: the address is not allowed\.$/);
  await shows(page.locator("dialog dl"), /Status ?3/);
  await page.end();
});

test("what cannot be a value is not asked for, and nothing is sent when somebody leaves", async () => {
  const { page } = await proposed("Plant.mode", "300");
  await shows(page.locator("#write-error"), /outside the range of USINT, 0 to 255/);
  await page.fill("#new-value", "1");
  await page.keyboard.press("Enter");
  await page.click("text=Back");
  await page.keyboard.press("Escape");
  await until(async () => (await page.locator("dialog").count()) === 0, "the dialog is closed");
  assert.deepEqual(server.sent, []);
  await page.end();
});

test("a second press while the PLC takes its time sends nothing", async () => {
  server.faults.delay = 1000;
  const { page } = await proposed("Plant.mode", "3");
  const button = await page.locator("dialog button.danger").elementHandle();
  await button.evaluate((element) => {
    element.click();
    element.click();
  });
  await shows(page.locator(".outcome strong"), "done");
  assert.equal(server.sent.length, 1);
  await page.end();
});

test("an outcome that comes behind a closed dialog stays, whatever is told meanwhile, until somebody closes it", async () => {
  server.faults.delay = 1500;
  const { page, row } = await proposed("Plant.mode", "3");
  await page.click("dialog button.danger");
  await shows(page.locator(".outcome.pending"), /Sent/);
  await page.keyboard.press("Escape");
  await shows(page.locator(".notice"), "The outcome of the write to Plant.mode will be told here.");
  const outcome = page.locator(".outcomes li");
  await shows(outcome.locator("p"), /^dairy Plant\.mode = 3: done /);
  // Other sentences come and go.
  await row.focus();
  await page.keyboard.press("t");
  await shows(page.locator(".notice"), "Plant.mode is in the trend.");
  await until(async () => (await page.locator(".notice p").count()) === 0, "the sentence goes by itself");
  // And another outcome.
  server.faults.delay = 500;
  await propose(page, row, "4");
  await page.click("dialog button.danger");
  await page.keyboard.press("Escape");
  await until(async () => (await outcome.count()) === 2, "both outcomes are there");
  await shows(outcome.nth(0).locator("p"), /^dairy Plant\.mode = 3: done /);
  await shows(outcome.nth(1).locator("p"), /^dairy Plant\.mode = 4: done /);
  await outcome.nth(0).locator("button").focus();
  await page.keyboard.press("Enter");
  await until(async () => (await outcome.count()) === 1, "the one that was read is closed");
  await shows(outcome.locator("p"), /= 4/);
  await page.end();
});

test("a lost answer is asked for, and the write is not sent again", async () => {
  Object.assign(server.faults, { losesAnswer: true, delay: 1500 });
  const { page } = await proposed("Plant.mode", "3");
  await page.click("dialog button.danger");
  await shows(page.locator(".outcome.pending"), /not sent again/);
  await shows(page.locator(".outcome strong"), "done");
  assert.equal(server.sent.length, 1);
  assert.equal(server.requests.filter((one) => one === `GET /api/v1/writes/${server.sent[0].id}`).length >= 1, true);
  await page.end();
});

test("a server that was restarted meanwhile leaves the outcome not known", async () => {
  server.faults.delay = 60000;
  const { page } = await proposed("Plant.mode", "3");
  await page.click("dialog button.danger");
  await until(() => server.sent.length === 1, "the write has come");
  const { port } = server;
  await server.stop();
  await shows(page.locator(".outcome.pending"), /not sent again/);
  await server.start(port);
  await shows(page.locator(".outcome strong"), "not known");
  assert.equal(server.sent.length, 1);
  await page.end();
});

test("an open page writes again after the server was restarted", async () => {
  const page = await openPage(server.address, { hash: named("Plant.mode") });
  const row = rowOf(page, "Plant.mode");
  await shows(row.locator(".mark-word"), "good");
  const { port } = server;
  await server.stop();
  await shows(row.locator(".mark-word"), "not known");
  server.requests.length = 0;
  await server.start(port);
  await shows(row.locator(".mark-word"), "good");
  await until(() => server.requests.filter((one) => one === "GET /api/v1/alarms").length > 0, "the page asks anew");
  await propose(page, row, "3");
  await page.click("dialog button.danger");
  await shows(page.locator(".outcome strong"), "done");
  assert.equal(server.sent.length, 1);
  await page.end();
});

test("a write that meets another run of the server is not known", async () => {
  const { page } = await proposed("Plant.mode", "3");
  server.instance = "another run";
  await page.click("dialog button.danger");
  await shows(page.locator(".outcome"), /^not known The panel was started again meanwhile/);
  assert.deepEqual(server.sent, []);
  await page.end();
});

test("values that are not writable, and roles that do not write, are told so", async () => {
  const page = await openPage(server.address, { hash: named("Plant.heartbeat", "Plant.mode") });
  await shows(rowOf(page, "Plant.heartbeat").locator(".mark-word"), "good");
  await rowOf(page, "Plant.heartbeat").focus();
  await page.keyboard.press("Enter");
  await shows(page.locator(".notice"), "This value is not writable.");
  await page.end();
  server.session.role = "viewer";
  const viewer = await openPage(server.address, { hash: named("Plant.mode") });
  await shows(rowOf(viewer, "Plant.mode").locator(".mark-word"), "good");
  await rowOf(viewer, "Plant.mode").focus();
  await viewer.keyboard.press("Enter");
  await shows(viewer.locator(".notice"), "Your role does not write.");
  assert.equal(await viewer.locator("dialog").count(), 0);
  server.session.role = "engineer";
  await viewer.end();
});
