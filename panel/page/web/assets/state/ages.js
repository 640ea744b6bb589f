// How long ago something was, in few characters: "0.4 s", "12 s", "3 min", "2 h", "5 d".

const SECOND = 1000;
const MINUTE = 60 * SECOND;
const HOUR = 60 * MINUTE;
const DAY = 24 * HOUR;

// The text of an age in ms; a dash where it is not known. Rounded down: nothing is told to be
// older than it is, and a second that has begun is not over.
export function ageText(age) {
  if (age === null || age === undefined || Number.isNaN(age)) return "—";
  const shown = Math.max(0, age);
  if (shown < 10 * SECOND) return `${(Math.floor(shown / 100) / 10).toFixed(1)} s`;
  if (shown < 2 * MINUTE) return `${Math.floor(shown / SECOND)} s`;
  if (shown < 2 * HOUR) return `${Math.floor(shown / MINUTE)} min`;
  if (shown < 2 * DAY) return `${Math.floor(shown / HOUR)} h`;
  return `${Math.floor(shown / DAY)} d`;
}

const two = (number) => String(number).padStart(2, "0");

// "2026-03-04 14:05:09" in the browser's time zone.
export function timeText(time) {
  if (time === null || time === undefined) return "—";
  const at = new Date(time);
  return `${dateText(time)} ${two(at.getHours())}:${two(at.getMinutes())}:${two(at.getSeconds())}`;
}

export function dateText(time) {
  const at = new Date(time);
  return `${at.getFullYear()}-${two(at.getMonth() + 1)}-${two(at.getDate())}`;
}

// "14:05:09.250"; for cursors, where milliseconds count.
export function clockText(time) {
  const at = new Date(time);
  const milliseconds = String(at.getMilliseconds()).padStart(3, "0");
  return `${two(at.getHours())}:${two(at.getMinutes())}:${two(at.getSeconds())}.${milliseconds}`;
}
