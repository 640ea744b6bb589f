// Requests to the page's own server.

const ROOT = "/api/v1";
const PATIENCE = 10000; // ms

// The server could not be reached, or did not answer in time.
export class Unreachable extends Error {}

// The run of the server that the page has seen last. A change that a browser repeats by itself after the
// server was started again is refused by it.
let instance = null;

// A session that the server told: what is asked from now on is meant for this run.
export function meetRun(session) {
  instance = session?.instance ?? instance;
}

export const currentRun = () => instance;

// {status, body}: body is the JSON of the answer, null where there is none.
export async function request(method, path, body, { patience = PATIENCE, run = instance } = {}) {
  const options = { method, cache: "no-store", credentials: "same-origin", signal: AbortSignal.timeout(patience) };
  if (body !== undefined) {
    options.body = jsonOf(body);
    options.headers = { "Content-Type": "application/json" };
  }
  if (method !== "GET" && run) options.headers = { ...options.headers, "Panel-Instance": run };
  try {
    const response = await fetch(ROOT + path, options);
    const text = await response.text();
    return { status: response.status, body: text ? parsed(text) : null };
  } catch (error) {
    throw new Unreachable(error.message);
  }
}

// JSON.stringify() writes -0 as 0, and large numbers as whole ones, of which the server takes no more than 64 bits.
function jsonOf(one) {
  if (Object.is(one, -0)) return "-0.0";
  if (Number.isInteger(one) && !Number.isSafeInteger(one)) return one.toExponential();
  if (Array.isArray(one)) return `[${one.map(jsonOf)}]`;
  if (one === null || typeof one !== "object") return JSON.stringify(one);
  const members = Object.entries(one).filter(([, member]) => member !== undefined);
  return `{${members.map(([name, member]) => `${JSON.stringify(name)}:${jsonOf(member)}`)}}`;
}

// The same; status null when no answer came.
export async function ask(method, path, body, options) {
  try {
    return await request(method, path, body, options);
  } catch {
    return { status: null, body: null };
  }
}

function parsed(text) {
  try {
    return JSON.parse(text);
  } catch {
    return { error: text.slice(0, 200) };
  }
}

// The body of a good answer; an Error with the server's sentence otherwise.
export async function get(path, options) {
  return bodyOf(await request("GET", path, undefined, options));
}

export async function send(method, path, body, options) {
  return bodyOf(await request(method, path, body, options));
}

function bodyOf({ status, body }) {
  if (status >= 200 && status < 300) return body;
  const error = new Error(body?.error ?? `The server answered ${status}.`);
  error.status = status;
  error.body = body;
  throw error;
}

// The content of a good answer as a file; an Error otherwise, also when it broke off.
export async function getFile(path) {
  const response = await fetch(ROOT + path, { cache: "no-store", credentials: "same-origin" }).catch((error) => {
    throw new Unreachable(error.message);
  });
  if (!response.ok) bodyOf({ status: response.status, body: parsed(await response.text()) });
  return response.blob();
}

// "?plc=A&label=B&label=C" of {plc: "A", label: ["B", "C"]}; what is undefined is left out.
export function query(fields) {
  const parameters = new URLSearchParams();
  for (const [name, value] of Object.entries(fields)) {
    if (value === undefined || value === null) continue;
    for (const one of Array.isArray(value) ? value : [value]) parameters.append(name, String(one));
  }
  return `?${parameters}`;
}

export const ROOT_PATH = ROOT;
