// Writes a value: the old one and the new one, the question, the outcome.

import { Dialog } from "../parts/dialog.js";
import { editText } from "../values/edit_text.js";
import { formatValue } from "../values/format.js";
import { html, useEffect, useLayoutEffect, useRef, useState } from "../html.js";
import { keyOf } from "../state/rows.js";
import { MARKS } from "../state/freshness.js";
import { newId, outcomeText, WriteProcess } from "../state/write_process.js";
import { parseWritten } from "../values/parse.js";
import { typeOf } from "../values/types.js";
import { timeText } from "../state/ages.js";

// Opens the dialog for a row, or tells why the row cannot be written.
export function startWrite(panel, row) {
  const obstacle = panel.model.writeObstacle(row);
  if (obstacle) {
    panel.tell(obstacle);
    return;
  }
  if (Array.isArray(row.value)) {
    panel.tell("Choose a single element of the list to write it.");
    return;
  }
  panel.open({ name: "write", process: new WriteProcess({ id: newId(), ...row }), typed: proposal(row) });
}

// With what the field begins. Who writes a switch wants the other state.
function proposal({ value, type }) {
  if (typeOf(type).form !== "boolean") return editText(value, type);
  return value === true ? "FALSE" : "TRUE";
}

export function WriteDialog({ panel, dialog }) {
  const { process } = dialog;
  const row = panel.model.rows.get(keyOf(process));
  const Step = { editing: Editing, asking: Asking, sending: Sending, missing: Sending, over: Over }[process.state];
  const busy = process.state === "sending" || process.state === "missing";
  const close = () => {
    if (busy) panel.tell(`The outcome of the write to ${process.label} will be told here.`);
    panel.close();
  };
  return html`<${Dialog} title=${`Write ${process.label}`} onClose=${close}>
    <p class="note">${process.plc} · ${process.type}${process.unit ? ` · ${process.unit}` : ""}</p>
    <${Step} panel=${panel} dialog=${dialog} process=${process} row=${row} onClose=${close} />
  <//>`;
}

function OldValue({ panel, row }) {
  if (!row) return html`<span class="old">—</span>`;
  const mark = panel.mark(row);
  const text = formatValue(row.value, row.type);
  return mark === "fresh" ? html`<span class="old">${text}</span>` : html`<span class="old"><s>${text}</s> (${MARKS[mark].word})</span>`;
}

function Editing({ panel, dialog, process, row, onClose }) {
  const [error, setError] = useState("");
  const field = useRef(null);
  useEffect(() => {
    field.current.focus();
    field.current.select?.();
  }, []);
  const submit = (event) => {
    event.preventDefault();
    dialog.typed = field.current.value;
    const { value, error: wrong } = parseWritten(field.current.value, process.type);
    if (wrong) {
      setError(wrong);
      return;
    }
    process.propose(value);
    panel.changed();
  };
  const isBoolean = typeOf(process.type).form === "boolean";
  return html`<form onSubmit=${submit} class="write">
    <dl class="values">
      <dt>Now</dt><dd><${OldValue} panel=${panel} row=${row} /></dd>
      <dt><label for="new-value">New</label></dt>
      <dd>${
        isBoolean
          ? html`<select id="new-value" ref=${field}>${["TRUE", "FALSE"].map((text) => html`<option key=${text} value=${text} selected=${dialog.typed === text}>${text}</option>`)}</select>`
          : html`<input id="new-value" ref=${field} defaultValue=${dialog.typed} autocomplete="off" spellcheck=${false} aria-describedby="write-error" />`
      } <span class="unit">${process.unit}</span></dd>
    </dl>
    <p class="error" id="write-error" role="alert">${error}</p>
    <footer class="dialog-foot">
      <button type="button" onClick=${onClose}>Cancel</button>
      <button type="submit" class="primary">Continue …</button>
    </footer>
  </form>`;
}

function Asking({ panel, process, row }) {
  const button = useRef(null);
  useEffect(() => button.current.focus(), []);
  useLayoutEffect(() => process.show(row && panel.mark(row) === "fresh" ? row.value : undefined));
  const back = () => process.back() && panel.changed();
  const confirm = () => panel.write(process);
  return html`<div class="write">
    <p>Write this value to the PLC?</p>
    <${Change} panel=${panel} process=${process} row=${row} />
    <footer class="dialog-foot">
      <button type="button" onClick=${back}>Back</button>
      <button type="button" class="primary danger" ref=${button} onClick=${confirm}>Write</button>
    </footer>
  </div>`;
}

function Change({ panel, process, row }) {
  return html`<p class="change">
    <${OldValue} panel=${panel} row=${row} />
    <span aria-label="becomes"> → </span>
    <strong class="new">${formatValue(process.value, process.type)}</strong> <span class="unit">${process.unit}</span>
  </p>`;
}

function Sending({ process, onClose }) {
  const text = process.state === "sending" ? "Sent; waiting for the answer of the PLC …" : "No answer came. The server is being asked what became of it; it is not sent again …";
  return html`<div class="write">
    <p role="status" class="outcome pending">${text}</p>
    <p class="change">New value <strong class="new">${formatValue(process.value, process.type)}</strong> <span class="unit">${process.unit}</span></p>
    <footer class="dialog-foot"><button type="button" onClick=${onClose}>Close</button></footer>
  </div>`;
}

function Over({ panel, process, row, onClose }) {
  const button = useRef(null);
  useEffect(() => button.current.focus(), []);
  const { word, text, status } = outcomeText(process.outcome);
  return html`<div class="write">
    <p role="alert" class=${`outcome outcome-${process.outcome.outcome}`}>
      <strong>${word}</strong> ${text}
    </p>
    <dl class="values">
      <dt>Written</dt><dd>${formatValue(process.value, process.type)} <span class="unit">${process.unit}</span></dd>
      <dt>Now</dt><dd><${OldValue} panel=${panel} row=${row} /></dd>
      ${status !== null && html`<dt>Status</dt><dd>${status}</dd>`}
      ${process.outcome.time && html`<dt>Time</dt><dd>${timeText(process.outcome.time)}</dd>`}
    </dl>
    <footer class="dialog-foot"><button type="button" class="primary" ref=${button} onClick=${onClose}>Close</button></footer>
  </div>`;
}
