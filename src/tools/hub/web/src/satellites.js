// What satellites are called, and how well they are heard.

import { mean } from "./statistics.js";

const SYSTEM_LETTERS = { GPS: "G", GLONASS: "R", SBAS: "S", Galileo: "E", BeiDou: "C", QZSS: "J" };
export const SYSTEMS = Object.keys(SYSTEM_LETTERS);

const two = (value) => String(value).padStart(2, "0");

/** By the letter of its system: "G07", "R12", "S124". The receiver numbers GLONASS from 38 on. */
export function satelliteName(system, prn) {
  const slot = system === "GLONASS" && prn > 37 ? prn - 37 : prn;
  return `${SYSTEM_LETTERS[system] ?? "?"}${two(slot)}`;
}

// Of the numbers of NMEA 0183: the first of each system, and what makes it the receiver's own.
const NMEA_NUMBERS = [
  { from: 65, system: "GLONASS", add: 37 - 64 },
  { from: 33, system: "SBAS", add: 87 },
  { from: 1, system: "GPS", add: 0 },
];

/** System and number of a satellite, as the receiver numbers it, from its number in a sentence. */
export function fromNmea(number) {
  const row = NMEA_NUMBERS.find((each) => number >= each.from) ?? NMEA_NUMBERS.at(-1);
  return { system: row.system, prn: number + row.add };
}

/** Channels by system, in their usual order, and by number; of systems that are there. */
export function bySystem(channels) {
  const order = [...SYSTEMS, ...channels.map((each) => each.system)];
  return [...new Set(order)]
    .map((system) => ({
      system,
      channels: channels
        .filter((each) => each.system === system)
        .sort((a, b) => a.prn - b.prn),
    }))
    .filter((group) => group.channels.length > 0);
}

/** The mean over all signals that are tracked, dB-Hz, as in the hub's history; null without any. */
export function meanDensity(channels) {
  const values = channels.flatMap((each) => each.cn0).filter((value) => value > 0);
  return values.length ? mean(values) : null;
}
