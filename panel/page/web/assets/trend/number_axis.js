// Texts at an axis of numbers: as the table writes them, whatever the browser's language, and with all digits
// in which one tick differs from the next.

import { formatValue } from "../values/format.js";

const PLAIN = [1e-6, 1e15]; // greatest numbers of ranges whose ticks are chosen as they are
const LEAST_EXPONENT = -300; // below, powers of ten have few digits or are 0
const MOST_DIGITS = 15; // that a number has for certain

// The power of ten by which a range is divided before its ticks are chosen: there are none for numbers that
// are very large or small, and a range may be wider than the greatest number.
export function unitOf({ min, max }) {
  const most = Math.max(Math.abs(min), Math.abs(max));
  if (most >= PLAIN[0] && most < PLAIN[1]) return 1;
  return 10 ** Math.max(LEAST_EXPONENT, Math.floor(Math.log10(most)));
}

// The ticks at `splits`, each `distance` from the next, all divided by `unit`.
export function numberTexts(splits, distance, unit = 1) {
  const most = Math.max(...splits.map(Math.abs));
  const digits = Math.floor(Math.log10(most)) - Math.floor(Math.log10(distance)) + 2; // 2.5 has one more than 2
  return splits.map((split) => {
    if (Math.abs(split) < distance / 1000) return "0";
    return formatValue(times(split.toPrecision(Math.min(MOST_DIGITS, Math.max(1, digits))), unit), "LREAL");
  });
}

// By the digits: a product would have others at its end.
function times(text, unit) {
  const [digits, exponent] = Number(text).toExponential().split("e");
  return Number(`${digits}e${Number(exponent) + Math.round(Math.log10(unit))}`);
}
