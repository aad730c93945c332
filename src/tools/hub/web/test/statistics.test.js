import assert from "node:assert/strict";
import { test } from "node:test";

import { mean, quantile, scatter } from "../src/statistics.js";

test("a quantile lies between its neighbours in proportion", () => {
  assert.equal(quantile([4, 1, 3, 2], 0.5), 2.5);
  assert.equal(quantile([4, 1, 3, 2], 0), 1);
  assert.equal(quantile([4, 1, 3, 2], 1), 4);
  assert.equal(quantile([7], 0.95), 7);
});

test("finding a quantile leaves the values in their order", () => {
  const values = [3, 1, 2];
  quantile(values, 0.5);
  assert.deepEqual(values, [3, 1, 2]);
});

test("the mean is the mean", () => {
  assert.equal(mean([1, 2, 6]), 3);
});

test("the circles of a scatter are about its mean", () => {
  // A cross of arms 1 m about (10, 20), and its middle: radii 0, 1, 1, 1, 1.
  const numbers = scatter([10, 11, 9, 10, 10], [20, 20, 20, 21, 19]);
  assert.equal(numbers.count, 5);
  assert.equal(numbers.east, 10);
  assert.equal(numbers.north, 20);
  assert.equal(numbers.cep50, 1);
  assert.equal(numbers.cep95, 1);
  // Squares sum up to 2, over 4: the root of a half.
  assert.ok(Math.abs(numbers.sigmaEast - Math.SQRT1_2) < 1e-12);
  assert.ok(Math.abs(numbers.sigmaNorth - Math.SQRT1_2) < 1e-12);
});

test("ninety-five per cent leave out the outlier", () => {
  const east = [...Array(99).fill(0), 1000];
  const numbers = scatter(east, Array(100).fill(0));
  // The mean is at 10: 99 points are 10 away from it, one 990.
  assert.equal(numbers.cep50, 10);
  assert.equal(numbers.cep95, 10);
});

test("one point scatters by nothing, and none has no numbers", () => {
  const one = scatter([3], [4]);
  assert.deepEqual([one.cep50, one.cep95, one.sigmaEast, one.sigmaNorth], [0, 0, 0, 0]);
  assert.equal(scatter([], []), null);
});
