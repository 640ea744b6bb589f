// A question before something that changes what others rely on.

import { Dialog } from "../parts/dialog.js";
import { html, useEffect, useRef } from "../html.js";

// dialog: {title, question, answer, act()}.
export function ConfirmDialog({ panel, dialog }) {
  const button = useRef(null);
  useEffect(() => button.current.focus(), []);
  const act = () => {
    panel.close();
    dialog.act();
  };
  return html`<${Dialog} title=${dialog.title} onClose=${() => panel.close()}>
    <p>${dialog.question}</p>
    <footer class="dialog-foot">
      <button type="button" onClick=${() => panel.close()}>Cancel</button>
      <button type="button" class="primary" ref=${button} onClick=${act}>${dialog.answer}</button>
    </footer>
  <//>`;
}
