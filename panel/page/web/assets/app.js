// The page as a whole: header, views, dialogs, keys.

import { html, useEffect } from "./html.js";
import { AlarmsView } from "./views/alarms_view.js";
import { AuditView } from "./views/audit_view.js";
import { AxesDialog } from "./views/axes_dialog.js";
import { ConfirmDialog } from "./views/confirm_dialog.js";
import { Header } from "./views/header.js";
import { HelpDialog } from "./views/help_dialog.js";
import { LoginView } from "./views/login_view.js";
import { listenForKeys } from "./views/keys.js";
import { Notice } from "./parts/notice.js";
import { Outcomes } from "./parts/outcomes.js";
import { RecipesView } from "./views/recipes_view.js";
import { SaveRecipeDialog } from "./views/save_recipe_dialog.js";
import { TrendView } from "./views/trend_view.js";
import { ValuesView } from "./views/values_view.js";
import { WriteDialog } from "./views/write_dialog.js";

const VIEWS = { values: ValuesView, trend: TrendView, alarms: AlarmsView, recipes: RecipesView, audit: AuditView };

export function App({ panel }) {
  useEffect(() => listenForKeys(panel), []);
  if (panel.needsLogin) return html`<${LoginView} panel=${panel} />`;
  const View = VIEWS[panel.view.view];
  return html`
    <${Header} panel=${panel} />
    <main id="main" class=${`view view-${panel.view.view}`} tabindex="-1">
      <${View} panel=${panel} />
    </main>
    <div class="corner">
      <${Outcomes} panel=${panel} />
      <${Notice} panel=${panel} />
    </div>
    ${panel.dialog?.name === "write" && html`<${WriteDialog} key=${panel.dialog.process.id} panel=${panel} dialog=${panel.dialog} />`}
    ${panel.dialog?.name === "confirm" && html`<${ConfirmDialog} panel=${panel} dialog=${panel.dialog} />`}
    ${panel.dialog?.name === "recipe" && html`<${SaveRecipeDialog} panel=${panel} dialog=${panel.dialog} />`}
    ${panel.dialog?.name === "axes" && html`<${AxesDialog} panel=${panel} />`}
    ${panel.dialog?.name === "help" && html`<${HelpDialog} panel=${panel} />`}
  `;
}
