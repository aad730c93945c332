// What a cloud of points says about the accuracy.

export function mean(values) {
  return values.reduce((sum, value) => sum + value, 0) / values.length;
}

/** The value that so large a part of them does not exceed, between neighbours in proportion. */
export function quantile(values, part) {
  const sorted = [...values].sort((a, b) => a - b);
  const place = (sorted.length - 1) * part;
  const below = Math.floor(place);
  const above = Math.min(below + 1, sorted.length - 1);
  return sorted[below] + (sorted[above] - sorted[below]) * (place - below);
}

function deviation(values, middle) {
  if (values.length < 2) return 0;
  const squares = values.reduce((sum, value) => sum + (value - middle) ** 2, 0);
  return Math.sqrt(squares / (values.length - 1));
}

/** About their mean: the radii of the circles that hold 50 % and 95 % of the points, and the
 * standard deviations. Nothing without a point. */
export function scatter(east, north) {
  if (east.length === 0) return null;
  const middle = [mean(east), mean(north)];
  const radii = east.map((value, i) => Math.hypot(value - middle[0], north[i] - middle[1]));
  return {
    count: east.length,
    east: middle[0],
    north: middle[1],
    sigmaEast: deviation(east, middle[0]),
    sigmaNorth: deviation(north, middle[1]),
    cep50: quantile(radii, 0.5),
    cep95: quantile(radii, 0.95),
  };
}
