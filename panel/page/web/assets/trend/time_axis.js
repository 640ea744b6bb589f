// Texts at the axis of time, in the browser's time zone: only what the distance of the ticks needs,
// and the date where a day begins.

import { clockText, dateText } from "../state/ages.js";

const SECOND = 1000; // ms
const MINUTE = 60000;
const DAY = 86400000;

// Least pixels from one tick to the next, so that none of their texts reaches the next one.
const ROOM = { milliseconds: 96, seconds: 68, minutes: 50, days: 82 };

// For a span of time over so many pixels.
export function timeRoom(span, width) {
  const distance = (room) => (room / width) * span;
  if (distance(ROOM.minutes) > DAY / 2) return ROOM.days;
  if (distance(ROOM.minutes) >= MINUTE) return ROOM.minutes;
  return distance(ROOM.seconds) >= SECOND ? ROOM.seconds : ROOM.milliseconds;
}

export function timeTexts(splits, distance) {
  const dates = splits.map(dateText);
  return splits.map((time, i) => {
    const clock = clockText(time);
    const text = distance >= DAY ? "" : distance < SECOND ? clock : distance < MINUTE ? clock.slice(0, 8) : clock.slice(0, 5);
    // The date at the first tick has no room where a day begins at the second one.
    const isTold = distance >= DAY || (i === 0 ? dates[1] === undefined || dates[1] === dates[0] : dates[i] !== dates[i - 1]);
    return isTold ? [text, dates[i]].filter(Boolean).join("\n") : text;
  });
}
