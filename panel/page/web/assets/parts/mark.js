// The mark of a value: a sign and a word, so that it is not told by its colour alone.

import { html } from "../html.js";
import { MARKS, wordOf } from "../state/freshness.js";

const SIGNS = { fresh: "●", unread: "○", stale: "◔", bad: "✕", lost: "⌁", unknown: "?", wrong: "✕" };

export function Mark({ mark }) {
  const { text } = MARKS[mark];
  return html`<span class=${`mark mark-${mark}`} title=${text}>
    <span aria-hidden="true">${SIGNS[mark]}</span> <span class="mark-word">${wordOf(mark)}</span>
  </span>`;
}
