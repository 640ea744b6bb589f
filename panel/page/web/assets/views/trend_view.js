import { html } from "../html.js";
export function TrendView() {
  return html`<p class="empty">…</p>`;
}
