import { html } from "../html.js";
export function AlarmsView() {
  return html`<p class="empty">…</p>`;
}
