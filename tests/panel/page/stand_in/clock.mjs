// The stand-in's clock, which a test may set.

let offset = 0; // ms

export const now = () => Date.now() + offset;

// By so many ms: less than 0 is back.
export const setClock = (by) => void (offset += by);
