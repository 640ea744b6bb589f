// Login, alarms, recipes.

import assert from "node:assert/strict";
import { after, before, test } from "node:test";

import { named, openPage, rowOf, shows, standIn, until, withBrowser } from "./support.mjs";

let server;
withBrowser();
before(async () => (server = await standIn()));
after(() => server.stop());

const alarm = { id: "1", plc: "dairy", label: "Plant.mode", text: "The line stands", condition: "is 0", state: "active", since: 1700000000000, ended: null, value: 0, acknowledgedBy: null, acknowledgedAt: null };

test("where users are asked for, nothing is shown before the login", async () => {
  Object.assign(server.session, { loginRequired: true, user: null, role: null });
  const page = await openPage(server.address, { hash: named("Plant.mode") });
  await page.fill("input[name=user]", "erna");
  await page.fill("input[name=password]", "butter");
  await page.keyboard.press("Enter");
  await shows(page.locator(".error"), "User or password is wrong.");
  assert.equal(await page.locator(".row").count(), 0);
  await page.fill("input[name=password]", "milk");
  await page.keyboard.press("Enter");
  await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "good");
  await shows(page.locator(".tools .note"), "erna");
  await page.click("text=Log out");
  await page.waitForSelector("input[name=password]");
  await page.end();
  Object.assign(server.session, { loginRequired: false, user: null, role: "engineer" });
});

test("alarms come, are acknowledged, end", async () => {
  const page = await openPage(server.address, { hash: "#alarms" });
  await shows(page.locator(".empty"), "No alarm is configured.");
  server.setAlarm(alarm);
  await shows(page.locator(".alarm .state"), "▲ active");
  await shows(page.locator(".tab .badge"), "1 active");
  await page.click("text=Acknowledge >> nth=-1");
  await shows(page.locator("[data-name=Acknowledged]"), /^local/);
  server.setAlarm({ ...server.alarms.get("1"), state: "ended", ended: 1700000060000 });
  await shows(page.locator(".alarm .state"), "ended");
  await page.click("text=History");
  await shows(page.locator(".alarm strong"), "The line stands");
  await page.end();
});

test("an alarm that has come anew meanwhile is not acknowledged", async () => {
  server.setAlarm(alarm);
  const page = await openPage(server.address, { hash: "#alarms" });
  await shows(page.locator(".alarm .state"), "▲ active");
  server.alarms.set("1", { ...alarm, since: alarm.since + 1 });
  await page.click("button:has-text('Acknowledge')");
  await shows(page.locator(".outcomes p"), "The line stands is not acknowledged: That occurrence is over.");
  await page.end();
});

test("alarms are not known while the server is not heard", async () => {
  server.setAlarm(alarm);
  const page = await openPage(server.address, { hash: "#alarms" });
  await shows(page.locator(".alarm .state"), "▲ active");
  server.faults.silent = true;
  await shows(page.locator(".alarm .state"), "not known");
  server.faults.silent = false;
  await shows(page.locator(".alarm .state"), "▲ active");
  await page.end();
});

test("an alarm of the history that has ended since is not shown as active", async () => {
  server.setAlarm({ ...alarm, id: "9" });
  server.recorded = [{ ...alarm, id: "9" }];
  const page = await openPage(server.address, { hash: "#alarms" });
  await shows(page.locator(".alarm .state"), "▲ active");
  await page.click("text=History");
  await shows(page.locator(".alarm .state"), "▲ active");
  server.setAlarm({ ...alarm, id: "9", state: "ended", ended: alarm.since + 60000 });
  await shows(page.locator(".alarm .state"), "ended");
  server.faults.silent = true;
  server.setAlarm({ ...alarm, id: "9", since: alarm.since });
  await shows(page.locator(".alarm .state"), "not known");
  server.faults.silent = false;
  server.recorded = null;
  await page.end();
});

test("nobody is asked to acknowledge or to change recipes in read-only mode, and no viewer is", async () => {
  server.alarms.clear();
  server.setAlarm(alarm);
  server.recipes.set("Dawn", { plc: "dairy", savedAt: Date.now(), values: [{ label: "Plant.mode", saved: 2 }] });
  for (const session of [{ readOnly: true, role: "engineer" }, { readOnly: false, role: "viewer" }]) {
    Object.assign(server.session, session);
    const page = await openPage(server.address, { hash: "#alarms" });
    await shows(page.locator(".alarm .state"), "▲ active");
    assert.equal(await page.locator("button:has-text('Acknowledge')").count(), 0);
    await page.click(".tab:has-text('Recipes')");
    await shows(page.locator(".list tbody td strong"), "Dawn");
    const offered = await page.locator(".page-section button:enabled").allTextContents();
    assert.deepEqual(offered, ["Compare"]);
    await page.end();
  }
  Object.assign(server.session, { readOnly: false, role: "engineer" });
  server.recipes.clear();
});

test("a logout that the server has not answered is told as not known", async () => {
  Object.assign(server.session, { loginRequired: true, user: "erna", role: "operator" });
  const page = await openPage(server.address, { hash: named("Plant.mode") });
  await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "good");
  const { port } = server;
  await server.stop();
  await page.click("text=Log out");
  await shows(page.locator(".outcomes p"), "Whether you are logged out is not known: the server does not answer.");
  await server.start(port);
  await shows(rowOf(page, "Plant.mode").locator(".mark-word"), "good");
  await page.end();
  Object.assign(server.session, { loginRequired: false, user: null, role: "engineer" });
});

test("a recipe is saved, compared and restored with a report", async () => {
  const { written } = server.plants.get("dairy");
  const page = await openPage(server.address, { hash: `${named("Plant.mode", "Plant.interlock", "Totals.note")}`.replace("#values", "#recipes") });
  await page.click("text=Save the table");
  await page.fill("input[name=name]", "Morning start");
  await page.click("dialog button[type=submit]");
  await shows(page.locator(".list tbody td strong"), "Morning start");
  written.set("Plant.mode", 1);
  written.set("Plant.interlock", 9);
  await page.click("button:has-text('Compare')");
  await shows(page.locator(".result .summary"), "2 of 3 differ.");
  await shows(page.locator(".result [data-name=Age]"), /^\d+\.\d s$/);
  await page.click("button:has-text('Restore')");
  await shows(page.locator("dialog p"), /^Those of the 3 values in which dairy differs from what was saved/);
  await page.click("dialog button:has-text('Restore')");
  await shows(page.locator(".result .summary"), "1 written, 1 equal, 1 not written, 0 not known.");
  await shows(page.locator(".result .outcome-equal .state"), "equal");
  await shows(page.locator(".result .outcome-refused"), /The PLC refused it with status 3/);
  assert.equal(written.get("Plant.mode"), 2);
  await page.click("button:has-text('Delete')");
  await page.click("dialog button:has-text('Delete')");
  await until(async () => (await page.locator(".empty").count()) === 1, "no recipe is left");
  await page.end();
});

// A page with a saved recipe of one value that the PLC has changed since.
async function withRecipe(name) {
  const { written } = server.plants.get("dairy");
  written.set("Plant.mode", 2);
  server.recipes.set(name, { plc: "dairy", savedAt: Date.now(), values: [{ label: "Plant.mode", saved: 2 }] });
  const page = await openPage(server.address, { hash: "#recipes" });
  await shows(page.locator(".link-word"), "connected");
  written.set("Plant.mode", 1);
  return { page, row: page.locator(".list tr", { hasText: name }) };
}

async function restore({ page, row }) {
  await row.locator("button:has-text('Restore')").click();
  await page.click("dialog button:has-text('Restore')");
}

test("what became of a restore whose answer is lost or is no refusal is not known, and nothing is sent again", async () => {
  for (const fault of [412, 429, 503, "lost"]) {
    server.restores = 0;
    server.faults.restore = fault;
    const { page, row } = await withRecipe("Evening");
    await restore({ page, row });
    await shows(page.locator(".result .error"), /^Which values were written is not known: .* Nothing is sent again/);
    if (fault !== "lost") assert.equal(server.restores, 1);
    await page.end();
  }
  server.faults.restore = 409;
  const { page, row } = await withRecipe("Evening");
  await restore({ page, row });
  await shows(page.locator(".result .error"), "Not restored: Fault 409.");
  await page.end();
  server.faults.restore = null;
});

test("a recipe that could not be saved is told, also when the dialog was closed meanwhile", async () => {
  const page = await openPage(server.address, { hash: named("Plant.mode").replace("#values", "#recipes") });
  await shows(page.locator(".link-word"), "connected");
  const save = async () => {
    await page.click("text=Save the table");
    await page.fill("input[name=name]", "Dusk");
    await page.click("dialog button[type=submit]");
  };
  server.faults.save = 403;
  await save();
  await shows(page.locator("dialog .error"), "Dusk is not saved: Fault 403.");
  await page.keyboard.press("Escape");
  let answer;
  Object.assign(server.faults, { save: 503, gate: new Promise((done) => (answer = done)) });
  await save();
  await page.keyboard.press("Escape");
  await until(async () => (await page.locator("dialog").count()) === 0, "the dialog is closed");
  await page.keyboard.press("?");
  await shows(page.locator("dialog h2"), "Keys and marks");
  answer();
  await shows(page.locator(".outcomes p"), "Whether Dusk is saved is not known: Fault 503.");
  await shows(page.locator("dialog h2"), "Keys and marks");
  Object.assign(server.faults, { save: null, gate: null });
  await page.end();
});

test("a report that comes while another view is looked at is told there and kept", async () => {
  server.faults.delay = 1000;
  const { page, row } = await withRecipe("Night");
  await restore({ page, row });
  await shows(page.locator(".result p[role=status]"), "Writing and reading back …");
  await page.click(".tab:has-text('Values')");
  await shows(page.locator(".outcomes p"), "Night: 1 written, 0 equal, 0 not written, 0 not known.");
  await page.click(".tab:has-text('Recipes')");
  await shows(page.locator(".result .summary"), "1 written, 0 equal, 0 not written, 0 not known.");
  server.faults.delay = 0;
  await page.end();
});

test("a comparison counts no more when the link was lost behind it", async () => {
  const { page, row } = await withRecipe("Noon");
  await row.locator("button:has-text('Compare')").click();
  await shows(page.locator(".result .state"), "differs");
  assert.equal(await page.locator(".result.old").count(), 0);
  server.setLink("store", "down", "gone");
  server.setLink("dairy", "down", "gone");
  await shows(page.locator(".result.old .error"), /^The connection was lost since; what the PLC has now is not known/);
  server.setLink("store", "up");
  server.setLink("dairy", "up");
  await page.end();
});

const auditLine = (n) => JSON.stringify({ time: new Date(1700000000000 + 1000 * n).toISOString(), action: "write", phase: "outcome", user: "erna", address: "10.1.2.3", plc: "dairy", label: "Plant.mode", old: "2", seen: "1", new: String(n), id: `w${n}`, outcome: n === 249 ? "refused" : "done", reason: n === 249 ? "not allowed" : "", n, previous: "00" });

test("engineers read the audit, the newest first and page by page", async () => {
  server.audit = Array.from({ length: 250 }, (_, n) => auditLine(n));
  const page = await openPage(server.address, { hash: "#values" });
  await page.click(".tab:has-text('Audit')");
  const first = page.locator(".list tbody tr").first();
  await shows(first, /^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d ?erna ?10\.1\.2\.3 ?write ?dairy ?Plant\.mode ?2 ?1 ?249 ?refused ?not allowed$/);
  await shows(page.locator(".toolbar .count"), /^151 to 250 of 250 lines at /);
  await shows(page.locator(".toolbar [role=status]"), "No line was altered.");
  assert.equal(await page.locator(".list tbody tr").count(), 100);
  // A new line changes nothing of where the pages are.
  server.audit.push(auditLine(250));
  await page.click("button:has-text('Older')");
  await shows(page.locator(".toolbar .count"), /^51 to 150 of 251 lines/);
  await shows(first.locator("[data-name=New]"), "149");
  await page.click("button:has-text('Older')");
  await shows(page.locator(".toolbar .count"), /^1 to 50 of 251 lines/);
  assert.equal(await page.locator("button:has-text('Older')").isDisabled(), true);
  await page.click("button:has-text('Newer')");
  await shows(page.locator(".toolbar .count"), /^51 to 150 of 251 lines/);
  server.flaw = "line 7 was altered: the hashes do not fit it";
  await page.click("button:has-text('Newest')");
  await shows(page.locator(".toolbar .count"), /^152 to 251 of 251 lines/);
  await shows(page.locator(".toolbar .error"), "Not intact: line 7 was altered: the hashes do not fit it");
  server.flaw = "";
  const { port } = server;
  await server.stop();
  await page.click("button:has-text('Older')");
  await shows(page.locator(".error[role=status]"), "The audit is not known: the server does not answer.");
  await server.start(port);
  await page.end();
});

test("the audit is offered to engineers alone, and only where there is one", async () => {
  server.audit = [auditLine(0)];
  server.session.role = "operator";
  server.requests.length = 0;
  const operator = await openPage(server.address, { hash: "#audit" });
  await shows(operator.locator(".empty"), "Engineers read the audit.");
  assert.equal(await operator.locator(".tab").count(), 4);
  assert.equal(server.requests.includes("GET /api/v1/audit"), false);
  await operator.end();
  server.audit = null;
  server.session.role = "engineer";
  const page = await openPage(server.address, { hash: "#audit" });
  await shows(page.locator(".empty"), /^This panel keeps no audit/);
  assert.equal(await page.locator(".tab").count(), 4);
  assert.equal(server.requests.includes("GET /api/v1/audit"), false);
  await page.end();
});
