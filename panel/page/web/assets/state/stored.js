// What the browser keeps between visits. It may refuse to (private windows, full disks): then
// nothing is kept.

const PREFIX = "plc-panel.";

export function kept(name) {
  try {
    return localStorage.getItem(PREFIX + name);
  } catch {
    return null;
  }
}

export function keep(name, text) {
  try {
    if (text === null) localStorage.removeItem(PREFIX + name);
    else localStorage.setItem(PREFIX + name, text);
  } catch {
    // Nothing is kept.
  }
}
