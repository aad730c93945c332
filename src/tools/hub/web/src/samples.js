// The course of the solution, in columns: from the hub's history first, then live, second by second.

import { meanDensity } from "./satellites.js";

export const COLUMNS = [
  "time", "latitude", "longitude", "height", "quality", "satellites",
  "sigmaHorizontal", "sigmaUp", "differentialAge", "cn0",
];
const LONGEST = 86400; // seconds of live samples kept

// Of samples that become one, the worst tells, as in the hub's history: a short loss must not
// vanish. Time and place are those of the first.
const LOWEST = new Set(["quality", "satellites", "cn0"]);
const HIGHEST = new Set(["sigmaHorizontal", "sigmaUp", "differentialAge"]);

const emptyColumns = () => Object.fromEntries(COLUMNS.map((name) => [name, []]));

function worse(name, a, b) {
  if (a === null || b === null) return a ?? b;
  if (LOWEST.has(name)) return Math.min(a, b);
  if (HIGHEST.has(name)) return Math.max(a, b);
  return a;
}

function add(columns, row, isSame) {
  const last = columns.time.length - 1;
  for (const name of COLUMNS) {
    if (isSame) {
      columns[name][last] = worse(name, columns[name][last], row[name]);
    } else {
      columns[name].push(row[name] ?? null);
    }
  }
}

/** One sample of the live view; null without a solution. */
export function sampleOf(live) {
  const { solution, signals } = live;
  if (!solution) return null;
  const has = solution.hasPosition;
  const position = (name) => (has ? solution[name] : null);
  return {
    time: solution.time,
    latitude: position("latitude"),
    longitude: position("longitude"),
    height: position("height"),
    quality: has ? solution.quality : 0,
    satellites: solution.satellitesUsed,
    sigmaHorizontal: position("sigmaHorizontal"),
    sigmaUp: position("sigmaUp"),
    differentialAge: position("differentialAge"),
    cn0: signals ? meanDensity(signals.channels) : null,
  };
}

const rowOf = (columns, i) => Object.fromEntries(COLUMNS.map((name) => [name, columns[name][i]]));

/** Samples of the same stretch of `step` seconds made one; the last one, the present, stays. */
export function thinned(columns, step) {
  const result = emptyColumns();
  const last = columns.time.length - 1;
  let stretch = null;
  columns.time.forEach((time, i) => {
    const of = Math.floor(time / step);
    add(result, rowOf(columns, i), of === stretch && i !== last);
    stretch = of;
  });
  return result;
}

/** With an empty sample wherever more than `longest` seconds lie between two. */
export function withGaps(columns, longest) {
  const result = emptyColumns();
  columns.time.forEach((time, i) => {
    const last = result.time.at(-1);
    if (last !== undefined && time - last > longest) add(result, { time: last + longest / 2 }, false);
    add(result, rowOf(columns, i), false);
  });
  return result;
}

export function createSamples() {
  let past = emptyColumns();
  const live = emptyColumns();
  let newest = null;

  const forgetBefore = (time) => {
    const keep = live.time.findIndex((each) => each >= time);
    if (keep > 0) for (const name of COLUMNS) live[name].splice(0, keep);
  };
  // A clock that was set back: what came before stands in the future now.
  const forgetAfter = (time) => {
    while (live.time.at(-1) > time) for (const name of COLUMNS) live[name].pop();
  };

  return {
    /** Takes a live frame; the same solution may be told twice. */
    add(frame) {
      const sample = sampleOf(frame);
      if (!sample) return;
      newest = sample;
      forgetAfter(sample.time);
      const last = live.time.at(-1);
      add(live, sample, last !== undefined && Math.floor(sample.time) === Math.floor(last));
      forgetBefore(sample.time - LONGEST);
    },
    /** The hub's history: up to its end it counts more than what the page has seen. */
    setPast(history) {
      past = history;
    },
    /** All of it from a time on; the last one is as it was told, whatever else its second had. */
    since(from) {
      const border = past.time.at(-1) ?? -Infinity;
      const result = emptyColumns();
      const take = (columns, after) => {
        columns.time.forEach((time, i) => {
          if (time < from || time <= after) return;
          for (const name of COLUMNS) result[name].push(columns[name][i] ?? null);
        });
      };
      take(past, -Infinity);
      take(live, border);
      if (newest?.time > result.time.at(-1)) add(result, newest, false);
      return result;
    },
  };
}
