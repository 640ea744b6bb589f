// The types of values, and how each of them is written.

const bits = (count) => 1n << BigInt(count);
const signed = (count) => ({ form: "whole", least: -bits(count - 1), most: bits(count - 1) - 1n });
const unsigned = (count) => ({ form: "whole", least: 0n, most: bits(count) - 1n });
const pattern = (count) => ({ form: "pattern", least: 0n, most: bits(count) - 1n, digits: count / 4 });

const TYPES = {
  BOOL: { form: "boolean" },
  BIT: { form: "boolean" },
  SINT: signed(8),
  INT: signed(16),
  DINT: signed(32),
  LINT: signed(64),
  USINT: unsigned(8),
  UINT: unsigned(16),
  UDINT: unsigned(32),
  ULINT: unsigned(64),
  BYTE: pattern(8),
  WORD: pattern(16),
  DWORD: pattern(32),
  LWORD: pattern(64),
  REAL: { form: "real", single: true, plainBelow: 1e7 },
  LREAL: { form: "real", single: false, plainBelow: 1e15 },
  TIME: { form: "duration", least: 0n, most: bits(32) - 1n },
  STRING: { form: "text" },
  WSTRING: { form: "text" },
};

// The type of that name; values of names that are not known are shown as they came.
export function typeOf(name) {
  return TYPES[name] ?? { form: "unknown" };
}

// Whether values of the type can be drawn as a line.
export function isDrawn(name) {
  return !["text", "unknown"].includes(typeOf(name).form);
}

// Whether JSON carries values of the type as texts of digits, since a number would lose some.
export function isTextOfDigits(name) {
  return ["LINT", "ULINT", "LWORD"].includes(name);
}
