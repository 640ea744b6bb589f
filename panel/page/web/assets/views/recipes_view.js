import { html } from "../html.js";
export function RecipesView() {
  return html`<p class="empty">…</p>`;
}
