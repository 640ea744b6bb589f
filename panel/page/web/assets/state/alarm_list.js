// Alarms as the server tells them, by their id: the newest news of each counts.

export const ALARM_WORDS = { active: "active", ended: "ended", normal: "normal", unknown: "not known" };

// Those that ask for somebody's attention first, then the newest.
export function attentionFirst(alarms) {
  const order = (alarm) => {
    if (alarm.state === "active") return alarm.acknowledgedBy ? 1 : 0;
    if (alarm.state === "unknown") return 2;
    return alarm.state === "ended" && !alarm.acknowledgedBy ? 3 : 4;
  };
  return [...alarms].sort((a, b) => order(a) - order(b) || (b.since ?? 0) - (a.since ?? 0));
}

export function needsAcknowledgement(alarm) {
  return (alarm.state === "active" || alarm.state === "ended") && !alarm.acknowledgedBy;
}

// A recorded occurrence as it is now: one that had no end when it was asked for may have ended since.
// `current`: its alarm as it is told now; `known`: whether that is so at this moment.
export function occurrenceNow(recorded, current, known) {
  if (recorded.ended) return { ...recorded, state: "ended" };
  if (!known || !current || current.state === "unknown") return { ...recorded, state: "unknown" };
  if (current.since !== recorded.since) return { ...recorded, state: "ended" };
  const { state, ended, acknowledgedBy, acknowledgedAt } = current;
  return { ...recorded, state: state === "active" ? "active" : "ended", ended, acknowledgedBy, acknowledgedAt };
}

// How many are active, and how many of all wait for somebody.
export function alarmCounts(alarms) {
  let active = 0;
  let waiting = 0;
  for (const alarm of alarms) {
    if (alarm.state === "active") ++active;
    if (needsAcknowledgement(alarm)) ++waiting;
  }
  return { active, waiting };
}
