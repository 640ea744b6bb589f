// The symbols of all PLCs as a tree, and the search through them. A node is asked for when it is
// opened; what is chosen has a tick.

import { get, query } from "../server/api.js";
import { html, useEffect, useRef, useState } from "../html.js";
import { allFound, foundText, restText } from "../state/listed_symbols.js";
import { keyOf } from "../state/rows.js";

const SEARCH_DELAY = 250; // ms
const SEARCH_LIMIT = 200;

// choice: {isChosen(name), toggle(name), addAll(names)}, what a click on a value does.
export function SymbolTree({ panel, choice }) {
  const [words, setWords] = useState("");
  const [found, setFound] = useState(null);
  const plcs = [...panel.model.plcs.keys()];
  useEffect(() => {
    if (!words.trim()) {
      setFound(null);
      return undefined;
    }
    let current = true;
    const timer = setTimeout(async () => {
      const lists = await Promise.all(plcs.map((plc) => search(plc, words)));
      if (current) setFound(allFound(lists));
    }, SEARCH_DELAY);
    return () => {
      current = false;
      clearTimeout(timer);
    };
  }, [words, plcs.join()]);
  const leave = (event) => {
    if (event.key === "Escape") setWords("");
    if (event.key === "ArrowDown") document.querySelector(".tree [tabindex='0']")?.focus();
  };
  const roots = found?.nodes ?? plcs.map((plc) => ({ plc, kind: "plc", name: plc, label: "", children: 1 }));
  return html`
    <input id="search" type="search" placeholder="Find labels, descriptions ( / )" aria-label="Search for values"
      value=${words} onInput=${(event) => setWords(event.target.value)} onKeyDown=${leave} />
    ${found && html`<p class="hint" role="status">${foundText(found)}</p>`}
    <${Tree} key=${found ? "found" : "all"} panel=${panel} choice=${choice} roots=${roots} wholeLabels=${found !== null} />
  `;
}

async function search(plc, words) {
  try {
    const { symbols, complete } = await get(`/symbols${query({ plc, search: words, limit: SEARCH_LIMIT })}`);
    return { nodes: symbols.map((symbol) => ({ plc, ...symbol })), isComplete: complete };
  } catch (error) {
    return { nodes: [], failed: `${plc}: ${error.message}` };
  }
}

const nodeKey = (node) => `${node.kind === "plc" ? "plc" : "symbol"} ${keyOf(node)}`;

function Tree({ panel, choice, roots, wholeLabels }) {
  const { opened, toggle } = useOpened(panel, roots);
  const [focused, setFocused] = useState("");
  const list = useRef(null);
  const lines = linesOf(roots, opened);
  const current = Math.max(0, lines.findIndex(({ node }) => nodeKey(node) === focused));
  const choose = (node) => chooseNode(node, panel, choice, toggle);
  const move = (index) => {
    const place = Math.min(lines.length - 1, Math.max(0, index));
    if (!lines[place]) return;
    setFocused(nodeKey(lines[place].node));
    list.current.children[place]?.focus();
  };
  const press = (event) => pressKey(event, { lines, current, opened, move, toggle, choose });
  const isRoot = (depth) => wholeLabels && depth === 0;
  return html`<ul class="tree" role="tree" aria-label="Symbols" ref=${list} onKeyDown=${press}>
    ${lines.map(({ node, depth }, i) => html`<${Node} key=${nodeKey(node)} node=${node} depth=${depth}
      open=${opened.has(nodeKey(node))} focusable=${i === current} chosen=${node.kind === "value" && choice.isChosen(node)}
      text=${isRoot(depth) ? node.label : node.name} several=${panel.model.plcs.size > 1 && isRoot(depth)}
      onToggle=${() => toggle(node)} onChoose=${() => choose(node)} onFocus=${() => setFocused(nodeKey(node))} />`)}
  </ul>`;
}

// The nodes that are open, with their children: none while they are asked for. A PLC that is alone is open.
function useOpened(panel, roots) {
  const [opened, setOpened] = useState(() => new Map());
  const toggle = async (node, open = !opened.has(nodeKey(node))) => {
    const key = nodeKey(node);
    if (!open) {
      setOpened((map) => without(map, key));
      return;
    }
    setOpened((map) => new Map(map).set(key, []));
    try {
      const { symbols, complete } = await get(`/symbols${query({ plc: node.plc, under: node.label || undefined })}`);
      if (!complete) panel.tell(restText(node.label || node.plc, symbols.length));
      const children = symbols.map((symbol) => ({ plc: node.plc, ...symbol }));
      setOpened((map) => (map.has(key) ? new Map(map).set(key, children) : map));
    } catch (error) {
      panel.tell(`The symbols of ${node.label || node.plc} did not come: ${error.message}`);
      setOpened((map) => without(map, key));
    }
  };
  useEffect(() => {
    if (roots.length === 1 && roots[0].kind === "plc") toggle(roots[0], true);
  }, [roots.length]);
  return { opened, toggle };
}

// The nodes one below the other: [{node, depth}].
function linesOf(roots, opened) {
  const lines = [];
  const walk = (node, depth) => {
    lines.push({ node, depth });
    for (const child of opened.get(nodeKey(node)) ?? []) walk(child, depth + 1);
  };
  for (const root of roots) walk(root, 0);
  return lines;
}

async function chooseNode(node, panel, choice, toggle) {
  if (node.kind === "plc") return toggle(node);
  if (node.kind === "value") return choice.toggle({ plc: node.plc, label: node.label });
  try {
    choice.addAll(await panel.valuesBelow(node.plc, node));
  } catch (error) {
    panel.tell(`The values of ${node.label} did not come: ${error.message}`);
  }
}

function pressKey(event, { lines, current, opened, move, toggle, choose }) {
  const { node, depth } = lines[current] ?? {};
  if (!node || event.ctrlKey || event.altKey || event.metaKey) return;
  const isOpen = opened.has(nodeKey(node));
  const actions = {
    ArrowDown: () => move(current + 1),
    ArrowUp: () => move(current - 1),
    Home: () => move(0),
    End: () => move(lines.length - 1),
    ArrowRight: () => (node.kind === "value" ? null : isOpen ? move(current + 1) : toggle(node, true)),
    ArrowLeft: () => (isOpen ? toggle(node, false) : move(parentOf(lines, current, depth))),
    Enter: () => choose(node),
    " ": () => choose(node),
  };
  if (!actions[event.key]) return;
  event.preventDefault();
  actions[event.key]();
}

function without(map, key) {
  const rest = new Map(map);
  rest.delete(key);
  return rest;
}

function parentOf(lines, index, depth) {
  while (index > 0 && lines[index].depth >= depth) --index;
  return index;
}

function Node({ node, depth, open, focusable, chosen, text, several, onToggle, onChoose, onFocus }) {
  const isValue = node.kind === "value";
  const click = (event) => {
    event.currentTarget.focus();
    if (isValue || event.target.closest(".node-add")) onChoose();
    else onToggle();
  };
  return html`<li role="treeitem" class=${`node node-${node.kind}`} style=${{ "--depth": depth }} tabindex=${focusable ? 0 : -1}
      aria-level=${depth + 1} aria-expanded=${isValue ? null : String(open)} aria-selected=${isValue ? String(chosen) : null}
      title=${[node.label, node.type, node.description].filter(Boolean).join("\n")} onClick=${click} onFocus=${onFocus}>
    <span class="node-sign" aria-hidden="true">${isValue ? (chosen ? "☑" : "☐") : open ? "▾" : "▸"}</span>
    <span class="node-name">${several && html`<span class="node-plc">${node.plc} </span>`}${text}</span>
    <span class="node-type">${node.type}${node.unit ? ` · ${node.unit}` : ""}</span>
    ${!isValue && node.kind !== "plc" && html`<span class="node-add" title="Choose all values below (Enter)">+</span>`}
  </li>`;
}
