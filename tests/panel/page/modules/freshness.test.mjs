// What may look fresh.

import assert from "node:assert/strict";
import { test } from "node:test";

import { ageText } from "../../../../panel/page/web/assets/state/ages.js";
import { confirmedAt, MARKS, markOf } from "../../../../panel/page/web/assets/state/freshness.js";
import { ServerClock } from "../../../../panel/page/web/assets/state/server_clock.js";

const good = { heard: true, link: { state: "up", since: 100 }, quality: "g", time: 200, confirmed: 200, error: "" };
const mark = (changes) => markOf({ ...good, ...changes });

test("only a good value of a connected PLC that is heard of is fresh", () => {
  assert.equal(mark({}), "fresh");
  assert.equal(mark({ quality: "s" }), "stale");
  assert.equal(mark({ quality: "b" }), "bad");
  assert.equal(mark({ link: { state: "down", since: 300 } }), "lost");
  assert.equal(mark({ link: { state: "connecting", since: 300 } }), "lost");
  assert.equal(mark({ link: undefined }), "lost");
  assert.equal(mark({ heard: false }), "unknown");
  assert.equal(mark({ error: "no such label" }), "wrong");
  assert.equal(mark({ quality: null, time: null, confirmed: null }), "unread");
  assert.equal(mark({ quality: "s", time: null, confirmed: null }), "unread");
});

test("the page's own connection outweighs all that was heard before", () => {
  assert.equal(mark({ heard: false, quality: "b" }), "unknown");
  assert.equal(mark({ heard: false, link: { state: "down" } }), "unknown");
});

test("a good value from before the PLC was away is stale until it is asked for again", () => {
  assert.equal(mark({ link: { state: "up", since: 250 }, confirmed: 200 }), "stale");
  assert.equal(mark({ link: { state: "up", since: 250 }, confirmed: 250 }), "fresh");
});

test("every mark but that of fresh values has a word", () => {
  for (const [name, { word }] of Object.entries(MARKS)) assert.equal(word === "", name === "fresh");
});

test("good values are as old as their PLC's confirmation", () => {
  assert.equal(confirmedAt({ quality: "g", time: 100 }, 500), 500);
  assert.equal(confirmedAt({ quality: "g", time: 600 }, 500), 600);
  assert.equal(confirmedAt({ quality: "g", time: 100 }, null), 100);
  assert.equal(confirmedAt({ quality: "s", time: 100 }, 500), 100);
  assert.equal(confirmedAt({ quality: "g", time: null }, 500), 500);
  assert.equal(confirmedAt({ quality: null, time: null }, 500), null);
});

test("the server counts as heard for three seconds after an event", () => {
  const clock = new ServerClock();
  assert.equal(clock.isHeard({ wall: 0, steady: 0 }), false);
  clock.begin(1000000, { wall: 5000, steady: 100 }, { wall: 4990, steady: 90 });
  assert.equal(clock.isHeard({ wall: 8000, steady: 3100 }), true);
  assert.equal(clock.isHeard({ wall: 8001, steady: 3101 }), false);
  assert.equal(clock.now({ wall: 6000, steady: 1100 }), 1001000);
});

test("sleep counts although the steady clock stood still", () => {
  const clock = new ServerClock();
  clock.begin(1000000, { wall: 5000, steady: 100 }, { wall: 4990, steady: 90 });
  assert.equal(clock.isHeard({ wall: 605000, steady: 101 }), false);
  assert.equal(clock.now({ wall: 605000, steady: 101 }), 1600000);
});

test("a wall clock that was set back keeps nothing fresh", () => {
  const clock = new ServerClock();
  clock.begin(1000000, { wall: 5000, steady: 100 }, { wall: 4990, steady: 90 });
  assert.equal(clock.isHeard({ wall: 1000, steady: 3200 }), false);
});

test("events from before a sleep tell nothing of now", () => {
  const clock = new ServerClock();
  clock.begin(1000000, { wall: 5000, steady: 100 }, { wall: 4990, steady: 90 });
  assert.equal(clock.hear(1001000, { wall: 6000, steady: 1100 }), true);
  assert.equal(clock.hear(1002000, { wall: 600000, steady: 1200 }), false);
  assert.equal(clock.isHeard({ wall: 600000, steady: 1200 }), false);
});

test("events that were under way for long tell nothing of now, although the wall clock was set back meanwhile", () => {
  const clock = new ServerClock();
  clock.begin(1000000, { wall: 5000, steady: 100 }, { wall: 4990, steady: 90 });
  assert.equal(clock.hear(1001000, { wall: 6000, steady: 1100 }), true);
  // 10 s later than its time at least.
  assert.equal(clock.hear(1002000, { wall: 1000, steady: 11100 }), false);
});

test("a clock that goes a little faster than the server's makes no event late", () => {
  const clock = new ServerClock();
  clock.begin(0, { wall: 0, steady: 0 }, { wall: 0, steady: 0 });
  // 4.3 s in a day.
  for (let second = 1; second <= 200000; ++second) {
    const steady = second * 1000 * 1.00005;
    if (!clock.hear(second * 1000, { wall: second * 1000, steady })) assert.fail(`late after ${second} s`);
  }
  assert.equal(clock.hear(200001000, { wall: 200004200, steady: 200001000 * 1.00005 + 3200 }), false);
});

test("a beginning that took longer than three seconds does not count as timely", () => {
  const clock = new ServerClock();
  assert.equal(clock.begin(1000000, { wall: 5000, steady: 3101 }, { wall: 5000, steady: 100 }), false);
  assert.equal(clock.begin(1000000, { wall: 5000, steady: 3100 }, { wall: 5000, steady: 100 }), true);
});

test("a beginning that was asked for before a sleep does not count as timely", () => {
  const clock = new ServerClock();
  assert.equal(clock.begin(1000000, { wall: 605000, steady: 101 }, { wall: 5000, steady: 100 }), false);
});

test("until when the server was heard is remembered when the stream has gone", () => {
  const clock = new ServerClock();
  assert.equal(clock.heardUntil, -Infinity);
  clock.begin(1000000, { wall: 5000, steady: 100 }, { wall: 4990, steady: 90 });
  clock.hear(1001000, { wall: 6000, steady: 1100 });
  clock.lose();
  assert.equal(clock.heardUntil, 1001000);
});

test("a stream that has gone is heard no more", () => {
  const clock = new ServerClock();
  clock.begin(1000000, { wall: 5000, steady: 100 }, { wall: 4990, steady: 90 });
  clock.lose();
  assert.equal(clock.isHeard({ wall: 5000, steady: 100 }), false);
  assert.equal(clock.now({ wall: 5000, steady: 100 }), null);
});

test("ages are rounded down", () => {
  assert.equal(ageText(0), "0.0 s");
  assert.equal(ageText(460), "0.4 s");
  assert.equal(ageText(9999), "9.9 s");
  assert.equal(ageText(10000), "10 s");
  assert.equal(ageText(119999), "119 s");
  assert.equal(ageText(120000), "2 min");
  assert.equal(ageText(7200000), "2 h");
  assert.equal(ageText(172800000), "2 d");
  assert.equal(ageText(null), "—");
});
