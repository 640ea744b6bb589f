// What requests say.

import assert from "node:assert/strict";
import { test } from "node:test";

import { send } from "../../../../panel/page/web/assets/server/api.js";

async function sent(body) {
  const bodies = [];
  globalThis.fetch = async (path, options) => {
    bodies.push(options.body);
    return { status: 200, text: async () => "" };
  };
  await send("POST", "/writes", body);
  return bodies[0];
}

test("the zero that is negative stays so", async () => {
  assert.equal(await sent({ label: "P.x", value: -0, old: 0 }), '{"label":"P.x","value":-0.0,"old":0}');
  assert.equal(await sent({ value: [1.5, -0] }), '{"value":[1.5,-0.0]}');
});

test("large numbers are no whole numbers of more than 64 bits", async () => {
  assert.equal(await sent({ value: 1e20 }), '{"value":1e+20}');
  assert.equal(await sent({ value: -36893488147419103000 }), '{"value":-3.6893488147419103e+19}');
  assert.equal(await sent({ value: 4294967295 }), '{"value":4294967295}');
});

test("all else is as JSON has it", async () => {
  const body = { a: "x\"-0\n", b: true, c: null, d: [], e: [{ plc: "p", label: "l" }], f: -1.5, g: {} };
  assert.equal(await sent({ ...body, left: undefined }), JSON.stringify(body));
});
