// preact with htm, as the views use them.

import { Fragment, h, render } from "./lib/preact.js";
import htm from "./lib/htm.js";

export const html = htm.bind(h);
export { Fragment, h, render };
export { useEffect, useLayoutEffect, useMemo, useRef, useState } from "./lib/hooks.js";
