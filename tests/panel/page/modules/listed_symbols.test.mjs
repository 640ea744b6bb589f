import assert from "node:assert/strict";
import test from "node:test";

import { allFound, foundText, restText } from "../../../../panel/page/web/assets/state/listed_symbols.js";

const nodes = (count) => Array.from({ length: count }, (_, index) => ({ label: `A.v${index}` }));

test("a search says how many it found, and where there may be more", () => {
  assert.equal(foundText({ nodes: nodes(1), isComplete: true, failed: [] }), "1 match");
  assert.equal(foundText({ nodes: nodes(200), isComplete: true, failed: [] }), "200 matches");
  assert.equal(foundText({ nodes: nodes(200), isComplete: false, failed: [] }), "The first 200 matches; there may be more");
  assert.equal(foundText({ nodes: [], isComplete: true, failed: ["Mill: gone"] }), "0 matches; not known of Mill: gone");
});

test("a search in several PLCs is complete where each one is", () => {
  const all = { nodes: nodes(2), isComplete: true };
  const some = { nodes: nodes(1), isComplete: false };
  const failed = { nodes: [], failed: "Mill: gone" };
  assert.deepEqual(allFound([all, failed]), { nodes: nodes(2), isComplete: true, failed: ["Mill: gone"] });
  assert.equal(allFound([all, some]).isComplete, false);
  assert.equal(allFound([all, some]).nodes.length, 3);
});

test("a list that ends early says so", () => {
  assert.equal(restText("A.values", 10000), "Of A.values the first 10000 are listed; there are more.");
});
