import assert from "node:assert/strict";
import { test } from "node:test";

import { ageNow } from "../src/ages.js";
import { createDelay } from "../src/delay.js";
import { before, elapsed } from "../src/moment.js";
import { createPeriods } from "../src/periods.js";

const at = (seconds) => ({ wall: 1000 + seconds, steady: seconds });
const entry = (changes) =>
  ({ age: 1, since: at(0), limit: 2, source: "port", isKnownOld: false, ...changes });

test("an age goes on by the page's own clock", () => {
  assert.deepEqual(ageNow(entry(), at(0.5), "live"), { seconds: 1.5, isOld: false });
  assert.deepEqual(ageNow(entry(), at(1.5), "live"), { seconds: 2.5, isOld: true });
});

test("what has never been has no age and is not old", () => {
  assert.deepEqual(ageNow(entry({ age: null }), at(9), "gone"), { seconds: null, isOld: false });
});

test("a thing is old when its source is away or it is known to be", () => {
  assert.equal(ageNow(entry(), at(0), "silent").isOld, true);
  assert.equal(ageNow(entry({ source: "hub" }), at(0), "silent").isOld, false);
  assert.equal(ageNow(entry({ isKnownOld: true }), at(0), "live").isOld, true);
});

test("time that the machine has slept counts", () => {
  assert.equal(elapsed({ wall: 10, steady: 1 }, { wall: 70, steady: 2 }), 60);
});

test("a clock that is set back makes nothing younger", () => {
  assert.equal(elapsed({ wall: 5000, steady: 1 }, { wall: 10, steady: 4 }), 3);
  assert.equal(elapsed({ wall: 5000, steady: 1 }, { wall: 10, steady: 1 }), 0);
});

test("a moment before another one lies so far back on both clocks", () => {
  assert.deepEqual(before({ wall: 100, steady: 50 }, 2), { wall: 98, steady: 48 });
});

test("a frame that came late is known by the frames before it", () => {
  const delayOf = createDelay();
  assert.equal(delayOf(100, 5100), 0); // the clocks are 5000 s apart
  assert.equal(delayOf(101, 5104), 3);
  assert.equal(delayOf(102, 5102), 0);
});

test("a hub's clock that was set is believed after fifty frames", () => {
  const delayOf = createDelay();
  delayOf(1000, 1000);
  const late = Array.from({ length: 50 }, (_, i) => delayOf(100 + i, 1001 + i));
  assert.equal(late[0], 901);
  assert.equal(late.at(-1), 0);
});

test("a log is old after twice its pause, and five seconds at least", () => {
  const limitOf = createPeriods();
  assert.equal(limitOf("fast", 0.1, 0.05), 5);
  assert.equal(limitOf("slow", 9, 10), 20); // as it is first guessed
  assert.equal(limitOf("slow", 0.5, 10), 18); // and as it was seen to be: 9 s
  assert.equal(limitOf("slow", 8, 10), 18);
});

test("a long pause is forgotten with the next one", () => {
  const limitOf = createPeriods();
  for (const age of [1, 600, 0.1, 1]) limitOf("log", age, 1);
  assert.equal(limitOf("log", 0.1, 1), 5);
});
