// What the page knows of the server's time, and whether the server is heard at all.
//
// Time comes in as two readings of this computer's clocks: `wall` (Date.now()), which goes on while
// the computer sleeps and may be set, and `steady` (performance.now()), which cannot be set and may
// stand still in sleep. Of the two the larger lapse counts: doubt makes values old, never fresh.

export const SILENCE_LIMIT = 3000; // ms without an event after which nothing is known

export class ServerClock {
  #last = null; // the newest event: {server, wall, steady}
  #heardUntil = -Infinity;
  #offset = 0; // server less wall, as the event that was the quickest on its way tells

  // A new stream began: `asked` is the reading of the clocks when it was asked for. False when it took
  // so long that its beginning tells nothing of now.
  begin(server, reading, asked) {
    this.#offset = server - reading.wall;
    this.#last = { server, ...reading };
    this.#heardUntil = server;
    return lapseOf(reading, asked) <= SILENCE_LIMIT;
  }

  // An event of the stream came. False when it was under way for so long that it tells nothing of
  // now: a browser hands over what it received before the computer slept.
  hear(server, reading) {
    const offset = server - reading.wall;
    const late = this.#offset - offset;
    this.#offset = Math.max(this.#offset, offset);
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

// ms between two readings: the larger lapse of the two clocks.
export function lapseOf(later, earlier) {
  return Math.max(later.wall - earlier.wall, later.steady - earlier.steady);
}

export function readClocks() {
  return { wall: Date.now(), steady: performance.now() };
}
