// What comparisons and restores of recipes tell.

import { changeOutcome } from "./change_text.js";
import { OUTCOMES } from "./write_process.js";

const EQUAL_WORD = "equal";

// {report} or {error: sentence}: what the answer to a restore tells. status null: no answer came. A
// restore is sent once; a comparison tells what the PLC has afterwards.
export function restoreResult(status, body) {
  if (status === 200) return { report: body };
  const reason = body?.error ?? (status === null ? "no answer came." : `the server answered ${status}.`);
  if (changeOutcome(status) === "failed") return { error: `Not restored: ${reason}` };
  return { error: `Which values were written is not known: ${reason} Nothing is sent again; compare to see what the PLC has now.` };
}

export function reportText({ written, equal, notWritten, notKnown }) {
  return `${written} written, ${equal} ${EQUAL_WORD}, ${notWritten} not written, ${notKnown} not known.`;
}

// One value of a report: {name, word}. What the PLC had already was not sent, and lacks nothing.
export function restoredWord({ outcome, equal }) {
  if (equal === true) return { name: "equal", word: EQUAL_WORD };
  return { name: outcome, word: OUTCOMES[outcome]?.word ?? OUTCOMES.unknown.word };
}
