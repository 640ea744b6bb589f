// Durations of the PLC: T#1m30s.

const UNITS = [
  ["d", 86400000n],
  ["h", 3600000n],
  ["m", 60000n],
  ["s", 1000n],
  ["ms", 1n],
];

// "T#1m30s" for 90000.
export function formatDuration(milliseconds) {
  if (milliseconds === 0) return "T#0s";
  let rest = BigInt(Math.abs(milliseconds));
  let text = milliseconds < 0 ? "-T#" : "T#";
  for (const [name, length] of UNITS) {
    const count = rest / length;
    rest %= length;
    if (count !== 0n) text += `${count}${name}`;
  }
  return text;
}

// Milliseconds of "T#1h30m" or "T#1.5s": units descending, a fraction in the last one only; null
// when it is no such text or no whole number of milliseconds.
export function parseDuration(text) {
  const written = /^(?:t|time)#(.+)$/.exec(text.trim().toLowerCase());
  if (!written) return null;
  let rest = written[1];
  let total = 0n;
  let next = 0;
  while (rest !== "") {
    const part = /^(\d[\d_]*)(?:\.(\d+))?(ms|d|h|m|s)_?/.exec(rest);
    if (!part) return null;
    const unit = UNITS.findIndex(([name]) => name === part[3]);
    if (unit < next) return null;
    next = part[2] ? UNITS.length : unit + 1;
    const milliseconds = scaled(part[1].replaceAll("_", ""), part[2] ?? "", UNITS[unit][1]);
    if (milliseconds === null) return null;
    total += milliseconds;
    rest = rest.slice(part[0].length);
  }
  return total;
}

function scaled(whole, fraction, unit) {
  const parts = 10n ** BigInt(fraction.length);
  const product = BigInt(whole + fraction) * unit;
  return product % parts === 0n ? product / parts : null;
}
