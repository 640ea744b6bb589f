// A sentence that tells what has just been done, and goes by itself; screen readers say it.

import { html, useEffect } from "../html.js";

const SHOWN = 5000; // ms

export function Notice({ panel }) {
  const { notice } = panel;
  useEffect(() => {
    if (!notice) return undefined;
    const timer = setTimeout(() => {
      if (panel.notice === notice) {
        panel.notice = null;
        panel.changed();
      }
    }, SHOWN);
    return () => clearTimeout(timer);
  }, [notice]);
  return html`<div class="notice" role="status" aria-live="polite">${notice && html`<p>${notice.text}</p>`}</div>`;
}
