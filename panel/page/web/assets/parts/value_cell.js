// A value of the PLC in a list, as it is: its spaces are shown, and no number goes on in another line.

import { html } from "../html.js";

const WIDE = 16; // characters from which on a word has smaller letters
const ENDLESS = 24; // above which it is no number, and may be divided

export function ValueCell({ name, text }) {
  const longest = Math.max(...text.split(/\s+/).map((word) => word.length));
  const size = longest > ENDLESS ? " endless" : longest >= WIDE ? " wide" : "";
  return html`<td data-name=${name} class=${`value${size}`}>${text}</td>`;
}
