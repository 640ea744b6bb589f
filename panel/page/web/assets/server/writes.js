// Carries a write to the server and back; see state/write_process.js.

import { request } from "./api.js";

const ASK_INTERVAL = 1000; // ms
const WRITE_PATIENCE = 15000; // ms for the answer of a write

// Sends what process.request() says, once, and asks for its outcome until it is known or given up.
export async function carryOut(process, changed) {
  await step(process, () => request("POST", "/writes", process.request(), { patience: WRITE_PATIENCE, run: process.run }));
  changed();
  while (process.state === "missing") {
    await new Promise((done) => setTimeout(done, ASK_INTERVAL));
    await step(process, () => request("GET", `/writes/${encodeURIComponent(process.id)}`, undefined, { patience: 5000 }));
    changed();
  }
}

async function step(process, ask) {
  try {
    const { status, body } = await ask();
    process.answered(status, body, performance.now());
  } catch {
    process.lost(performance.now());
  }
}
