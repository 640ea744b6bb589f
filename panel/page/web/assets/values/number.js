// Values as numbers, to draw, compare and order them; what is shown is never made of these.

import { typeOf } from "./types.js";

// The number that is drawn for a value: 0 and 1 for BOOL; NaN for what has no place on an axis.
export function drawnNumber(value, typeName) {
  if (typeof value === "boolean") return value ? 1 : 0;
  if (typeof value === "number") return value;
  const form = typeOf(typeName).form;
  if ((form === "whole" || form === "pattern") && /^-?\d+$/.test(value)) return Number(value);
  return NaN;
}

// Less than 0, 0 or more than 0, exact for 64 bits too; what is no number comes last.
export function compareValues(a, b) {
  const left = comparable(a);
  const right = comparable(b);
  if (typeof left === "string" || typeof right === "string") {
    if (typeof left !== typeof right) return typeof left === "string" ? 1 : -1;
    return left < right ? -1 : left > right ? 1 : 0;
  }
  return left < right ? -1 : left > right ? 1 : 0;
}

function comparable(value) {
  if (typeof value === "boolean") return value ? 1 : 0;
  if (typeof value === "number") return value;
  if (value === "inf") return Infinity;
  if (value === "-inf") return -Infinity;
  if (typeof value === "string" && /^-?\d+$/.test(value)) return BigInt(value);
  return String(value);
}

// Whether a least and a greatest one of such values mean anything.
export function hasExtremes(value, typeName) {
  const form = typeOf(typeName).form;
  if (form === "whole" || form === "real" || form === "duration") {
    return typeof value === "number" || /^-?\d+$/.test(value);
  }
  return false;
}
