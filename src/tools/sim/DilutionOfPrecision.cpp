#include "DilutionOfPrecision.h"

#include "platform/Maths.h"

#include <array>
#include <cmath>

namespace Sim {

namespace {

using Core::Maths::Radians;

/// East, north, up and time.
constexpr std::size_t kUnknowns = 4;
using Row = std::array<double, kUnknowns>;
using Matrix = std::array<Row, kUnknowns>;

/// Below this, what stands for a direction is rounding alone.
constexpr double kSmallestPivot = 1e-9;

Row RowOf(const SSatellite& satellite) {
    const double elevation = Radians(satellite.elevation);
    const double azimuth = Radians(satellite.azimuth);
    return {std::cos(elevation) * std::sin(azimuth), std::cos(elevation) * std::cos(azimuth),
            std::sin(elevation), 1.0};
}

/// By Gauss and Jordan, without pivoting: normal equations do not need it.
std::optional<Matrix> Inverse(Matrix matrix) {
    Matrix inverse{};
    for (std::size_t i = 0; i < kUnknowns; ++i) {
        inverse[i][i] = 1.0;
    }
    for (std::size_t i = 0; i < kUnknowns; ++i) {
        const double pivot = matrix[i][i];
        if (pivot < kSmallestPivot) {
            return std::nullopt;
        }
        for (std::size_t column = 0; column < kUnknowns; ++column) {
            matrix[i][column] /= pivot;
            inverse[i][column] /= pivot;
        }
        for (std::size_t row = 0; row < kUnknowns; ++row) {
            const double factor = row == i ? 0.0 : matrix[row][i];
            for (std::size_t column = 0; column < kUnknowns; ++column) {
                matrix[row][column] -= factor * matrix[i][column];
                inverse[row][column] -= factor * inverse[i][column];
            }
        }
    }
    return inverse;
}

} // namespace

std::optional<SDilution> DilutionOf(const std::vector<SSatellite>& satellites) {
    Matrix normal{};
    for (const SSatellite& satellite : satellites) {
        if (!satellite.isUsed) {
            continue;
        }
        const Row row = RowOf(satellite);
        for (std::size_t i = 0; i < kUnknowns; ++i) {
            for (std::size_t k = 0; k < kUnknowns; ++k) {
                normal[i][k] += row[i] * row[k];
            }
        }
    }
    const std::optional<Matrix> cofactors = Inverse(normal);
    if (!cofactors) {
        return std::nullopt;
    }
    const double horizontal = (*cofactors)[0][0] + (*cofactors)[1][1];
    const double vertical = (*cofactors)[2][2];
    const double time = (*cofactors)[3][3];
    return SDilution{.geometric = std::sqrt(horizontal + vertical + time),
                     .position = std::sqrt(horizontal + vertical),
                     .horizontal = std::sqrt(horizontal),
                     .vertical = std::sqrt(vertical),
                     .horizontalAndTime = std::sqrt(horizontal + time),
                     .time = std::sqrt(time)};
}

} // namespace Sim
