import assert from "node:assert/strict";
import { test } from "node:test";

import * as format from "../src/format.js";

test("what is not known is a dash", () => {
  for (const value of [null, undefined, NaN, Infinity]) {
    assert.equal(format.fixed(value, 2, "m"), "–");
    assert.equal(format.accuracy(value), "–");
    assert.equal(format.distance(value), "–");
    assert.equal(format.latitude(value), "–");
    assert.equal(format.duration(value), "–");
    assert.equal(format.wholeDuration(value), "–");
    assert.equal(format.dateTime(value), "–");
    assert.equal(format.count(value), "–");
  }
});

test("a number has its decimals, its unit and a real minus sign", () => {
  assert.equal(format.fixed(48.90049, 3, "m"), "48.900 m");
  assert.equal(format.fixed(-1.25, 1), "\u22121.3");
  assert.equal(format.fixed(7, 0), "7");
});

test("a number that rounds to nothing is not negative", () => {
  assert.equal(format.fixed(-0.0004, 3, "m"), "0.000 m");
  assert.equal(format.fixed(-0.04, 0), "0");
});

test("thousands are set apart", () => {
  assert.equal(format.count(0), "0");
  assert.equal(format.count(999), "999");
  assert.equal(format.count(1204), "1\u202f204");
  assert.equal(format.count(12345678), "12\u202f345\u202f678");
});

test("an accuracy has fewer decimals the larger it is", () => {
  assert.equal(format.accuracy(0.0141), "0.014 m");
  assert.equal(format.accuracy(1.6), "1.60 m");
  assert.equal(format.accuracy(250.4), "250 m");
});

test("a long distance is told in kilometres", () => {
  assert.equal(format.distance(1203.44), "1203.4 m");
  assert.equal(format.distance(12345.6), "12.35 km");
});

test("latitude and longitude have nine decimals and a direction", () => {
  assert.equal(format.latitude(52.1), "52.100000000° N");
  assert.equal(format.latitude(-33.5), "33.500000000° S");
  assert.equal(format.longitude(5.2), "5.200000000° E");
  assert.equal(format.longitude(-0.1234567894), "0.123456789° W");
});

test("a duration is told in the two units that matter", () => {
  const cases = [[0.04, "0.0 s"], [0.37, "0.3 s"], [9.99, "9.9 s"], [10, "10 s"], [59.9, "59 s"], [60, "1 min 00 s"],
                 [185, "3 min 05 s"], [7380, "2 h 03 min"], [443000, "5 d 3 h"]];
  for (const [seconds, words] of cases) assert.equal(format.duration(seconds), words);
});

test("a duration is never negative", () => {
  assert.equal(format.duration(-3), "0.0 s");
  assert.equal(format.wholeDuration(-3), "0 s");
});

test("a duration can go without tenths", () => {
  assert.equal(format.wholeDuration(8.97), "8 s");
  assert.equal(format.wholeDuration(185.9), "3 min 05 s");
});

test("times are UTC", () => {
  // 1763752000 s are 20413 days and 68800 s: 19:06:40; day 20413 is 2025-11-21.
  assert.equal(format.time(1763752000), "19:06:40");
  assert.equal(format.dateTime(1763752000), "2025-11-21 19:06:40");
});

test("a hundredth of a second is not lost to its binary fraction", () => {
  assert.equal(format.time(1763752000.05, 2), "19:06:40.05");
  assert.equal(format.dateTime(1763752000.29, 2), "2025-11-21 19:06:40.29");
});

test("words begin with a capital", () => {
  assert.equal(format.capitalised("no position"), "No position");
  assert.equal(format.capitalised(""), "–");
  assert.equal(format.capitalised(undefined), "–");
});
