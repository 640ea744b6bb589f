// A new recipe of the values that are chosen in the table.

import { Dialog } from "../parts/dialog.js";
import { html, useState } from "../html.js";
import { ask } from "../server/api.js";
import { changeOutcome, changeText } from "../state/change_text.js";

export function SaveRecipeDialog({ panel, dialog }) {
  const { chosen } = panel.view;
  const plcs = [...new Set(chosen.map(({ plc }) => plc))];
  const [plc, setPlc] = useState(plcs[0] ?? "");
  const [error, setError] = useState("");
  const [busy, setBusy] = useState(false);
  const labels = chosen.filter((one) => one.plc === plc).map(({ label }) => label);
  const submit = async (event) => {
    event.preventDefault();
    const name = new FormData(event.target).get("name").trim();
    setBusy(true);
    const { status, body } = await ask("PUT", `/recipes/${encodeURIComponent(name)}`, { plc, labels }, { patience: 60000 });
    const texts = {
      done: `${name} is saved: ${labels.length} values of ${plc}, as the PLC had them.`,
      failed: `${name} is not saved`,
      unknown: `Whether ${name} is saved is not known`,
    };
    dialog.saved();
    // Somebody may have closed it meanwhile, and opened another one.
    const isOpen = panel.dialog === dialog;
    if (isOpen && changeOutcome(status) !== "done") {
      setBusy(false);
      setError(changeText(status, body, texts));
      return;
    }
    if (isOpen) panel.close();
    panel.tellChange(status, body, texts);
  };
  return html`<${Dialog} title="Save a recipe" onClose=${() => panel.close()}>
    ${plcs.length === 0
      ? html`<p>Choose the values of the recipe in the table first.</p>`
      : html`<form onSubmit=${submit} class="fields">
          <label>PLC <select value=${plc} onChange=${(event) => setPlc(event.target.value)}>${plcs.map((name) => html`<option key=${name} value=${name}>${name}</option>`)}</select></label>
          <label>Name <input name="name" required maxlength="60" autocomplete="off" /></label>
          <p class="note">${labels.length} values of the table are read from the PLC now and kept. A recipe of the same name is replaced.</p>
          <p class="error" role="alert">${error}</p>
          <footer class="dialog-foot">
            <button type="button" onClick=${() => panel.close()}>Cancel</button>
            <button type="submit" class="primary" disabled=${busy}>${busy ? "Reading …" : "Save"}</button>
          </footer>
        </form>`}
  <//>`;
}
