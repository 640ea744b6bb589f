// The stretch of time that a plot shows, and how zooming and panning change it.

export const LEAST_SPAN = 1000; // ms
const MOST_SPAN = 400 * 86400000;

const bounded = (span) => Math.min(MOST_SPAN, Math.max(LEAST_SPAN, span));

// Narrower (factor below 1) or wider around `at`, which stays where it is.
export function zoom({ from, to }, factor, at) {
  const span = bounded((to - from) * factor);
  const share = (at - from) / (to - from);
  return { from: at - share * span, to: at + (1 - share) * span };
}

// Later by a share of the width (below 0: earlier).
export function pan({ from, to }, share) {
  const by = share * (to - from);
  return { from: from + by, to: to + by };
}

// A window does not reach beyond now: there the plot is live again.
export function settle({ from, to }, now) {
  return to >= now ? { range: null, span: bounded(to - from) } : { range: { from, to }, span: bounded(to - from) };
}

// The window of a view at this moment.
export function windowOf({ range, span }, now) {
  return range ?? { from: now - span, to: now };
}

const SPANS = [
  [60000, "1 min"],
  [600000, "10 min"],
  [3600000, "1 h"],
  [28800000, "8 h"],
  [86400000, "1 day"],
  [604800000, "7 days"],
];

export function spanChoices() {
  return SPANS;
}

const UNITS = [[86400, "days", "1 day"], [3600, "h"], [60, "min"], [1, "s"]]; // s

// "1 h 40 min": of any span, the two greatest of its units.
export function spanText(span) {
  let rest = Math.max(1, Math.round(span / 1000));
  const first = UNITS.findIndex(([length]) => rest >= length);
  const parts = UNITS.slice(first, first + 2).map(([length, name, one]) => {
    const count = Math.floor(rest / length);
    rest %= length;
    return count === 0 ? "" : count === 1 && one ? one : `${count} ${name}`;
  });
  return parts.filter(Boolean).join(" ");
}
