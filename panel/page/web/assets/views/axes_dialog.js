// The lowest and highest number of each axis of the trend.

import { AXES, parseLimits } from "../state/axis_limits.js";
import { Dialog } from "../parts/dialog.js";
import { html, useState } from "../html.js";

const WORDS = { left: "Left axis", right: "Right axis" };

export function AxesDialog({ panel }) {
  const [error, setError] = useState("");
  const submit = (event) => {
    event.preventDefault();
    const fields = new FormData(event.target);
    const limits = {};
    for (const axis of AXES) {
      const parsed = parseLimits(fields.get(`${axis}-lowest`), fields.get(`${axis}-highest`));
      if (parsed.error) return setError(`${WORDS[axis]}: ${parsed.error}`);
      limits[axis] = parsed.limits;
    }
    panel.limitAxes(limits);
    panel.close();
  };
  return html`<${Dialog} title="Axes" onClose=${() => panel.close()}>
    <form onSubmit=${submit} class="fields">
      ${AXES.map((axis) => html`<fieldset key=${axis}><legend>${WORDS[axis]}</legend>
        ${["highest", "lowest"].map((name) => html`<label key=${name}>${name === "lowest" ? "Lowest" : "Highest"}
          <input name=${`${axis}-${name}`} defaultValue=${panel.axes[axis][name] ?? ""} placeholder="as the values need it" inputmode="decimal" autocomplete="off" /></label>`)}
      </fieldset>`)}
      <p class="error" role="alert">${error}</p>
      <footer class="dialog-foot">
        <button type="button" onClick=${() => panel.close()}>Cancel</button>
        <button type="submit" class="primary">Set</button>
      </footer>
    </form>
  <//>`;
}
