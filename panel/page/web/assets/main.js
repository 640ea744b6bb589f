// Puts the page together.

import { App } from "./app.js";
import { html, render } from "./html.js";
import { applyTheme } from "./state/theme.js";
import { Panel } from "./panel.js";

applyTheme();

const root = document.getElementById("app");
root.replaceChildren();

// At most ten times a second, and not while nobody looks.
const INTERVAL = 100; // ms
let drawn = -Infinity;
let timer = null;

function draw() {
  timer = null;
  drawn = performance.now();
  render(html`<${App} panel=${panel} />`, root);
}

function changed() {
  if (timer !== null) return;
  timer = setTimeout(draw, Math.max(0, INTERVAL - (performance.now() - drawn)));
}

const panel = new Panel(changed);
panel.start();
draw();
