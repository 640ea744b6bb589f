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
  let day = "";
  return splits.map((time) => {
    const date = dateText(time);
    const clock = clockText(time);
    const text = distance >= DAY ? "" : distance < SECOND ? clock : distance < MINUTE ? clock.slice(0, 8) : clock.slice(0, 5);
    const isNew = date !== day;
    day = date;
    return isNew ? [text, date].filter(Boolean).join("\n") : text;
  });
}
