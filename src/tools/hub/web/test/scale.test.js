import assert from "node:assert/strict";
import { test } from "node:test";

import { lengthWords, multiples, roundedDown } from "../src/scale.js";

test("a round length is 1, 2 or 5 of a power of ten and no longer", () => {
  const cases = [[1, 1], [1.99, 1], [2, 2], [4.9, 2], [7, 5], [10, 10], [99, 50], [0.0234, 0.02],
                 [1000, 1000]];
  for (const [length, expected] of cases) {
    assert.ok(Math.abs(roundedDown(length) - expected) < expected * 1e-9, `${length}`);
  }
});

test("grid lines are the multiples within the bounds, both bounds included", () => {
  assert.deepEqual(multiples(5, -10, 10), [-10, -5, 0, 5, 10]);
  assert.deepEqual(multiples(5, 1, 4), []);
  assert.equal(multiples(0.1, 0, 0.3).length, 4);
});

test("a length is told in the unit that suits it", () => {
  const cases = [[0.005, "5 mm"], [0.2, "20 cm"], [1, "1 m"], [500, "500 m"], [2000, "2 km"]];
  for (const [length, words] of cases) assert.equal(lengthWords(length), words);
});
