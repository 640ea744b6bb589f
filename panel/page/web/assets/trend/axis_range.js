// The range of an axis for the values that are seen on it.

const AUTOMATIC = { lowest: null, highest: null };

// {min, max} of an axis: its limits where they are given, otherwise around what the curves show in the
// window.
export function axisRange(curves, from, to, { lowest, highest } = AUTOMATIC) {
  const { min, max } = neededRange(curves, from, to);
  if (lowest !== null && highest !== null) return { min: lowest, max: highest };
  if (lowest !== null) return { min: lowest, max: max > lowest ? max : lowest + roomOf(lowest) };
  if (highest !== null) return { min: min < highest ? min : highest - roomOf(highest), max: highest };
  return { min, max };
}

// The curves of which something in the window is outside the range.
export function beyondRange(curves, from, to, { min, max }) {
  return curves.filter((curve) => {
    const seen = curve.extent(from, to);
    return seen && (seen.least < min || seen.most > max);
  });
}

const roomOf = (number) => Math.max(0.5, 0.05 * Math.abs(number));

// With a little room.
function neededRange(curves, from, to) {
  let least = Infinity;
  let most = -Infinity;
  for (const curve of curves) {
    const seen = curve.extent(from, to);
    if (!seen) continue;
    least = Math.min(least, seen.least);
    most = Math.max(most, seen.most);
  }
  if (least > most) return { min: 0, max: 1 };
  if (curves.every(({ type }) => type === "BOOL" || type === "BIT")) return { min: -0.1, max: 1.1 };
  const room = most > least ? 0.06 * (most - least) : roomOf(most);
  return { min: least - room, max: most + room };
}
