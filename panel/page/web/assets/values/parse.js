// What people type for a value, made into the JSON that the server takes.

import { formatDuration, parseDuration } from "./duration.js";
import { isTextOfDigits, typeOf } from "./types.js";

// {value} to send, or {error}: a sentence that says what is expected.
export function parseWritten(text, typeName) {
  const type = typeOf(typeName);
  const trimmed = text.trim();
  switch (type.form) {
    case "boolean":
      return parseBoolean(trimmed, typeName);
    case "whole":
    case "pattern":
      return parseWhole(trimmed, typeName, type);
    case "real":
      return parseReal(trimmed, typeName, type);
    case "duration":
      return parseTime(trimmed, typeName, type);
    case "text":
      return { value: text };
    default:
      return { error: `Values of type ${typeName} cannot be written here.` };
  }
}

function parseBoolean(text, typeName) {
  const folded = text.toUpperCase();
  if (folded === "TRUE" || folded === "1") return { value: true };
  if (folded === "FALSE" || folded === "0") return { value: false };
  return { error: `${typeName} takes TRUE, FALSE, 1 or 0.` };
}

const BASES = { "16#": "0x", "0x": "0x", "8#": "0o", "2#": "0b" };

function wholeNumber(text) {
  const parts = /^([+-]?)(16#|0x|8#|2#)?([0-9a-f]+(?:_[0-9a-f]+)*)$/i.exec(text);
  if (!parts) return null;
  try {
    const digits = parts[3].replaceAll("_", "");
    if (!parts[2] && !/^\d+$/.test(digits)) return null; // BigInt would take 0b11
    const magnitude = BigInt((BASES[(parts[2] ?? "").toLowerCase()] ?? "") + digits);
    return parts[1] === "-" ? -magnitude : magnitude;
  } catch {
    return null; // a digit that the base does not have
  }
}

function parseWhole(text, typeName, type) {
  const number = wholeNumber(text);
  if (number === null) return { error: `${typeName} takes a whole number, such as 12 or 16#0C.` };
  if (number < type.least || number > type.most) {
    return { error: `${text} is outside the range of ${typeName}, ${type.least} to ${type.most}.` };
  }
  return { value: isTextOfDigits(typeName) ? String(number) : Number(number) };
}

// "nan", "inf" or "-inf" where it is meant, with the type before it; null where it is not.
function notFinite(text, typeName) {
  const parts = /^(l?real)#\+?(-?inf|nan)$/i.exec(text);
  return parts && parts[1].toUpperCase() === typeName ? parts[2].toLowerCase() : null;
}

function parseReal(text, typeName, type) {
  const written = notFinite(text, typeName);
  if (written) return { value: written };
  if (/^[+-]?(inf|nan)$/i.test(text)) {
    const meant = text.replace(/^\+|^-(?=nan)/i, "").toLowerCase();
    return { error: `${typeName} takes a number; write ${typeName}#${meant} if it is meant.` };
  }
  if (text.slice(0, typeName.length + 1).toUpperCase() === `${typeName}#`) text = text.slice(typeName.length + 1);
  if (!/^[+-]?(\d+(\.\d*)?|\.\d+)(e[+-]?\d+)?$/i.test(text)) {
    return { error: `${typeName} takes a number, such as -1.5 or 2e6.` };
  }
  const number = Number(text);
  const kept = type.single ? Math.fround(number) : number;
  if (!Number.isFinite(kept) || (kept === 0 && /[1-9]/.test(text.split(/e/i)[0]))) {
    return { error: `${typeName} cannot hold ${text}: too large or too near to 0.` };
  }
  return { value: number };
}

function parseTime(text, typeName, type) {
  const milliseconds = parseDuration(text);
  if (milliseconds === null) {
    return { error: `${typeName} takes a duration, such as T#1m30s or T#500ms.` };
  }
  if (milliseconds > type.most) {
    return { error: `${typeName} holds at most ${formatDuration(Number(type.most))}.` };
  }
  return { value: Number(milliseconds) };
}
