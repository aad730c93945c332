import assert from "node:assert/strict";
import { test } from "node:test";

import { bySystem, fromNmea, meanDensity, satelliteName } from "../src/satellites.js";

test("a satellite is called by the letter of its system", () => {
  assert.equal(satelliteName("GPS", 7), "G07");
  assert.equal(satelliteName("SBAS", 124), "S124");
  assert.equal(satelliteName("something new", 3), "?03");
});

test("the receiver's GLONASS numbers are slots and 37", () => {
  assert.equal(satelliteName("GLONASS", 38), "R01");
  assert.equal(satelliteName("GLONASS", 61), "R24");
  assert.equal(satelliteName("GLONASS", 24), "R24");
});

test("sentences number SBAS from 33 and GLONASS from 65 on", () => {
  assert.deepEqual(fromNmea(32), { system: "GPS", prn: 32 });
  assert.deepEqual(fromNmea(33), { system: "SBAS", prn: 120 });
  assert.deepEqual(fromNmea(64), { system: "SBAS", prn: 151 });
  assert.deepEqual(fromNmea(65), { system: "GLONASS", prn: 38 });
  assert.deepEqual(fromNmea(96), { system: "GLONASS", prn: 69 });
});

test("channels are grouped by system and ordered by number, unknown systems last", () => {
  const channels = [{ system: "X", prn: 1 }, { system: "SBAS", prn: 131 }, { system: "GPS", prn: 9 },
                    { system: "GPS", prn: 2 }];
  const groups = bySystem(channels).map(({ system, channels: own }) => [system, own.map((c) => c.prn)]);
  assert.deepEqual(groups, [["GPS", [2, 9]], ["SBAS", [131]], ["X", [1]]]);
});

test("the mean density is that of all signals that are heard", () => {
  assert.equal(meanDensity([{ cn0: [40, 30] }, { cn0: [50, null] }, { cn0: [0] }]), 40);
  assert.equal(meanDensity([{ cn0: [null] }]), null);
  assert.equal(meanDensity([]), null);
});
