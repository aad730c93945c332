"""From Earth-centred coordinates to latitude, longitude and height: Bowring's single step."""

import math
from decimal import Decimal, localcontext

from decoder.printf import real

A = 6378137.0  # WGS-84, metres
FLATTENING = 1.0 / 298.257223563
B = A * (1.0 - FLATTENING)
E2 = FLATTENING * (2.0 - FLATTENING)
SECOND_E2 = E2 / (1.0 - E2)


def geodetic(x: float, y: float, z: float) -> tuple[float, float, float]:
    """Radians, radians and metres; without a height, 0 metres."""
    p = math.sqrt(x * x + y * y)
    theta = math.atan2(A * z, p * B)
    sine, cosine = math.sin(theta), math.cos(theta)
    latitude = math.atan2(z + SECOND_E2 * B * sine * sine * sine,
                          p - E2 * A * cosine * cosine * cosine)
    longitude = math.atan2(y, x)
    root = 1.0 - E2 * math.sin(latitude) * math.sin(latitude)
    height = p / math.cos(latitude) - A / math.sqrt(root) if root > 0.0 else 0.0
    return latitude, longitude, height


def position_text(x: float, y: float, z: float) -> str:
    """The canonical form of "psrxyz_pos": no digits that may differ between maths libraries."""
    latitude, longitude, height = geodetic(x, y, z)
    exact = [real("%.4f", value) for value in (x, y, z)]
    return ",".join([*exact, _shortened(real("%.12f", math.degrees(latitude)), 9),
                     _shortened(real("%.12f", math.degrees(longitude)), 9),
                     _shortened(real("%.4f", height), 3)])


def _shortened(text: str, decimals: int) -> str:
    """To so many decimals. Zero and what is no number have no sign: which one is chance."""
    if text.endswith("nan"):
        return "nan"
    if text.endswith("inf"):
        return text
    with localcontext() as context:
        context.prec = 400  # digits; more than the largest double has
        value = Decimal(text).quantize(Decimal(10) ** -decimals)
    return f"{value.copy_abs() if value.is_zero() else value:f}"
