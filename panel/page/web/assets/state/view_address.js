// What is looked at, as the part of the address behind the "#": a view can be kept and shared.
//
//   #values?v=PLC|LABEL&v=…&group=scope&sort=label&filter=text
//   #trend?v=…&t=PLC|LABEL&t=PLC|LABEL|right&span=600000&from=…&to=…

export const VIEWS = ["values", "trend", "alarms", "recipes", "audit"];
const GROUPS = ["none", "plc", "scope", "mark"];
const SORTS = ["chosen", "label", "value", "age", "mark"];
export const SERIES_LIMIT = 8;
const SPAN = 600000; // ms

export function emptyView() {
  return {
    view: "values",
    chosen: [],
    group: "scope",
    sort: "chosen",
    descending: false,
    filter: "",
    series: [],
    span: SPAN,
    range: null, // {from, to}: back in time; null: live
  };
}

// Names may have the sign that stands between them.
const escaped = (text) => text.replace(/[%|]/g, encodeURIComponent);
const unescaped = (text) => text.replace(/%7C|%25/g, decodeURIComponent);
const nameOf = ({ plc, label }) => `${escaped(plc)}|${escaped(label)}`;

export function writeAddress(view) {
  const fields = new URLSearchParams();
  for (const one of view.chosen) fields.append("v", nameOf(one));
  for (const one of view.series) fields.append("t", nameOf(one) + (one.axis === "right" ? "|right" : ""));
  const plain = emptyView();
  if (view.group !== plain.group) fields.append("group", view.group);
  if (view.sort !== plain.sort || view.descending) {
    fields.append("sort", (view.descending ? "-" : "") + view.sort);
  }
  if (view.filter) fields.append("filter", view.filter);
  if (view.span !== plain.span) fields.append("span", String(view.span));
  if (view.range) {
    fields.append("from", String(Math.round(view.range.from)));
    fields.append("to", String(Math.round(view.range.to)));
  }
  // What stays legible in an address is left as it is.
  const text = fields.toString().replaceAll("%7C", "|").replaceAll("%5B", "[").replaceAll("%5D", "]");
  return `#${view.view}${text ? `?${text}` : ""}`;
}

// The view of an address; what it does not understand is left out.
export function readAddress(address) {
  const [name, ...rest] = address.replace(/^#/, "").split("?");
  const fields = new URLSearchParams(rest.join("?"));
  const view = emptyView();
  if (VIEWS.includes(name)) view.view = name;
  view.chosen = withoutRepeats(fields.getAll("v").map(readName).filter(Boolean));
  view.series = withoutRepeats(fields.getAll("t").map(readName).filter(Boolean)).slice(0, SERIES_LIMIT);
  if (GROUPS.includes(fields.get("group"))) view.group = fields.get("group");
  const sort = fields.get("sort") ?? view.sort;
  if (SORTS.includes(sort.replace(/^-/, ""))) {
    view.sort = sort.replace(/^-/, "");
    view.descending = sort.startsWith("-");
  }
  view.filter = fields.get("filter") ?? "";
  view.span = positive(fields.get("span")) ?? view.span;
  const from = positive(fields.get("from"));
  const to = positive(fields.get("to"));
  if (from !== null && to !== null && to > from) view.range = { from, to };
  return view;
}

function readName(text) {
  const [plc, label, axis] = text.split("|").map(unescaped);
  if (!plc || !label) return null;
  return axis === "right" ? { plc, label, axis } : { plc, label };
}

function withoutRepeats(names) {
  const seen = new Set();
  return names.filter((one) => !seen.has(nameOf(one)) && seen.add(nameOf(one)));
}

function positive(text) {
  return text && /^\d{1,15}$/.test(text) && Number(text) > 0 ? Number(text) : null;
}
