// A browser opens six connections to a server and lets all further requests wait, of all tabs. Each
// tab with the page keeps one for its stream, so there are places for five: what is asked and written
// in any of them must not wait until another is closed.

const PLACES = 5;

let taking = null; // a promise of the place

// Takes a place until the tab is closed. False: there is none now. Where a browser has no locks, as
// without TLS from afar, or gives none to this page, nobody can tell.
export function takePlace() {
  taking ??= findPlace().then((isFound) => {
    if (!isFound) taking = null;
    return isFound;
  });
  return taking;
}

async function findPlace() {
  if (!navigator.locks) return true;
  for (let place = 1; place <= PLACES; ++place) {
    if (await hold(`plc-panel ${place}`)) return true;
  }
  return false;
}

// The lock of this name, for good, or not at all.
const hold = (name) =>
  new Promise((answer) => {
    const taken = navigator.locks.request(name, { ifAvailable: true }, (lock) => {
      answer(lock !== null);
      return lock && new Promise(() => {});
    });
    taken.catch(() => answer(true));
  });
