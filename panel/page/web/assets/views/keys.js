// Keys that work everywhere, but not while somebody types or a dialog is open.

const FOCUS_DELAY = 150; // ms

export function listenForKeys(panel) {
  const listener = (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || event.defaultPrevented) return;
    if (panel.dialog || document.querySelector("dialog[open]")) return;
    if (event.target.closest("input, textarea, select")) return;
    if (press(panel, event.key)) event.preventDefault();
  };
  document.addEventListener("keydown", listener);
  return () => document.removeEventListener("keydown", listener);
}

function press(panel, key) {
  if (key >= "1" && key <= String(panel.views.length)) {
    panel.show({ view: panel.views[Number(key) - 1] });
    return true;
  }
  if (key === "?") {
    panel.open({ name: "help" });
    return true;
  }
  if (key === "/" || key === "b") panel.openTree(true);
  return focusSoon({ "/": "#search", f: "#filter", g: ".grid [tabindex='0']", b: ".tree [tabindex='0']" }[key]);
}

// Once the page shows it.
function focusSoon(selector) {
  if (!selector) return false;
  setTimeout(() => document.querySelector(selector)?.focus(), FOCUS_DELAY);
  return true;
}
