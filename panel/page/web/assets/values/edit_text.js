// The text with which an input field begins when a value is to be changed: what parseWritten()
// reads back as the same value.

import { formatValue } from "./format.js";
import { typeOf } from "./types.js";

export function editText(value, typeName) {
  if (value === null || value === undefined || Array.isArray(value)) return "";
  const form = typeOf(typeName).form;
  if (form === "text") return String(value);
  if (form === "real" && typeof value === "string") return `${typeName}#${value}`;
  return form === "pattern" ? formatValue(value, typeName).split(" ")[0] : formatValue(value, typeName);
}
