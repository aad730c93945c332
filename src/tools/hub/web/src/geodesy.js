// Where points lie from another one, in metres (WGS-84).

const A = 6378137;
const F = 1 / 298.257223563;
const E2 = F * (2 - F);
const RADIAN = Math.PI / 180;

function earthCentred(latitude, longitude, height) {
  const phi = latitude * RADIAN;
  const lambda = longitude * RADIAN;
  const normal = A / Math.sqrt(1 - E2 * Math.sin(phi) ** 2);
  const fromAxis = (normal + height) * Math.cos(phi);
  return [
    fromAxis * Math.cos(lambda),
    fromAxis * Math.sin(lambda),
    (normal * (1 - E2) + height) * Math.sin(phi),
  ];
}

/** Gives a function from latitude and longitude to [east, north] on the plane that touches the
 * ellipsoid in the origin; heights are left out, the plot is a map. */
export function eastNorthFrom(latitude, longitude) {
  const [x0, y0, z0] = earthCentred(latitude, longitude, 0);
  const phi = latitude * RADIAN;
  const lambda = longitude * RADIAN;
  return (otherLatitude, otherLongitude) => {
    const [x, y, z] = earthCentred(otherLatitude, otherLongitude, 0);
    const [dx, dy, dz] = [x - x0, y - y0, z - z0];
    const outwards = dx * Math.cos(lambda) + dy * Math.sin(lambda);
    return [
      dy * Math.cos(lambda) - dx * Math.sin(lambda),
      dz * Math.cos(phi) - outwards * Math.sin(phi),
    ];
  };
}
