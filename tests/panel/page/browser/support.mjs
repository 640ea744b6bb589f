// A browser, a server for it, and what all tests ask of a page: no error, nothing that its policy
// forbids, no request but to its own server.
//
// PLC_PAGE_PACKAGES: node_modules of the page; PLC_TEST_PACKAGES: that of the tests; PLC_CHROMIUM:
// the browser.

import assert from "node:assert/strict";
import { after, before } from "node:test";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

import { StandIn } from "../stand_in/stand_in.mjs";
import { freePort } from "./free_port.mjs";

const { chromium } = await import(pathToFileURL(join(process.env.PLC_TEST_PACKAGES, "playwright-core/index.mjs")));

const PATIENCE = 40000; // ms for anything that a page is to show
const FLAGS = [
  "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
  "--disable-background-networking", "--disable-component-update", "--disable-sync",
];

let browser = null;

// Starts the browser for the tests of a file.
export function withBrowser() {
  before(async () => {
    browser = await chromium.launch({ executablePath: process.env.PLC_CHROMIUM, args: FLAGS });
  });
  after(() => browser.close());
}

export async function standIn() {
  const server = new StandIn(process.env.PLC_PAGE_PACKAGES);
  server.address = await server.start(await freePort());
  return server;
}

// A page at `address`, and what went wrong in it. Ends by close().
export async function openPage(address, { width = 1280, height = 800, dark = false, touch = false, hash = "", calm = false } = {}) {
  const context = await browser.newContext({
    viewport: { width, height }, colorScheme: dark ? "dark" : "light", hasTouch: touch, acceptDownloads: true,
    reducedMotion: calm ? "reduce" : "no-preference",
  });
  const page = await context.newPage();
  page.setDefaultTimeout(PATIENCE);
  const seen = { errors: [], violations: [], requests: [] };
  page.on("pageerror", (error) => seen.errors.push(String(error.stack ?? error)));
  page.on("request", (request) => seen.requests.push(request.url()));
  await page.exposeFunction("tellViolation", (text) => seen.violations.push(text));
  await page.addInitScript(() => {
    document.addEventListener("securitypolicyviolation", (event) => window.tellViolation(`${event.violatedDirective} ${event.blockedURI}`));
    // A computer that sleeps: its clock goes on, nothing else does.
    const now = Date.now.bind(Date);
    window.slept = 0;
    Date.now = () => now() + window.slept;
  });
  await page.goto(address + hash);
  page.seen = seen;
  page.end = async () => {
    assert.deepEqual(seen.errors, []);
    assert.deepEqual(seen.violations, []);
    const origin = new URL(address).origin;
    assert.deepEqual(seen.requests.filter((url) => new URL(url).origin !== origin && !url.startsWith(`blob:${origin}`)), []);
    await context.close();
  };
  return page;
}

// Another view of the same page, as by its address.
export const follow = (page, hash) => page.evaluate((to) => void (location.hash = to), hash);

const withPlc = (label) => (label.includes("|") ? label : `dairy|${label}`);
export const named = (...labels) => `#values?${labels.map((label) => `v=${withPlc(label)}`).join("&")}`;
export const drawn = (...labels) => `#trend?${labels.map((label) => `t=${withPlc(label)}`).join("&")}`;

// The row of a label in the table.
export const rowOf = (page, label) => page.locator(`.row.value[data-key$="|${label}"]`);

// Types a new value for a row, up to the question.
export async function propose(page, row, text) {
  await row.focus();
  await page.keyboard.press("Enter");
  await page.fill("#new-value", text);
  await page.keyboard.press("Enter");
}

// Waits until a text of the page is `expected`, or fits it.
export async function shows(locator, expected) {
  const end = Date.now() + PATIENCE;
  let text = null;
  while (Date.now() < end) {
    text = (await locator.first().textContent().catch(() => null))?.trim().replace(/\s+/g, " ");
    if (text !== undefined && text !== null && (expected instanceof RegExp ? expected.test(text) : text === expected)) return;
    await new Promise((done) => setTimeout(done, 50));
  }
  assert.fail(`shown is ${JSON.stringify(text)}, expected ${expected}`);
}

// `what`: a text, or what gives it when it is known.
export async function until(condition, what) {
  const end = Date.now() + PATIENCE;
  while (!(await condition())) {
    assert.ok(Date.now() < end, `waited in vain: ${what instanceof Function ? what() : what}`);
    await new Promise((done) => setTimeout(done, 50));
  }
}

// Whether a value looks as if it held now: not struck, not grey, without a word.
export async function looksFresh(row) {
  return row.evaluate((element) => {
    const number = element.querySelector(".number");
    const struck = number.closest("s") !== null;
    return !struck && element.classList.contains("is-fresh") && element.querySelector(".mark-word").textContent === "good";
  });
}

// Where the last line of the trend is, in hundredths of the plot's width and height. It is drawn over the others.
export const inkOf = (page) =>
  page.locator(".plot canvas").evaluate((canvas) => {
    const probe = document.createElement("canvas").getContext("2d", { willReadFrequently: true });
    const count = document.querySelectorAll(".legend li").length;
    probe.fillStyle = getComputedStyle(canvas).getPropertyValue(`--series-${count}`).trim();
    probe.fillRect(0, 0, 1, 1);
    const [r, g, b] = probe.getImageData(0, 0, 1, 1).data;
    const whole = canvas.getBoundingClientRect();
    const over = document.querySelector(".plot .u-over").getBoundingClientRect();
    if (!whole.width || !over.width) return { columns: [], rows: [] }; // made anew just now
    const ratio = canvas.width / whole.width;
    const [left, top, width, height] = [over.left - whole.left, over.top - whole.top, over.width, over.height].map((one) => Math.round(one * ratio));
    const { data } = canvas.getContext("2d").getImageData(left, top, width, height);
    const columns = new Set();
    const rows = new Set();
    for (let i = 0; i < data.length; i += 4) {
      if (Math.abs(data[i] - r) + Math.abs(data[i + 1] - g) + Math.abs(data[i + 2] - b) >= 90 || data[i + 3] <= 128) continue;
      columns.add(Math.floor((((i / 4) % width) / width) * 100));
      rows.add(Math.floor((Math.floor(i / 4 / width) / height) * 100));
    }
    return { columns: [...columns].sort((a, b) => a - b), rows: [...rows].sort((a, b) => a - b) };
  });
