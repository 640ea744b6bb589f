// Zoom and pan by wheel, mouse, fingers and keys.

import { pan, zoom } from "./time_window.js";

const WHEEL_FACTOR = 1.2;
const KEY_FACTOR = 1.5;
const CURSOR_STEP = 0.01; // of the width
const PAN_STEP = 0.1;

// on: {window(), change(window), live(), cursor(), setCursor(time)}. Returns what ends it.
export function listenForGestures(plot, element, on) {
  const fingers = new Map(); // pointer -> x
  const wheel = (event) => {
    event.preventDefault();
    if (event.shiftKey) return on.change(pan(on.window(), Math.sign(event.deltaY + event.deltaX) * PAN_STEP));
    on.change(zoom(on.window(), event.deltaY > 0 ? WHEEL_FACTOR : 1 / WHEEL_FACTOR, plot.timeAt(event.clientX)));
  };
  const down = (event) => {
    if (event.pointerType === "mouse" && event.button !== 0) return;
    fingers.set(event.pointerId, event.clientX);
    element.setPointerCapture(event.pointerId);
  };
  const move = (event) => {
    if (!fingers.has(event.pointerId)) return;
    const before = [...fingers.values()];
    fingers.set(event.pointerId, event.clientX);
    const after = [...fingers.values()];
    if (fingers.size === 1 && before[0] !== after[0]) on.change(pan(on.window(), (before[0] - after[0]) / plot.width));
    if (fingers.size === 2) pinch(before, after);
  };
  const pinch = (before, after) => {
    const apart = (xs) => Math.max(20, Math.abs(xs[0] - xs[1]));
    const middle = (xs) => (xs[0] + xs[1]) / 2;
    const wider = zoom(on.window(), apart(before) / apart(after), plot.timeAt(middle(before)));
    on.change(pan(wider, (middle(before) - middle(after)) / plot.width));
  };
  const up = (event) => fingers.delete(event.pointerId);
  const key = (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey || event.target !== element) return;
    const action = keyActions(on)[(event.shiftKey && event.key.startsWith("Arrow") ? "Shift " : "") + event.key];
    if (!action) return;
    event.preventDefault();
    event.stopPropagation();
    action();
  };
  const listeners = { wheel, pointerdown: down, pointermove: move, pointerup: up, pointercancel: up, keydown: key, dblclick: on.live };
  for (const [name, listener] of Object.entries(listeners)) element.addEventListener(name, listener, { passive: false });
  return () => {
    for (const [name, listener] of Object.entries(listeners)) element.removeEventListener(name, listener);
  };
}

function keyActions(on) {
  const { from, to } = on.window();
  const middle = on.cursor() ?? (from + to) / 2;
  const cursor = (share) => () => {
    const at = on.cursor();
    on.setCursor(at === null ? (from + to) / 2 : Math.min(to, Math.max(from, at + share * (to - from))));
  };
  const shift = (share) => () => on.change(pan({ from, to }, share));
  return {
    ArrowLeft: cursor(-CURSOR_STEP),
    ArrowRight: cursor(CURSOR_STEP),
    "Shift ArrowLeft": shift(-PAN_STEP),
    "Shift ArrowRight": shift(PAN_STEP),
    PageUp: shift(-1),
    PageDown: shift(1),
    "+": () => on.change(zoom({ from, to }, 1 / KEY_FACTOR, middle)),
    "=": () => on.change(zoom({ from, to }, 1 / KEY_FACTOR, middle)),
    "-": () => on.change(zoom({ from, to }, KEY_FACTOR, middle)),
    End: on.live,
    Escape: () => on.setCursor(null),
  };
}
