// What the stand-in has recorded: its values every second, with a gap of two minutes that ends three
// minutes ago. The setpoint of the second tank was recorded in another unit once, that of the third never.

import { now } from "./clock.mjs";

const GAP = [300000, 180000]; // ms before now

export function historyOf(plant, fields) {
  const from = Number(fields.get("from"));
  const to = Math.min(Number(fields.get("to")), now());
  const points = Number(fields.get("points") ?? 1000);
  const step = 1000;
  const series = fields.getAll("label").map((label) => {
    const { type, unit } = plant.values.get(label);
    const common = { plc: plant.name, label, type, unit };
    if (label === "Plant.tank[3].setpoint")
      return { ...common, type: "", unit: "", recorded: false, kind: "changes", times: [from], values: [null], qualities: ["-"] };
    if (label === "Plant.tank[2].setpoint") common.others = [{ type, unit: "K" }];
    return (to - from) / step <= points
      ? { ...common, kind: "changes", ...changes(plant, label, from, to, step) }
      : { ...common, kind: "aggregates", ...aggregates(plant, label, from, to, points) };
  });
  return { from, to, series };
}

const isInGap = (time) => now() - time <= GAP[0] && now() - time >= GAP[1];

function changes(plant, label, from, to, step) {
  const result = { times: [], values: [], qualities: [] };
  for (let time = from; time <= to; time += step) {
    const gap = isInGap(time);
    if (gap && result.qualities.at(-1) === "-") continue;
    result.times.push(time);
    result.values.push(gap ? null : plant.valueAt(label, time));
    result.qualities.push(gap ? "-" : "g");
  }
  return result;
}

function aggregates(plant, label, from, to, points) {
  const step = Math.ceil((to - from) / points);
  const result = { step, times: [], mean: [], minimum: [], maximum: [], coverage: [], qualities: [] };
  for (let time = from; time < to; time += step) {
    const samples = Array.from({ length: 8 }, (_, i) => time + (step * i) / 8)
      .filter((at) => !isInGap(at))
      .map((at) => plant.valueAt(label, at))
      .sort((a, b) => Number(a) - Number(b));
    result.times.push(time);
    result.coverage.push(samples.length / 8);
    result.qualities.push(samples.length === 8 ? "g" : "-");
    result.mean.push(samples.length ? samples.reduce((sum, one) => sum + Number(one), 0) / samples.length : null);
    result.minimum.push(samples[0] ?? null);
    result.maximum.push(samples.at(-1) ?? null);
  }
  return result;
}
