import assert from "node:assert/strict";
import { test } from "node:test";

import { rejectedShare } from "../src/rates.js";
import { matches } from "../src/search.js";
import { extremes } from "../src/series.js";
import { placeOf } from "../src/sky.js";
import { goneNames } from "../src/statuses.js";

test("a search finds every word in any order and case", () => {
  const row = ["NovatelPortHandler", "checksum_stats", "1204,0"];
  assert.equal(matches("", row), true);
  assert.equal(matches("STATS porthandler", row), true);
  assert.equal(matches("1204", row), true);
  assert.equal(matches("stats antenna", row), false);
});

test("names whose program is gone are known, unless another one has come for them", () => {
  const processes = [
    { isConnected: false, names: ["a", "b"] }, { isConnected: true, names: ["b", "c"] },
  ];
  assert.deepEqual([...goneNames(processes)], ["a"]);
});

test("the zenith is in the middle of the sky, and north is up", () => {
  const near = ([x, y], [a, b]) => assert.ok(Math.hypot(x - a, y - b) < 1e-9, `${x} ${y}`);
  near(placeOf(90, 123), [0, 0]);
  near(placeOf(0, 0), [0, -132]);
  near(placeOf(0, 90), [132, 0]);
  near(placeOf(45, 180), [0, 66]);
});

test("the share of the rejected is told in per cent, and not of nothing", () => {
  assert.equal(rejectedShare({ good: 3, rejected: 1 }), 25);
  assert.equal(rejectedShare({ good: 0, rejected: 0 }), null);
});

test("the extremes of a column leave out what is not there", () => {
  assert.deepEqual(extremes([null, 3, -1, null]), { last: -1, lowest: -1, highest: 3 });
  assert.deepEqual(extremes([null]), { last: null, lowest: null, highest: null });
});
