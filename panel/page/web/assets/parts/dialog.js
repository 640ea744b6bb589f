// A dialog of the browser's own: it keeps the focus inside, gives it back, and Escape closes it.

import { html, useLayoutEffect, useRef } from "../html.js";

export function Dialog({ title, onClose, children, wide }) {
  const element = useRef(null);
  useLayoutEffect(() => {
    const before = document.activeElement;
    const dialog = element.current;
    dialog.showModal();
    return () => {
      // While it is open nothing outside takes the focus.
      dialog.close();
      if (before?.isConnected) before.focus();
    };
  }, []);
  const cancel = (event) => {
    event.preventDefault();
    onClose();
  };
  return html`
    <dialog ref=${element} class=${wide ? "dialog wide" : "dialog"} aria-labelledby="dialog-title" onCancel=${cancel}>
      <header class="dialog-head">
        <h2 id="dialog-title">${title}</h2>
        <button type="button" class="quiet" aria-label="Close" onClick=${onClose}>✕</button>
      </header>
      ${children}
    </dialog>
  `;
}
