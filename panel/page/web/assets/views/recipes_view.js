// Recipes: sets of values that are saved, compared with the PLC and restored.

import { formatValue } from "../values/format.js";
import { get, request, send } from "../server/api.js";
import { html, useEffect, useState } from "../html.js";
import { newId, OUTCOMES } from "../state/write_process.js";
import { timeText } from "../state/ages.js";

const PATIENCE = 120000; // ms: a recipe may have many values

export function RecipesView({ panel }) {
  const [recipes, setRecipes] = useState(null);
  const [shown, setShown] = useState(null); // {name, comparison | report | error | busy}
  const load = async () => {
    try {
      setRecipes((await get("/recipes")).recipes);
    } catch (error) {
      setRecipes([]);
      panel.tell(`The recipes did not come: ${error.message}`);
    }
  };
  useEffect(() => void load(), [panel.model.streams]);
  const { role, readOnly } = panel.model.session ?? {};
  const isEngineer = role === "engineer" && !readOnly;
  return html`<section class="page-section" aria-label="Recipes">
    <div class="toolbar">
      <span class="note count">${recipes ? `${recipes.length} ${recipes.length === 1 ? "recipe" : "recipes"}` : "…"}</span>
      <button type="button" disabled=${!isEngineer} title=${isEngineer ? "" : "Engineers save recipes."} onClick=${() => panel.open({ name: "recipe", saved: load })}>Save the table's values …</button>
    </div>
    <div class="scroll">
      ${recipes?.length === 0 && html`<p class="empty">No recipe is saved yet. Choose values in the table and save them here: they can be compared with the PLC and restored later.</p>`}
      ${recipes?.length > 0 && html`<table class="list">
        <thead><tr><th>Recipe</th><th>PLC</th><th>Values</th><th>Saved</th><th><span class="unseen">Actions</span></th></tr></thead>
        <tbody>${recipes.map((recipe) => html`<${Recipe} key=${recipe.name} panel=${panel} recipe=${recipe} current=${shown?.name === recipe.name} onShow=${setShown} onChange=${load} />`)}</tbody>
      </table>`}
      ${shown && html`<${Result} shown=${shown} />`}
    </div>
  </section>`;
}

function Recipe({ panel, recipe, current, onShow, onChange }) {
  const { name, plc } = recipe;
  const path = `/recipes/${encodeURIComponent(name)}`;
  const { role, readOnly } = panel.model.session ?? {};
  const mayWrite = ["operator", "engineer"].includes(role) && !readOnly && !panel.model.plcs.get(plc)?.readOnly;
  const compare = async () => {
    onShow({ name, busy: "Reading the PLC …" });
    try {
      onShow({ name, comparison: await get(`${path}/comparison`, { patience: PATIENCE }) });
    } catch (error) {
      onShow({ name, error: `Not compared: ${error.message}` });
    }
  };
  const restore = () => panel.open({
    name: "confirm",
    title: `Restore ${name}`,
    question: `${recipe.values} values are written to ${plc}, as they were saved on ${timeText(recipe.savedAt)}, and read back.`,
    answer: "Restore",
    act: async () => onShow({ name, ...(await restoreOnce(path, (text) => onShow({ name, busy: text }))) }),
  });
  const remove = () => panel.open({
    name: "confirm",
    title: `Delete ${name}`,
    question: "The saved values are gone then. The PLC keeps its own.",
    answer: "Delete",
    act: async () => {
      await send("DELETE", path).catch((error) => panel.tell(`Not deleted: ${error.message}`));
      onChange();
    },
  });
  return html`<tr class=${current ? "current" : ""}>
    <td><strong>${name}</strong></td><td data-name="PLC">${plc}</td><td data-name="Values">${recipe.values}</td>
    <td data-name="Saved">${timeText(recipe.savedAt)}<div class="note">${recipe.savedBy}</div></td>
    <td class="buttons">
      <button type="button" onClick=${compare}>Compare</button>
      <button type="button" disabled=${!mayWrite} onClick=${restore}>Restore …</button>
      <button type="button" disabled=${role !== "engineer" || readOnly} onClick=${remove}>Delete …</button>
    </td>
  </tr>`;
}

// Sent once: where the answer is lost, a comparison tells what the PLC has now.
async function restoreOnce(path, busy) {
  busy("Writing and reading back …");
  try {
    const { status, body } = await request("POST", `${path}/restore`, { id: newId() }, { patience: PATIENCE });
    return status === 200 ? { report: body } : { error: `Not restored: ${body?.error ?? status}` };
  } catch {
    return { error: "No answer came: which values were written is not known, and nothing is sent again. Compare to see what the PLC has now." };
  }
}

function Result({ shown: { name, busy, error, comparison, report } }) {
  return html`<section class="result" aria-live="polite">
    <h2>${name}</h2>
    ${busy && html`<p class="note">${busy}</p>`}
    ${error && html`<p class="error">${error}</p>`}
    ${comparison && html`<${Comparison} values=${comparison.values} />`}
    ${report && html`<${Report} report=${report} />`}
  </section>`;
}

const EQUAL_WORDS = { true: "equal", false: "differs", null: "not known" };

function Comparison({ values }) {
  const different = values.filter(({ equal }) => equal === false).length;
  const unknown = values.filter(({ equal }) => equal === null).length;
  return html`<p>${different} of ${values.length} differ${unknown ? `, ${unknown} not known` : ""}.</p>
    <table class="list"><thead><tr><th>Label</th><th>Saved</th><th>PLC now</th><th></th></tr></thead>
    <tbody>${values.map(({ label, saved, now, equal, type }) => html`<tr key=${label} class=${`equal-${equal}`}>
      <td>${label}</td><td data-name="Saved">${formatValue(saved, type)}</td><td data-name="Now">${formatValue(now, type)}</td><td><span class="state">${EQUAL_WORDS[equal]}</span></td>
    </tr>`)}</tbody></table>`;
}

const VERIFIED_WORDS = { true: "read back equal", false: "read back different", null: "not verified" };

function Report({ report: { values, written, notWritten, notKnown } }) {
  return html`<p><strong>${written} written, ${notWritten} not written, ${notKnown} not known.</strong></p>
    <table class="list"><thead><tr><th>Label</th><th>Before</th><th>Saved</th><th>After</th><th>Outcome</th></tr></thead>
    <tbody>${values.map(({ label, before, saved, after, outcome, reason, verified, type }) => html`<tr key=${label} class=${`outcome-${outcome}`}>
      <td>${label}</td><td data-name="Before">${formatValue(before, type)}</td><td data-name="Saved">${formatValue(saved, type)}</td><td data-name="After">${formatValue(after, type)}</td>
      <td><span class="state">${OUTCOMES[outcome]?.word ?? outcome}</span> ${VERIFIED_WORDS[verified]}<div class="note">${reason}</div></td>
    </tr>`)}</tbody></table>`;
}
