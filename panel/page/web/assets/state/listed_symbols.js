// What is told of lists of symbols: whether they are all there are.

// found: {nodes, isComplete, failed: texts}
export function foundText({ nodes: { length }, isComplete, failed }) {
  const matches = isComplete ? `${length} ${length === 1 ? "match" : "matches"}` : `The first ${length} matches; there may be more`;
  return failed.length === 0 ? matches : `${matches}; not known of ${failed.join(", ")}`;
}

// Of several searches, each {nodes, isComplete} or {nodes, failed}.
export function allFound(lists) {
  return {
    nodes: lists.flatMap(({ nodes }) => nodes),
    isComplete: lists.every(({ isComplete = true }) => isComplete),
    failed: lists.flatMap(({ failed }) => failed ?? []),
  };
}

export const restText = (label, length) => `Of ${label} the first ${length} are listed; there are more.`;
