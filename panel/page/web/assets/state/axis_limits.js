// The lowest and highest number of the trend's axes, as far as somebody has given them; kept by the
// browser. null: what the values need.

import { keep, kept } from "./stored.js";

export const AXES = ["left", "right"];
const NAME = "axes";
const NUMBER = /^[+-]?(\d+(\.\d*)?|\.\d+)(e[+-]?\d+)?$/i;

const automatic = () => ({ lowest: null, highest: null });
const isLimit = (limit) => limit === null || Number.isFinite(limit);
const areLimits = (limits) => limits && isLimit(limits.lowest) && isLimit(limits.highest) && !isReversed(limits);
export const isSet = ({ lowest, highest }) => lowest !== null || highest !== null;
const isReversed = ({ lowest, highest }) => lowest !== null && highest !== null && lowest >= highest;

// {left: {lowest, highest}, right: {lowest, highest}}
export function keptLimits() {
  let read = null;
  try {
    read = JSON.parse(kept(NAME));
  } catch {
    // Of another program.
  }
  return Object.fromEntries(AXES.map((axis) => [axis, areLimits(read?.[axis]) ? read[axis] : automatic()]));
}

export function keepLimits(limits) {
  keep(NAME, AXES.some((axis) => isSet(limits[axis])) ? JSON.stringify(limits) : null);
}

// {limits} of what was typed, or {error}: a sentence.
export function parseLimits(lowestText, highestText) {
  const [lowest, highest] = [lowestText, highestText].map(numberOf);
  if (lowest === undefined || highest === undefined) return { error: "A number is expected, such as -1.5 or 2e6, or nothing." };
  const limits = { lowest, highest };
  return isReversed(limits) ? { error: "The lowest has to be less than the highest." } : { limits };
}

// null for nothing, undefined for what is no number.
function numberOf(text) {
  const trimmed = text.trim();
  if (trimmed === "") return null;
  return NUMBER.test(trimmed) && Number.isFinite(Number(trimmed)) ? Number(trimmed) : undefined;
}
