// Texts of values, worked out by hand.

import assert from "node:assert/strict";
import { test } from "node:test";

import { formatShort, formatValue } from "../../../../panel/page/web/assets/values/format.js";

const cases = (name, type, pairs) =>
  test(name, () => {
    for (const [value, text] of pairs) assert.equal(formatValue(value, type), text);
  });

cases("BOOL is TRUE or FALSE", "BOOL", [[true, "TRUE"], [false, "FALSE"]]);
cases("whole numbers keep all digits, also beyond 2^53", "ULINT", [["18446744073709551615", "18446744073709551615"]]);
cases("signed numbers keep their sign", "LINT", [["-9223372036854775808", "-9223372036854775808"], ["0", "0"]]);
cases("INT", "INT", [[-32768, "-32768"], [32767, "32767"]]);
cases("bit patterns have all hexadecimal digits, and the decimal form", "WORD", [[0, "16#0000 (0)"], [255, "16#00FF (255)"], [65535, "16#FFFF (65535)"]]);
cases("BYTE has two hexadecimal digits", "BYTE", [[10, "16#0A (10)"]]);
cases("DWORD has eight", "DWORD", [[3735928559, "16#DEADBEEF (3735928559)"]]);
cases("LWORD comes as a text of digits", "LWORD", [["18364758544493064720", "16#FEDCBA9876543210 (18364758544493064720)"]]);
cases("REAL has the fewest digits that read back as the same single", "REAL", [
  [0.1, "0.1"],
  [0.10000000149011612, "0.1"], // the single that is nearest to 0.1
  [16777216, "1.6777216e+07"],
  [1234567.9, "1234567.9"],
  [9999999, "9999999"],
  [1e7, "1e+07"],
  [0.0001, "0.0001"],
  [0.00001, "1e-05"],
  [3.4028234663852886e38, "3.4028235e+38"],
  [-2.5, "-2.5"],
]);
cases("LREAL has the fewest digits that read back as the same double", "LREAL", [
  [0.1, "0.1"],
  [0.30000000000000004, "0.30000000000000004"],
  [123456789012345, "123456789012345"],
  [1e15, "1e+15"],
  [5e-324, "5e-324"],
]);
cases("zeros keep their sign", "REAL", [[0, "0"], [JSON.parse("-0.0"), "-0"]]);
cases("what is no number is shown as it came", "REAL", [["nan", "nan"], ["inf", "inf"], ["-inf", "-inf"]]);
cases("TIME is a duration", "TIME", [
  [0, "T#0s"],
  [2820, "T#2s820ms"],
  [90000, "T#1m30s"],
  [90061001, "T#1d1h1m1s1ms"],
  [4294967295, "T#49d17h2m47s295ms"],
]);
cases("STRING is the text, with pictures of what cannot be seen", "STRING", [["Raw milk", "Raw milk"], ["", "''"], ["a\nb\u007f", "a␊b␡"], [" x ", " x "]]);
cases("WSTRING", "WSTRING", [["Łucja Müller", "Łucja Müller"]]);
cases("lists show each of their values", "INT", [[[1, 2, 3], "[1, 2, 3]"], [[], "[]"]]);
cases("what was never read is a dash", "INT", [[null, "—"], [undefined, "—"]]);
cases("values of types that are not known are shown as they came", "FANCY", [[12, "12"], ["x", "x"], [{ a: 1 }, '{"a":1}']]);

test("in narrow places a bit pattern stands without its decimal form", () => {
  assert.equal(formatShort(255, "WORD"), "16#00FF");
  assert.equal(formatShort(12.5, "REAL"), "12.5");
});
