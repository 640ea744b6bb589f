// Light or dark: as the system has it, or as the switch says.

import { keep, kept } from "./stored.js";

const NEXT = { system: "light", light: "dark", dark: "system" };

export function currentTheme() {
  const theme = kept("theme");
  return theme === "light" || theme === "dark" ? theme : "system";
}

export function applyTheme(theme = currentTheme()) {
  if (theme === "system") delete document.documentElement.dataset.theme;
  else document.documentElement.dataset.theme = theme;
}

export function switchTheme() {
  const theme = NEXT[currentTheme()];
  keep("theme", theme === "system" ? null : theme);
  applyTheme(theme);
}
