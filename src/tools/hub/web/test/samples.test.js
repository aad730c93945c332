import assert from "node:assert/strict";
import { test } from "node:test";

import { COLUMNS, createSamples, sampleOf, thinned, withGaps } from "../src/samples.js";

const columns = (rows) => Object.fromEntries(
  COLUMNS.map((name) => [name, rows.map((row) => row[name] ?? null)]));

const frame = (time, changes = {}) => ({
  solution: {
    time, hasPosition: true, latitude: 52, longitude: 5, height: 40, quality: 3, satellitesUsed: 14,
    sigmaHorizontal: 0.01, sigmaUp: 0.02, differentialAge: 1, ...changes,
  },
  signals: { channels: [{ cn0: [40, 44] }] },
});

test("a solution without a position has its time and its satellites alone", () => {
  const sample = sampleOf(frame(7, { hasPosition: false, satellitesUsed: 2 }));
  assert.deepEqual(sample, {
    time: 7, latitude: null, longitude: null, height: null, quality: 0, satellites: 2,
    sigmaHorizontal: null, sigmaUp: null, differentialAge: null, cn0: 42,
  });
  assert.equal(sampleOf({ solution: null, signals: null }), null);
});

test("of the solutions of one second the worst is kept, and the first place", () => {
  const samples = createSamples();
  samples.add(frame(10.0, { latitude: 51 }));
  samples.add(frame(10.2, { quality: 1, sigmaHorizontal: 2, satellitesUsed: 4, latitude: 53 }));
  samples.add(frame(10.4, { latitude: 54 }));
  samples.add(frame(11.0));
  const kept = samples.since(0);
  assert.deepEqual(kept.time, [10, 11]);
  assert.deepEqual(kept.quality, [1, 3]);
  assert.deepEqual(kept.sigmaHorizontal, [2, 0.01]);
  assert.deepEqual(kept.satellites, [4, 14]);
  assert.deepEqual(kept.latitude, [51, 52]);
});

test("the newest solution is told as it is", () => {
  const samples = createSamples();
  samples.add(frame(10.0, { quality: 1 }));
  samples.add(frame(10.4, { quality: 3, latitude: 54 }));
  const kept = samples.since(0);
  assert.deepEqual(kept.time, [10, 10.4]);
  assert.deepEqual(kept.quality, [1, 3]);
  assert.deepEqual(kept.latitude, [52, 54]);
});

test("the same solution told twice counts once", () => {
  const samples = createSamples();
  samples.add(frame(10));
  samples.add(frame(10));
  assert.deepEqual(samples.since(0).time, [10]);
});

test("a clock that was set back takes back what is in the future now", () => {
  const samples = createSamples();
  for (const time of [100, 101, 102, 50, 51]) samples.add(frame(time));
  assert.deepEqual(samples.since(0).time, [50, 51]);
});

test("a day is kept and no more", () => {
  const samples = createSamples();
  for (const time of [0, 10, 86405]) samples.add(frame(time));
  assert.deepEqual(samples.since(0).time, [10, 86405]);
});

test("up to its end the history counts, and after it what the page has seen", () => {
  const samples = createSamples();
  for (const time of [10, 11, 12]) samples.add(frame(time));
  samples.setPast(columns([{ time: 8, quality: 2 }, { time: 10.5, quality: 1 }]));
  const kept = samples.since(0);
  assert.deepEqual(kept.time, [8, 10.5, 11, 12]);
  assert.deepEqual(kept.quality, [2, 1, 3, 3]);
  assert.deepEqual(samples.since(10.6).time, [11, 12]);
});

test("thinned samples tell the worst of their stretch", () => {
  const thin = thinned(columns([
    { time: 0, quality: 3, sigmaUp: 1, cn0: 40 }, { time: 4, quality: 2, sigmaUp: null, cn0: 30 },
    { time: 9, quality: 3, sigmaUp: 5, cn0: 45 }, { time: 10, quality: 1, sigmaUp: 2, cn0: 41 },
    { time: 11, quality: 3, sigmaUp: 1, cn0: 42 },
  ]), 10);
  // The last one stays as it is beside its stretch.
  assert.deepEqual(thin.time, [0, 10, 11]);
  assert.deepEqual(thin.quality, [2, 1, 3]);
  assert.deepEqual(thin.sigmaUp, [5, 2, 1]);
  assert.deepEqual(thin.cn0, [30, 41, 42]);
});

test("a line is cut where nothing came", () => {
  const cut = withGaps(columns([{ time: 0, cn0: 1 }, { time: 5, cn0: 2 }, { time: 11, cn0: 3 }]), 5);
  assert.deepEqual(cut.cn0, [1, 2, null, 3]);
  assert.deepEqual(cut.time, [0, 5, 7.5, 11]);
});
