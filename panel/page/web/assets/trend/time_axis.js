// Texts at the axis of time, in the browser's time zone: only what the distance of the ticks needs,
// and the date where a day begins.

import { clockText, dateText } from "../state/ages.js";

const DAY = 86400000; // ms

export function timeTexts(splits, distance) {
  let day = "";
  return splits.map((time) => {
    const date = dateText(time);
    const clock = clockText(time);
    const text = distance >= DAY ? "" : distance < 1000 ? clock : distance < 60000 ? clock.slice(0, 8) : clock.slice(0, 5);
    const isNew = date !== day;
    day = date;
    return isNew ? [text, date].filter(Boolean).join("\n") : text;
  });
}
