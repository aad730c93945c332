import assert from "node:assert/strict";
import { test } from "node:test";

import { COLUMNS } from "../src/samples.js";
import { lengthOf, pointsOf } from "../src/track-points.js";

const STEP = 1;
// A ten-thousandth of a degree of latitude at the equator is 11.0574 m.
const NORTH = 11.0574;

const samples = (rows) => Object.fromEntries(
  COLUMNS.map((name) => [name, rows.map((row) => row[name] ?? null)]));
const at = (time, latitude) => ({ time, latitude, longitude: 0, quality: 3 });
const near = (actual, expected) =>
  assert.ok(Math.abs(actual - expected) < 1e-3, `${actual} is not near ${expected}`);

test("a track is about its first point", () => {
  const points = pointsOf(samples([at(0, 0), at(1, 1e-4), at(2, 3e-4)]), STEP, false);
  near(points.north[0], 0);
  near(points.north[2], 3 * NORTH);
  near(points.east[2], 0);
});

test("a scatter is about its mean", () => {
  const points = pointsOf(samples([at(0, 0), at(1, 2e-4)]), STEP, true);
  near(points.north[0], -NORTH);
  near(points.north[1], NORTH);
});

test("a mean lies on the date line when the points lie about it", () => {
  const rows = [{ ...at(0, 0), longitude: 179.9999 }, { ...at(1, 0), longitude: -179.9999 }];
  const points = pointsOf(samples(rows), STEP, true);
  near(points.east[0], -11.1319);
  near(points.east[1], 11.1319);
});

test("a loss begins a new piece, whether told or a pause", () => {
  const told = pointsOf(samples([at(0, 0), { time: 1 }, at(2, 1e-4), at(3, 2e-4)]), STEP, false);
  assert.deepEqual(told.isStart, [true, true, false]);
  const paused = pointsOf(samples([at(0, 0), at(5, 1e-4), at(10.1, 2e-4)]), STEP, false);
  assert.deepEqual(paused.isStart, [true, false, true]);
});

test("the way does not go across a loss", () => {
  const points = pointsOf(samples([at(0, 0), at(1, 1e-4), { time: 2 }, at(3, 5e-4), at(4, 6e-4)]), STEP, false);
  near(lengthOf(points), 2 * NORTH);
});

test("without a position there are no points", () => {
  assert.equal(pointsOf(samples([{ time: 1 }]), STEP, false), null);
});
