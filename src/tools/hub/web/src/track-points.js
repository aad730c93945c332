// The points of the track plot, in metres east and north.

import { eastNorthFrom } from "./geodesy.js";
import { mean } from "./statistics.js";

const LONGEST_GAP = 2.5; // steps between two points that still hang together

/**
 * The positions of samples (see samples.js) about an origin: the first point, or their mean.
 * A point after a loss begins a new piece of the track. Nothing without a position.
 */
export function pointsOf(samples, step, isAboutMean) {
  const places = samples.time.map((_, i) => i)
    .filter((i) => samples.latitude[i] !== null && samples.longitude[i] !== null);
  if (places.length === 0) return null;
  const column = (name) => places.map((i) => samples[name][i]);
  const [latitudes, longitudes] = [column("latitude"), column("longitude")];
  // A first point near all others: longitudes may not be averaged across the date line.
  const fromFirst = eastNorthFrom(latitudes[0], longitudes[0]);
  const all = latitudes.map((latitude, i) => fromFirst(latitude, longitudes[i]));
  let [east, north] = [all.map((each) => each[0]), all.map((each) => each[1])];
  if (isAboutMean) {
    const middle = [mean(east), mean(north)];
    east = east.map((value) => value - middle[0]);
    north = north.map((value) => value - middle[1]);
  }
  const longest = LONGEST_GAP * Math.max(step, 2);
  const time = column("time");
  return {
    time, east, north,
    quality: column("quality"),
    isStart: places.map((place, i) =>
      i === 0 || place !== places[i - 1] + 1 || time[i] - time[i - 1] > longest),
  };
}

/** The length of the way along the points, metres. */
export function lengthOf({ east, north, isStart }) {
  let sum = 0;
  for (let i = 1; i < east.length; i++) {
    if (!isStart[i]) sum += Math.hypot(east[i] - east[i - 1], north[i] - north[i - 1]);
  }
  return sum;
}
