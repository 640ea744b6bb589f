// What people type, and what is sent for it.

import assert from "node:assert/strict";
import { test } from "node:test";

import { editText } from "../../../../panel/page/web/assets/values/edit_text.js";
import { parseWritten } from "../../../../panel/page/web/assets/values/parse.js";

const value = (text, type) => parseWritten(text, type).value;
const error = (text, type) => parseWritten(text, type).error;

test("BOOL takes TRUE, FALSE, 1 and 0", () => {
  assert.equal(value("true", "BOOL"), true);
  assert.equal(value(" FALSE ", "BOOL"), false);
  assert.equal(value("1", "BOOL"), true);
  assert.equal(value("0", "BOOL"), false);
  assert.match(error("2", "BOOL"), /TRUE, FALSE, 1 or 0/);
});

test("whole numbers are taken within the range of their type", () => {
  assert.equal(value("-32768", "INT"), -32768);
  assert.equal(value("32767", "INT"), 32767);
  assert.match(error("32768", "INT"), /outside the range of INT, -32768 to 32767/);
  assert.match(error("-1", "UINT"), /0 to 65535/);
  assert.equal(value("255", "USINT"), 255);
  assert.equal(value("-128", "SINT"), -128);
  assert.match(error("12.5", "INT"), /whole number/);
  assert.match(error("", "INT"), /whole number/);
});

test("whole numbers are taken in other bases and with underscores", () => {
  assert.equal(value("16#ff", "WORD"), 255);
  assert.equal(value("0xFF", "WORD"), 255);
  assert.equal(value("2#1010", "BYTE"), 10);
  assert.equal(value("8#17", "INT"), 15);
  assert.equal(value("1_000", "INT"), 1000);
  assert.match(error("2#12", "BYTE"), /whole number/);
  assert.match(error("1__0", "INT"), /whole number/);
  assert.match(error("FF", "WORD"), /whole number/);
});

test("64 bits are sent as texts and lose no digit", () => {
  assert.equal(value("18446744073709551615", "ULINT"), "18446744073709551615");
  assert.equal(value("-9223372036854775808", "LINT"), "-9223372036854775808");
  assert.equal(value("16#FEDCBA9876543210", "LWORD"), "18364758544493064720");
  assert.match(error("18446744073709551616", "ULINT"), /outside the range/);
});

test("REAL takes what a single holds", () => {
  assert.equal(value("12.5", "REAL"), 12.5);
  assert.equal(value("-1e3", "REAL"), -1000);
  assert.equal(value(".5", "REAL"), 0.5);
  assert.match(error("1e39", "REAL"), /too large or too near to 0/);
  assert.match(error("1e-60", "REAL"), /too large or too near to 0/);
  assert.equal(value("1e39", "LREAL"), 1e39);
  assert.match(error("nan", "REAL"), /takes a number/);
  assert.match(error("1,5", "REAL"), /takes a number/);
});

test("what is no number is taken with its type before it, as the command line takes it", () => {
  assert.equal(value("REAL#nan", "REAL"), "nan");
  assert.equal(value("real#INF", "REAL"), "inf");
  assert.equal(value("LREAL#-inf", "LREAL"), "-inf");
  assert.equal(value("REAL#1.5", "REAL"), 1.5);
  assert.match(error("LREAL#nan", "REAL"), /takes a number/);
  assert.match(error("REAL#nan", "LREAL"), /takes a number/);
  assert.match(error("REAL#", "REAL"), /takes a number/);
  assert.match(error("inf", "REAL"), /write REAL#inf if it is meant/);
  assert.match(error("-inf", "LREAL"), /write LREAL#-inf if it is meant/);
  assert.match(error("REAL#nan", "INT"), /whole number/);
});

test("whole numbers are in the bases that the command line has, and in no other", () => {
  for (const text of ["0b11", "0o17", "0B1", "1b", "b", "2#", "16#", "0x"]) {
    assert.match(error(text, "INT"), /whole number/, text);
  }
  assert.equal(value("16#0b11", "INT"), 0x0b11);
  assert.equal(value("007", "INT"), 7);
});

test("TIME takes durations", () => {
  assert.equal(value("T#1m30s", "TIME"), 90000);
  assert.equal(value("t#1.5s", "TIME"), 1500);
  assert.equal(value("TIME#1h_30m", "TIME"), 5400000);
  assert.match(error("90000", "TIME"), /duration/);
  assert.match(error("T#1s1m", "TIME"), /duration/);
  assert.match(error("T#0.0001s", "TIME"), /duration/);
  assert.match(error("T#50d", "TIME"), /at most T#49d17h2m47s295ms/);
});

test("STRING is taken as it stands, blanks too", () => {
  assert.equal(value(" a ", "STRING"), " a ");
  assert.equal(value("", "STRING"), "");
});

test("what a field begins with reads back as the same value", () => {
  for (const [shown, type] of [
    [true, "BOOL"], [-7, "INT"], ["18446744073709551615", "ULINT"], [255, "WORD"], [0.1, "REAL"], [1e-7, "LREAL"], ["nan", "REAL"], ["inf", "REAL"], ["-inf", "LREAL"], [90061001, "TIME"], ["a 'b'", "STRING"],
  ]) {
    assert.deepEqual(value(editText(shown, type), type), shown);
  }
  assert.equal(editText(null, "INT"), "");
});
