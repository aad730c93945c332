// Round lengths for scales and grids.

/** The largest of 1, 2, 5, 10, 20... (and below) that is no larger. */
export function roundedDown(length) {
  const power = 10 ** Math.floor(Math.log10(length) + 1e-9);
  const step = [5, 2, 1].find((each) => each * power <= length * (1 + 1e-9)) ?? 1;
  return step * power;
}

/** The multiples of a step from one value to another. */
export function multiples(step, from, to) {
  const first = Math.ceil(from / step - 1e-9);
  const last = Math.floor(to / step + 1e-9);
  return Array.from({ length: Math.max(0, last - first + 1) }, (_, i) => (first + i) * step);
}

/** A length in the unit that suits it: "5 mm", "20 cm", "100 m", "2 km". */
export function lengthWords(metres) {
  const round = (value) => String(Number(value.toPrecision(3)));
  if (metres < 0.01) return `${round(metres * 1000)} mm`;
  if (metres < 1) return `${round(metres * 100)} cm`;
  if (metres < 1000) return `${round(metres)} m`;
  return `${round(metres / 1000)} km`;
}
