// The range of an axis for the values that are seen on it.

// The numbers of a narrower range differ in too few of their digits for ticks.
const LEAST_SPAN = 1e-12; // of the greatest number

const AUTOMATIC = { lowest: null, highest: null };

// {min, max} of an axis: its limits where they are given, otherwise around what the curves show in the
// window.
export function axisRange(curves, from, to, { lowest, highest } = AUTOMATIC) {
  const { min, max } = neededRange(curves, from, to);
  if (lowest !== null && highest !== null) return drawable(lowest, highest);
  if (lowest !== null) return drawable(lowest, max > lowest ? max : lowest + roomOf(lowest));
  if (highest !== null) return drawable(min < highest ? min : highest - roomOf(highest), highest);
  return drawable(min, max);
}

// Where a number is in a range: 0 at its beginning, 1 at its end. Halves, since a range may be wider than the
// greatest number.
export function shareOf(number, { min, max }) {
  return (number / 2 - min / 2) / (max / 2 - min / 2);
}

function drawable(min, max) {
  const [least, most] = [finite(min), finite(max)];
  const lacking = Math.max(0, (LEAST_SPAN * Math.max(Math.abs(least), Math.abs(most)) - (most - least)) / 2);
  return { min: finite(least - lacking), max: finite(most + lacking) };
}

const finite = (number) => Math.min(Number.MAX_VALUE, Math.max(-Number.MAX_VALUE, number));

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
  const room = most > least ? 0.06 * most - 0.06 * least : roomOf(most);
  return { min: least - room, max: most + room };
}
