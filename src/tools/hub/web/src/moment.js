// Moments of the page's own clocks, and what has elapsed between two of them.

/** The wall clock goes on while the machine sleeps, the steady one is never set: both are kept. */
export function moment() {
  return { wall: Date.now() / 1000, steady: performance.now() / 1000 };
}

/** Seconds; the larger of what both clocks tell, so that nothing ever looks younger than it is. */
export function elapsed(from, to) {
  return Math.max(0, to.wall - from.wall, to.steady - from.steady);
}

/** The moment so many seconds before another one. */
export function before(at, seconds) {
  return { wall: at.wall - seconds, steady: at.steady - seconds };
}
