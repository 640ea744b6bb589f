// Makes the pictures of docs/panel.md: pictures.mjs FOLDER. They show
// the stand-in of the tests, whose plants look alike each time.

import { mkdirSync } from "node:fs";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

import { StandIn } from "../stand_in/stand_in.mjs";

const { chromium } = await import(pathToFileURL(join(process.env.PLC_TEST_PACKAGES, "playwright-core/index.mjs")));
const [folder] = process.argv.slice(2);
mkdirSync(folder, { recursive: true });

const labels = [
  "dairy|Plant.mode", "dairy|Plant.running", "dairy|Plant.lineSpeed", "dairy|Plant.faultWord", "dairy|Plant.tank[1].name",
  "dairy|Plant.tank[1].level", "dairy|Plant.tank[1].temperature", "dairy|Plant.tank[1].setpoint", "dairy|Totals.packs",
  "dairy|Totals.serial", "dairy|Totals.uptime", "store|Store.temperature", "store|Store.door",
];
const VALUES = `#values?${labels.map((label) => `v=${label}`).join("&")}`;
const TREND = "#trend?t=dairy|Plant.lineSpeed&t=dairy|Plant.tank[1].level|right&t=dairy|Plant.tank[2].level|right&t=store|Store.temperature|right";
const SIZES = { desktop: [1180, 720], panel: [800, 480], phone: [360, 740] };

const server = new StandIn(process.env.PLC_PAGE_PACKAGES);
const hour = 3600000;
const alarm = { plc: "dairy", label: "Plant.tank[1].level", condition: "above 90", value: 92.1, acknowledgedBy: null, acknowledgedAt: null };
server.setAlarm({ ...alarm, id: "1", text: "Tank 1 is nearly full", state: "active", since: Date.now() - 90000, ended: null });
server.setAlarm({ ...alarm, id: "2", label: "Plant.running", condition: "is FALSE", text: "The line stands", state: "ended", since: Date.now() - 2 * hour, ended: Date.now() - hour });
server.setAlarm({ ...alarm, id: "3", plc: "store", label: "Store.temperature", condition: "above -18", text: "The cold store is too warm", state: "normal", since: null, ended: null });
const address = await server.start();

const browser = await chromium.launch({
  executablePath: process.env.PLC_CHROMIUM,
  args: ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking", "--disable-component-update", "--disable-sync"],
});

async function picture(name, { size, dark = false, hash, wait = 4000, act = async () => {} }) {
  const [width, height] = SIZES[size];
  const page = await browser.newPage({ viewport: { width, height }, colorScheme: dark ? "dark" : "light" });
  await page.goto(address + hash);
  await page.waitForSelector(".link-up");
  await page.waitForTimeout(wait);
  await act(page);
  await page.screenshot({ path: join(folder, `${name}.png`) });
  await page.close();
}

async function openTree(page) {
  await page.click("[role=treeitem]:has-text('dairy')");
  await page.click("[role=treeitem] >> text=Plant");
  await page.click("[role=treeitem] >> text=tank");
  await page.waitForTimeout(300);
}

async function ask(page) {
  await page.locator("[data-key$='Plant.mode']").focus();
  await page.keyboard.press("Enter");
  await page.fill("#new-value", "3");
  await page.keyboard.press("Enter");
  await page.waitForTimeout(200);
}

await picture("panel-values", { size: "desktop", hash: VALUES, wait: 20000, act: openTree });
await picture("panel-trend", { size: "desktop", dark: true, hash: TREND, act: async (page) => {
  await page.mouse.move(840, 300);
  await page.waitForTimeout(200);
} });
await picture("panel-write", { size: "desktop", hash: VALUES, act: ask });
await picture("panel-alarms", { size: "desktop", dark: true, hash: "#alarms" });
await picture("panel-800x480", { size: "panel", hash: VALUES, wait: 12000 });
await picture("panel-phone", { size: "phone", dark: true, hash: VALUES, wait: 12000 });
server.setLink("dairy", "down", "The PLC does not answer.");
await picture("panel-no-link", { size: "desktop", hash: VALUES, wait: 2000 });
await browser.close();
await server.stop();
