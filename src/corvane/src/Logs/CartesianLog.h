// A navigation solution in Cartesian coordinates, whatever receiver it comes from.
#pragma once

#include "Logs/GPSRecord.h"

#include <string>

/// Positions are Earth-centred Earth-fixed in metres, velocities in metres per second, ages in
/// seconds. Statuses, types and masks are the receiver's own numbers.
class CCartesianLog : public virtual CGPSRecord {
public:
    std::uint32_t GetPositionStatus() const { return m_positionStatus; }
    std::uint32_t GetPositionType() const { return m_positionType; }
    double GetX() const { return m_x; }
    double GetY() const { return m_y; }
    double GetZ() const { return m_z; }
    float GetXStandardDeviation() const { return m_xStandardDeviation; }
    float GetYStandardDeviation() const { return m_yStandardDeviation; }
    float GetZStandardDeviation() const { return m_zStandardDeviation; }

    std::uint32_t GetVelocityStatus() const { return m_velocityStatus; }
    std::uint32_t GetVelocityType() const { return m_velocityType; }
    double GetVelocityX() const { return m_velocityX; }
    double GetVelocityY() const { return m_velocityY; }
    double GetVelocityZ() const { return m_velocityZ; }
    float GetVelocityXStandardDeviation() const { return m_velocityXStandardDeviation; }
    float GetVelocityYStandardDeviation() const { return m_velocityYStandardDeviation; }
    float GetVelocityZStandardDeviation() const { return m_velocityZStandardDeviation; }

    /// Four bytes, zero bytes included, or empty when the sentence ends before them.
    const std::string& GetBaseStationID() const { return m_baseStationID; }
    float GetVelocityLatency() const { return m_velocityLatency; }
    float GetDifferentialAge() const { return m_differentialAge; }
    float GetSolutionAge() const { return m_solutionAge; }

    std::uint8_t GetSatellitesTracked() const { return m_satellitesTracked; }
    std::uint8_t GetSatellitesUsed() const { return m_satellitesUsed; }
    std::uint8_t GetSatellitesUsedL1() const { return m_satellitesUsedL1; }
    std::uint8_t GetSatellitesUsedMultiFrequency() const { return m_satellitesUsedMultiFrequency; }
    std::uint8_t GetReserved() const { return m_reserved; }
    std::uint8_t GetExtendedSolutionStatus() const { return m_extendedSolutionStatus; }
    std::uint8_t GetGalileoBeiDouMask() const { return m_galileoBeiDouMask; }
    std::uint8_t GetGPSGLONASSMask() const { return m_gpsGLONASSMask; }

protected:
    CCartesianLog() = default;

    std::uint32_t m_positionStatus = 0;
    std::uint32_t m_positionType = 0;
    double m_x = 0;
    double m_y = 0;
    double m_z = 0;
    float m_xStandardDeviation = 0;
    float m_yStandardDeviation = 0;
    float m_zStandardDeviation = 0;
    std::uint32_t m_velocityStatus = 0;
    std::uint32_t m_velocityType = 0;
    double m_velocityX = 0;
    double m_velocityY = 0;
    double m_velocityZ = 0;
    float m_velocityXStandardDeviation = 0;
    float m_velocityYStandardDeviation = 0;
    float m_velocityZStandardDeviation = 0;
    std::string m_baseStationID;
    float m_velocityLatency = 0;
    float m_differentialAge = 0;
    float m_solutionAge = 0;
    std::uint8_t m_satellitesTracked = 0;
    std::uint8_t m_satellitesUsed = 0;
    std::uint8_t m_satellitesUsedL1 = 0;
    std::uint8_t m_satellitesUsedMultiFrequency = 0;
    std::uint8_t m_reserved = 0;
    std::uint8_t m_extendedSolutionStatus = 0;
    std::uint8_t m_galileoBeiDouMask = 0;
    std::uint8_t m_gpsGLONASSMask = 0;
};
