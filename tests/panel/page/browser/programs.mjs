// The panel and the simulator as programs, on the demo plant.

import assert from "node:assert/strict";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { spawn } from "node:child_process";
import { tmpdir } from "node:os";

import { freePort } from "./free_port.mjs";

const ROOT = join(dirname(fileURLToPath(import.meta.url)), "../../../..");
const PATIENCE = 40000; // ms for a program to be ready

class Program {
  // Ready when its output has `ready`.
  async start(path, words, ready) {
    this.child = spawn(join(process.env.PLC_BUILD, path), words, { stdio: ["pipe", "pipe", "pipe"] });
    this.output = "";
    for (const stream of [this.child.stdout, this.child.stderr]) stream.on("data", (part) => (this.output += part));
    this.ended = new Promise((done) => this.child.on("close", done));
    const end = Date.now() + PATIENCE;
    while (!this.output.includes(ready)) {
      assert.ok(Date.now() < end && this.child.exitCode === null, `${path} is not ready:\n${this.output}`);
      await new Promise((done) => setTimeout(done, 20));
    }
  }

  async kill() {
    this.child.kill("SIGKILL");
    await this.ended;
  }
}

// A simulated plant with a panel before it.
export class Site {
  simulator = new Program();
  panel = new Program();

  async start() {
    this.folder = mkdtempSync(join(tmpdir(), "plc-page-"));
    const plant = JSON.parse(readFileSync(join(ROOT, "simulator/demo/plant.json"), "utf8"));
    delete plant.$schema;
    plant.plc.port = await freePort();
    plant.settings.staleAfter = 2000;
    this.project = join(this.folder, "plant.json");
    writeFileSync(this.project, JSON.stringify(plant));
    this.port = await freePort();
    this.configuration = join(this.folder, "panel.json");
    writeFileSync(this.configuration, JSON.stringify(this.#settings()));
    await this.startSimulator();
    await this.startPanel();
    this.address = `http://127.0.0.1:${this.port}/`;
  }

  startSimulator() {
    return this.simulator.start("simulator/plc-simulator", [this.project], "listening on");
  }

  startPanel() {
    return this.panel.start("panel/plc-panel", ["--config", this.configuration], "listening on");
  }

  #settings() {
    const standing = { label: "Plant.mode", is: 0, text: "The line stands" };
    return {
      listen: `127.0.0.1:${this.port}`, record: { file: "record.db" }, audit: "audit.jsonl", recipes: "recipes",
      plcs: [{ name: "plant", project: this.project, alarms: [standing] }],
    };
  }

  // As if the program of the PLC did it.
  command(line) {
    this.simulator.child.stdin.write(`${line}\n`);
  }

  async stop() {
    await Promise.all([this.panel.kill(), this.simulator.kill()]);
    rmSync(this.folder, { recursive: true });
  }

  async get(path) {
    return (await fetch(`${this.address}api/v1/${path}`)).json();
  }
}
