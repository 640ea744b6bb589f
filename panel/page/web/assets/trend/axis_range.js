// The range of an axis for the values that are seen on it.

// {min, max} around what the curves show in the window, with a little room.
export function axisRange(curves, from, to) {
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
  const room = most > least ? 0.06 * (most - least) : Math.max(0.5, 0.05 * Math.abs(most));
  return { min: least - room, max: most + room };
}
