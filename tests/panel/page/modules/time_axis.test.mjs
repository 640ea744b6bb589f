// Ticks of the axis of time.

import assert from "node:assert/strict";
import { test } from "node:test";

import { timeRoom, timeTexts } from "../../../../panel/page/web/assets/trend/time_axis.js";

const DAY = 86400000; // ms
const DIGIT = 7; // pixels, of the font of the axes

test("a tick has only what the distance of the ticks needs, and the date where a day begins", () => {
  const time = new Date(2026, 10, 23, 23, 59, 30).getTime();
  assert.deepEqual(timeTexts([time - 30000, time, time + 30000], 30000), ["23:59:00\n2026-11-23", "23:59:30", "00:00:00\n2026-11-24"]);
  assert.deepEqual(timeTexts([time, time + 250], 250), ["23:59:30.000\n2026-11-23", "23:59:30.250"]);
  assert.deepEqual(timeTexts([time], 60000), ["23:59\n2026-11-23"]);
  assert.deepEqual(timeTexts([time, time + DAY], DAY), ["2026-11-23", "2026-11-24"]);
});

test("two dates do not stand side by side where a day begins at the second tick", () => {
  const time = new Date(2026, 10, 23, 12, 0, 0).getTime();
  assert.deepEqual(timeTexts([time, time + DAY / 2, time + DAY, time + 1.5 * DAY], DAY / 2), ["12:00", "00:00\n2026-11-24", "12:00", "00:00\n2026-11-25"]);
});

test("no text of a tick reaches the next one", () => {
  const time = new Date(2026, 5, 1, 12, 0, 0).getTime();
  for (const width of [240, 700, 1000, 1366, 3800]) {
    for (let span = 1000; span < 400 * DAY; span *= 1.3) {
      const room = timeRoom(span, width);
      const least = (room / width) * span;
      // Ticks are at such a distance or the next greater one that divides a clock evenly.
      for (const distance of [least, least * 1.5, least * 2.5]) {
        const [, text] = timeTexts([time, time + 1 + (distance >= DAY ? DAY : 0)], distance);
        const pixels = (distance / span) * width;
        assert.ok(text.length * DIGIT < pixels, `${text} in ${pixels} of ${width} pixels, ${span} ms`);
      }
    }
  }
});
