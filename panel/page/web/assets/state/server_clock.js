// What the page knows of the server's time, and whether the server is heard at all.
//
// Time comes in as two readings of this computer's clocks: `wall` (Date.now()), which goes on while
// the computer sleeps and may be set, and `steady` (performance.now()), which cannot be set and may
// stand still in sleep. Of the two the larger lapse counts: doubt makes values old, never fresh.

export const SILENCE_LIMIT = 3000; // ms without an event after which nothing is known

// By so much of each lapse two clocks may drift apart; computers' clocks are better.
const DRIFT = 1e-4;

export class ServerClock {
  #last = null; // the newest event: {server, wall, steady}
  #heardUntil = -Infinity;
  #offset = null; // server less each clock, as the event that was the quickest on its way tells

  // A new stream began: `asked` is the reading of the clocks when it was asked for. False when it took
  // so long that its beginning tells nothing of now.
  begin(server, reading, asked) {
    this.#offset = offsetOf(server, reading);
    this.#last = { server, ...reading };
    this.#heardUntil = server;
    return lapseOf(reading, asked) <= SILENCE_LIMIT;
  }

  // An event of the stream came. False when it was under way for so long that it tells nothing of
  // now: a browser hands over what it received before the computer slept.
  hear(server, reading) {
    const offset = offsetOf(server, reading);
    const drift = this.#last ? DRIFT * Math.max(0, this.#lapse(reading)) : 0;
    const best = this.#offset ?? offset;
    const late = Math.max(best.wall - offset.wall, best.steady - offset.steady) - drift;
    this.#offset = { wall: Math.max(best.wall - drift, offset.wall), steady: Math.max(best.steady - drift, offset.steady) };
    if (late > SILENCE_LIMIT) return false;
    this.#last = { server: Math.max(server, this.#last?.server ?? server), ...reading };
    this.#heardUntil = this.#last.server;
    return true;
  }

  // The stream has gone.
  lose() {
    this.#last = null;
  }

  isHeard(reading) {
    return this.#last !== null && this.#lapse(reading) <= SILENCE_LIMIT;
  }

  // The server's time of the newest event, also when the stream has gone; -Infinity before the first.
  get heardUntil() {
    return this.#heardUntil;
  }

  // The server's time now, at least; null when it was never heard.
  now(reading) {
    return this.#last && this.#last.server + Math.max(0, this.#lapse(reading));
  }

  #lapse(reading) {
    return lapseOf(reading, this.#last);
  }
}

const offsetOf = (server, { wall, steady }) => ({ wall: server - wall, steady: server - steady });

// ms between two readings: the larger lapse of the two clocks.
export function lapseOf(later, earlier) {
  return Math.max(later.wall - earlier.wall, later.steady - earlier.steady);
}

export function readClocks() {
  return { wall: Date.now(), steady: performance.now() };
}
