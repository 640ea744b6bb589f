// A part of a number reads as another number, a part of a unit as another unit. What has not enough room
// for all of its text gets `data-cut`, and the style shows a mark instead.

const ASIDE = 0.5; // pixels that are only rounded
const ABOVE = 2.5; // pixels by which the frames of letters are higher than their lines

// Of all below `root` that have `data-whole`.
export function markCut(root) {
  const range = document.createRange();
  const places = [...root.querySelectorAll("[data-whole]")].map((place) => {
    range.selectNodeContents(place);
    return [place, isOutside(range.getBoundingClientRect(), place.getBoundingClientRect())];
  });
  for (const [place, isCut] of places) {
    if (isCut !== place.hasAttribute("data-cut")) place.toggleAttribute("data-cut", isCut);
  }
}

function isOutside(text, place) {
  if (text.width === 0) return false;
  return (
    text.left < place.left - ASIDE || text.right > place.right + ASIDE ||
    text.top < place.top - ABOVE || text.bottom > place.bottom + ABOVE
  );
}
