// How often things come that come more or less regularly, learned from their ages.

const LIMIT = 5; // s
const MISSED = 2; // periods

/**
 * Gives a function that takes a thing's key, its present age and a first guess of its period, and
 * returns past how many seconds it is old: twice the last pause between its comings that was seen,
 * and five seconds at least.
 */
export function createPeriods() {
  const seen = new Map();
  return (key, age, guess) => {
    const { last = age, pause = guess } = seen.get(key) ?? {};
    const now = { last: age, pause: age < last ? last : pause };
    seen.set(key, now);
    return Math.max(LIMIT, MISSED * now.pause);
  };
}
