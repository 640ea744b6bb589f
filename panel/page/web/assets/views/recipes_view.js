// Recipes: sets of values that are saved, compared with the PLC and restored.

import { formatValue } from "../values/format.js";
import { get } from "../server/api.js";
import { html, useEffect, useState } from "../html.js";
import { ValueCell } from "../parts/value_cell.js";
import { reportText, restoredWord } from "../state/recipe_result.js";
import { ageText, timeText } from "../state/ages.js";

export function RecipesView({ panel }) {
  const [{ recipes, error }, setList] = useState({}); // neither: asked for
  const load = async () => {
    try {
      setList({ recipes: (await get("/recipes")).recipes });
    } catch (failure) {
      setList({ error: failure.message });
    }
  };
  useEffect(() => void load(), [panel.model.streams]);
  const obstacle = panel.model.changeObstacle("engineer");
  const { shown, results } = panel.recipes;
  const result = results.get(shown);
  return html`<section class="page-section" aria-label="Recipes">
    <div class="toolbar">
      <span class="note count">${recipes ? `${recipes.length} ${recipes.length === 1 ? "recipe" : "recipes"}` : "…"}</span>
      <button type="button" disabled=${obstacle !== ""} title=${obstacle} onClick=${() => panel.open({ name: "recipe", saved: load })}>Save the table's values …</button>
    </div>
    <div class="scroll">
      ${error && html`<p class="empty error">The recipes are not known: ${error} <button type="button" onClick=${load}>Ask again</button></p>`}
      ${recipes?.length === 0 && html`<p class="empty">No recipe is saved yet. Choose values in the table and save them here: they can be compared with the PLC and restored later.</p>`}
      ${recipes?.length > 0 && html`<table class="list">
        <thead><tr><th>Recipe</th><th>PLC</th><th>Values</th><th>Saved</th><th><span class="unseen">Actions</span></th></tr></thead>
        <tbody>${recipes.map((recipe) => html`<${Recipe} key=${recipe.name} panel=${panel} recipe=${recipe} current=${shown === recipe.name} onChange=${load} />`)}</tbody>
      </table>`}
      ${result && html`<${Result} panel=${panel} name=${shown} result=${result} />`}
    </div>
  </section>`;
}

function Recipe({ panel, recipe, current, onChange }) {
  const { name, plc } = recipe;
  const desk = panel.recipes;
  const busy = desk.isBusy(name);
  const unusable = busy || Boolean(recipe.error);
  const restore = () => panel.open({
    name: "confirm",
    title: `Restore ${name}`,
    question: `Those of the ${recipe.values} values in which ${plc} differs from what was saved on ${timeText(recipe.savedAt)} are written and read back.`,
    answer: "Restore",
    act: () => desk.restore(recipe),
  });
  const remove = () => panel.open({
    name: "confirm",
    title: `Delete ${name}`,
    question: "The saved values are gone then. The PLC keeps its own.",
    answer: "Delete",
    act: async () => {
      await desk.remove(recipe);
      onChange();
    },
  });
  return html`<tr class=${current ? "current" : ""}>
    <td><strong>${name}</strong></td><td data-name="PLC">${plc}</td><td data-name="Values">${recipe.values}</td>
    <td data-name="Saved">${recipe.error ? html`<span class="error">${recipe.error}</span>` : html`${timeText(recipe.savedAt)}<div class="note">${recipe.savedBy}</div>`}</td>
    <td class="buttons">
      ${desk.results.has(name) && !current && html`<button type="button" onClick=${() => desk.show(name)}>Result</button>`}
      <button type="button" disabled=${unusable} onClick=${() => desk.compare(recipe)}>Compare</button>
      <button type="button" disabled=${unusable || !panel.model.mayChange("operator", plc)} onClick=${restore}>Restore …</button>
      <button type="button" disabled=${busy || !panel.model.mayChange("engineer")} onClick=${remove}>Delete …</button>
    </td>
  </tr>`;
}

function Result({ panel, name, result: { asked, busy, error, comparison, report, isOver } }) {
  const now = panel.now();
  const age = now === null || asked === null ? null : now - asked;
  return html`<section class=${comparison && isOver ? "result old" : "result"}>
    <h2>${name}</h2>
    <p class="note">${timeText(asked)}</p>
    ${busy && html`<p role="status">${busy}</p>`}
    ${error && html`<p class="error" role="status">${error}</p>`}
    ${comparison && isOver && html`<p class="error">The connection was lost since; what the PLC has now is not known. Compare again.</p>`}
    ${comparison && html`<${Comparison} values=${comparison.values} age=${age} />`}
    ${report && html`<${Report} report=${report} />`}
  </section>`;
}

const EQUAL_WORDS = { true: "equal", false: "differs", null: "not known" };

// Read from the PLC no longer ago than `age`.
function Comparison({ values, age }) {
  const different = values.filter(({ equal }) => equal === false).length;
  const unknown = values.filter(({ equal }) => equal === null).length;
  return html`<p class="summary" role="status">${different} of ${values.length} differ${unknown ? `, ${unknown} not known` : ""}.</p>
    <table class="list"><thead><tr><th>Label</th><th>Saved</th><th>In the PLC</th><th>Age</th><th></th></tr></thead>
    <tbody>${values.map(({ label, saved, now, equal, reason, type }) => html`<tr key=${label} class=${`equal-${equal}`}>
      <td>${label}</td><${ValueCell} name="Saved" text=${formatValue(saved, type)} /><${ValueCell} name="In the PLC" text=${formatValue(now, type)} />
      <td data-name="Age">${now === null ? "—" : ageText(age)}</td>
      <td><span class="state">${EQUAL_WORDS[equal]}</span>${reason && html`<div class="note">${reason}</div>`}</td>
    </tr>`)}</tbody></table>`;
}

const VERIFIED_WORDS = { true: "read back equal", false: "read back different", null: "not verified" };

function Report({ report }) {
  return html`<p class="summary" role="status"><strong>${reportText(report)}</strong></p>
    <table class="list"><thead><tr><th>Label</th><th>Before</th><th>Saved</th><th>After</th><th>Outcome</th></tr></thead>
    <tbody>${report.values.map((value) => html`<${Restored} key=${value.label} value=${value} />`)}</tbody></table>`;
}

function Restored({ value }) {
  const { label, before, saved, after, reason, verified, type } = value;
  const { name, word } = restoredWord(value);
  return html`<tr class=${`outcome-${name}`}>
      <td>${label}</td><${ValueCell} name="Before" text=${formatValue(before, type)} /><${ValueCell} name="Saved" text=${formatValue(saved, type)} /><${ValueCell} name="After" text=${formatValue(after, type)} />
      <td><span class="state">${word}</span> ${name === "equal" ? "" : VERIFIED_WORDS[verified]}<div class="note">${reason}</div></td>
    </tr>`;
}
