// Values as people read them: the one place that makes texts of them.

import { formatDuration } from "./duration.js";
import { typeOf } from "./types.js";

const NOT_READ = "—";
const SMALLEST_PLAIN = 1e-4;

// The text of a value as the server sent it: "T#1m30s", "16#00FF (255)", "[1, 2]"; a dash when it
// was never read.
export function formatValue(value, typeName) {
  if (value === null || value === undefined) return NOT_READ;
  if (Array.isArray(value)) return `[${value.map((one) => formatValue(one, typeName)).join(", ")}]`;
  const type = typeOf(typeName);
  switch (type.form) {
    case "boolean":
      return value === true ? "TRUE" : value === false ? "FALSE" : String(value);
    case "pattern":
      return formatPattern(String(value), type.digits);
    case "real":
      return typeof value === "number" ? formatReal(value, type) : String(value);
    case "duration":
      return typeof value === "number" ? formatDuration(value) : String(value);
    case "text":
      return value === "" ? "''" : visibleText(String(value));
    default:
      return typeof value === "object" ? JSON.stringify(value) : String(value);
  }
}

// A value without the decimal form of bit patterns beside it, for narrow places.
export function formatShort(value, typeName) {
  const text = formatValue(value, typeName);
  return typeOf(typeName).form === "pattern" ? text.replace(/ \(\d+\)/g, "") : text;
}

function formatPattern(digits, count) {
  if (!/^\d+$/.test(digits)) return digits;
  return `16#${BigInt(digits).toString(16).toUpperCase().padStart(count, "0")} (${digits})`;
}

// The fewest digits that read back as the same number; with an exponent where it is very large or
// small, as the command line tool writes it.
function formatReal(value, type) {
  if (!Number.isFinite(value)) return String(value);
  if (value === 0) return Object.is(value, -0) ? "-0" : "0";
  const digits = type.single ? shortestSingle(value) : value;
  const magnitude = Math.abs(value);
  if (magnitude >= SMALLEST_PLAIN && magnitude < type.plainBelow) return plain(digits);
  return Number(digits)
    .toExponential()
    .replace(/e([+-])(\d)$/, "e$10$2");
}

function shortestSingle(value) {
  const single = Math.fround(value);
  for (let precision = 1; precision < 9; ++precision) {
    const candidate = Number(single.toPrecision(precision));
    if (Math.fround(candidate) === single) return candidate;
  }
  return Number(single.toPrecision(9));
}

// JavaScript writes numbers from 1e-6 on without an exponent, which covers the plain ones.
function plain(number) {
  return String(number);
}

// Control characters as their pictures, so that a text shows all that it holds.
function visibleText(text) {
  return text.replace(/[\u0000-\u001f\u007f]/g, (character) =>
    character === "\u007f" ? "␡" : String.fromCharCode(0x2400 + character.charCodeAt(0)),
  );
}
