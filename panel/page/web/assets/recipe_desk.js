// Comparisons and restores of recipes, whatever view is looked at meanwhile.

import { ask, currentRun, get } from "./server/api.js";
import { changeOutcome } from "./state/change_text.js";
import { newId } from "./state/write_process.js";
import { reportText, restoreResult } from "./state/recipe_result.js";

const PATIENCE = 120000; // ms: a recipe may have many values

const pathOf = (name) => `/recipes/${encodeURIComponent(name)}`;

export class RecipeDesk {
  constructor(panel) {
    this.panel = panel;
    // name -> {plc, asked, busy | error | comparison | report, isOver}; asked: the server's time. isOver:
    // stream or link were lost since, so that what the PLC has is not known any more.
    this.results = new Map();
    this.shown = null; // the name of the recipe whose result is looked at
    panel.model.listeners.add({ gap: (plc) => this.#lose(plc) });
  }

  isBusy(name) {
    return Boolean(this.results.get(name)?.busy);
  }

  async compare({ name, plc }) {
    if (this.isBusy(name)) return;
    const asked = this.panel.now();
    this.#begin(name, { plc, asked, busy: "Reading the PLC …" });
    try {
      const comparison = await get(`${pathOf(name)}/comparison`, { patience: PATIENCE });
      const isOver = this.results.get(name).isOver || !this.panel.isHeard();
      this.#end(name, { plc, asked, comparison, isOver }, "compared.");
    } catch (error) {
      const text = `Not compared: ${error.message}`;
      this.#end(name, { plc, asked, error: text }, text);
    }
  }

  // Sent once.
  async restore({ name, plc }) {
    if (this.isBusy(name)) return;
    const asked = this.panel.now();
    this.#begin(name, { plc, asked, busy: "Writing and reading back …" });
    const { status, body } = await ask("POST", `${pathOf(name)}/restore`, { id: newId() }, { patience: PATIENCE, run: currentRun() });
    const result = restoreResult(status, body);
    this.#end(name, { plc, asked, ...result }, result.report ? reportText(result.report) : result.error, true);
  }

  async remove({ name }) {
    const { status, body } = await ask("DELETE", pathOf(name));
    if (changeOutcome(status) === "done") this.results.delete(name);
    this.panel.tellChange(status, body, { done: `${name} is deleted.`, failed: `${name} is not deleted`, unknown: `Whether ${name} is deleted is not known` });
  }

  show(name) {
    this.shown = name;
    this.panel.changed();
  }

  #begin(name, result) {
    this.results.set(name, result);
    this.show(name);
  }

  // Told elsewhere too when nobody looks at it any more; what became of a change stays there.
  #end(name, result, text, isChange = false) {
    this.results.set(name, result);
    if (this.panel.view.view !== "recipes" || this.shown !== name) this.panel[isChange ? "keep" : "tell"](`${name}: ${text}`);
    this.panel.changed();
  }

  // plc null: of none is anything heard any more.
  #lose(plc) {
    for (const result of this.results.values()) {
      if (plc === null || plc === result.plc) result.isOver = true;
    }
  }
}
