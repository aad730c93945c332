import assert from "node:assert/strict";
import { test } from "node:test";

import { eastNorthFrom } from "../src/geodesy.js";

// Lengths of a ten-thousandth of a degree, from the radii of curvature of the meridian and of the
// parallel (WGS-84): [latitude, north, east], metres.
const LENGTHS = [
  [0, 11.057427582, 11.131949079],
  [52, 11.126735329, 6.867801608],
  [-33.5, 11.091338772, 9.292254372],
  [89, 11.169363564, 0.194932673],
];

const near = (actual, expected, tolerance) =>
  assert.ok(Math.abs(actual - expected) <= tolerance, `${actual} is not near ${expected}`);

test("a step to the north has the length of the meridian", () => {
  for (const [latitude, north] of LENGTHS) {
    const to = eastNorthFrom(latitude, 5)(latitude + 1e-4, 5);
    near(to[0], 0, 1e-6);
    near(to[1], north, 2e-5);
  }
});

test("a step to the east has the length of the parallel", () => {
  for (const [latitude, , east] of LENGTHS) {
    const to = eastNorthFrom(latitude, 5)(latitude, 5 + 1e-4);
    near(to[0], east, 2e-5);
    near(to[1], 0, 1e-4);
  }
});

test("the origin lies at nothing", () => {
  const to = eastNorthFrom(52.1, 5.2)(52.1, 5.2);
  near(to[0], 0, 1e-9);
  near(to[1], 0, 1e-9);
});

test("the date line is crossed as any other meridian", () => {
  const to = eastNorthFrom(0, 179.99995)(0, -179.99995);
  near(to[0], 11.131949079, 2e-5);
});
