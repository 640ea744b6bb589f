// How a value may be shown. Only what is "fresh" looks so; everything else carries a word.

export const LOST = "-"; // the quality of a value that was told before the stream broke

export const MARKS = {
  fresh: { word: "", text: "asked for and answered just now" },
  unread: { word: "not read", text: "never read from the PLC" },
  stale: { word: "stale", text: "not confirmed by the PLC for too long" },
  bad: { word: "bad", text: "the PLC refuses it" },
  lost: { word: "no link", text: "the PLC is not connected" },
  unknown: { word: "not known", text: "this page hears nothing of it from its server" },
  wrong: { word: "no such value", text: "the PLC's project has no such label" },
};

// What stands beside a value with this mark.
export const wordOf = (mark) => MARKS[mark].word || "good";

// The mark of a value. `heard`: events of the server arrive; `link`: {state, since} of its PLC;
// `quality`: "g", "s", "b", LOST, or null while nothing was told; `confirmed`: as confirmedAt() has it.
export function markOf({ heard, link, quality, time, confirmed, error }) {
  if (error) return "wrong";
  if (!heard) return "unknown";
  if (link?.state === "unknown") return "unknown";
  if (link?.state !== "up") return "lost";
  if (quality === LOST) return "unknown";
  if (quality === "b") return "bad";
  if (quality === null || quality === undefined || (time === null && quality !== "g")) return "unread";
  if (quality !== "g") return "stale";
  // Good before the PLC was away, and not asked for since.
  return confirmed !== null && link.since && confirmed < link.since ? "stale" : "fresh";
}

// When the PLC confirmed a value last: what its row says, or later if it is good and the PLC's good
// values were confirmed as a whole. null: never.
export function confirmedAt(row, confirmed) {
  if (row.quality === "g" && confirmed !== null && confirmed !== undefined) {
    return Math.max(confirmed, row.time ?? confirmed);
  }
  return row.time ?? null;
}
