// What is always visible: the link of each PLC, the connection of this page, alarms, where one is.

import { html } from "../html.js";
import { alarmCounts } from "../state/alarm_list.js";
import { ageText } from "../state/ages.js";
import { currentTheme, switchTheme } from "../state/theme.js";

const TITLES = { values: "Values", trend: "Trend", alarms: "Alarms", recipes: "Recipes", audit: "Audit" };
const LINK_WORDS = { up: "connected", connecting: "connecting", down: "no link", unknown: "not known" };
const THEME_WORDS = { system: "Auto", light: "Light", dark: "Dark" };

export function Header({ panel }) {
  const heard = panel.isHeard();
  return html`
    <header class="header">
      <a class="skip" href="#main" onClick=${focusMain}>Skip to the values</a>
      <span class="brand">PLC panel</span>
      <ul class="links" aria-label="PLCs">
        ${troubleFirst([...panel.model.plcs.values()]).map((plc) => html`<${LinkChip} key=${plc.name} plc=${plc} heard=${heard} now=${panel.now()} />`)}
      </ul>
      <${Tools} panel=${panel} />
    </header>
    <nav class="tabs" aria-label="Views">
      ${panel.views.map((name, i) => html`<${Tab} key=${name} panel=${panel} name=${name} title=${TITLES[name]} number=${i + 1} />`)}
    </nav>
    ${!heard && html`<${Banner} panel=${panel} />`}
  `;
}

// What is not connected must not be out of sight where there are many.
function troubleFirst(plcs) {
  return plcs.sort((a, b) => (a.link?.state === "up") - (b.link?.state === "up"));
}

function focusMain(event) {
  event.preventDefault();
  document.getElementById("main").focus();
}

function LinkChip({ plc, heard, now }) {
  const state = heard ? (plc.link?.state ?? "down") : "unknown";
  const word = heard ? (LINK_WORDS[state] ?? state) : "not known";
  const since = heard && now !== null && plc.link?.since ? ageText(now - plc.link.since) : null;
  const reason = heard && state !== "up" ? plc.link?.reason : "";
  return html`<li class=${`link link-${state}`} title=${[plc.title, plc.address, reason].filter(Boolean).join("\n")}>
    <span class="link-name">${plc.name}</span>
    <span class="link-word">${word}</span>
    ${since && html`<span class="link-since">${since}</span>`}
  </li>`;
}

function Tab({ panel, name, title, number }) {
  const current = panel.view.view === name;
  const count = name === "alarms" && panel.knowsAlarms() ? alarmCounts(panel.model.alarms.values()) : null;
  const badge = count && (count.active || count.waiting) ? count : null;
  return html`<button type="button" class="tab" aria-current=${current ? "page" : null} title=${`Key ${number}`}
      onClick=${() => panel.show({ view: name })}>
    ${title}
    ${badge && html`<span class=${badge.active ? "badge active" : "badge"}>${badge.active || badge.waiting}<span class="badge-word"> ${badge.active ? "active" : "to acknowledge"}</span></span>`}
  </button>`;
}

function Tools({ panel }) {
  const { session } = panel.model;
  const theme = currentTheme();
  const change = () => {
    switchTheme();
    panel.changed();
  };
  return html`<div class="tools">
    ${session?.readOnly && html`<span class="note">read-only</span>`}
    ${session?.user && html`<span class="note" title=${`Role: ${session.role}`}>${session.user}</span>`}
    ${session?.loginRequired && html`<button type="button" class="quiet" onClick=${() => panel.logout()}>Log out</button>`}
    <button type="button" class="quiet" aria-label=${`Colours: ${THEME_WORDS[theme]}. Change`} onClick=${change}>${THEME_WORDS[theme]}</button>
    <button type="button" class="quiet" aria-label="Help and keys" onClick=${() => panel.open({ name: "help" })}>?</button>
  </div>`;
}

function Banner({ panel }) {
  const { trouble } = panel.model;
  return html`<p class="banner" role="alert">
    <strong>Not connected to the server.</strong> No value here is known to hold now. ${trouble ?? "Trying again …"}
  </p>`;
}
