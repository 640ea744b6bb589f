// What the answer to a change tells: done, not done, or not known.

// Refusals in which the server says that nothing was done. Behind the others, and without an answer
// (status null), it may have been: the browser repeats a request by itself when its connection breaks,
// and what is refused then is the repetition.
const NOT_DONE = [400, 401, 403, 404, 405, 409, 413, 415, 421, 431];

export function changeOutcome(status) {
  if (status >= 200 && status < 300) return "done";
  return NOT_DONE.includes(status) ? "failed" : "unknown";
}

// A sentence of the texts {done, failed, unknown}, with the server's words.
export function changeText(status, body, texts) {
  const outcome = changeOutcome(status);
  if (outcome === "done") return texts.done;
  const reason = body?.error ?? (status === null ? "the server does not answer." : `the server answered ${status}.`);
  return `${texts[outcome]}: ${reason}`;
}
