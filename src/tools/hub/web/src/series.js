// What a column of a time series comes to in words.

/** The last value, the lowest and the highest; null where there is none. */
export function extremes(values) {
  let [last, lowest, highest] = [null, null, null];
  for (const value of values) {
    if (value === null || value === undefined) continue;
    last = value;
    lowest = lowest === null ? value : Math.min(lowest, value);
    highest = highest === null ? value : Math.max(highest, value);
  }
  return { last, lowest, highest };
}
