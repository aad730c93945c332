// A navigation solution in geodetic coordinates, whatever receiver it comes from.
#pragma once

#include "Logs/GPSRecord.h"

#include <string>

/// Latitude and longitude are in degrees, heights and deviations in metres, ages in seconds.
/// Statuses, types and masks are the receiver's own numbers.
class CGeodeticLog : public virtual CGPSRecord {
public:
    std::uint32_t GetSolutionStatus() const { return m_solutionStatus; }
    std::uint32_t GetPositionType() const { return m_positionType; }
    double GetLatitude() const { return m_latitude; }
    double GetLongitude() const { return m_longitude; }
    /// Above mean sea level.
    double GetHeight() const { return m_height; }
    /// The geoid's height above the ellipsoid.
    float GetUndulation() const { return m_undulation; }
    std::uint32_t GetDatumID() const { return m_datumID; }
    float GetLatitudeStandardDeviation() const { return m_latitudeStandardDeviation; }
    float GetLongitudeStandardDeviation() const { return m_longitudeStandardDeviation; }
    float GetHeightStandardDeviation() const { return m_heightStandardDeviation; }

    /// Four bytes, zero bytes included, or empty when the sentence ends before them.
    const std::string& GetBaseStationID() const { return m_baseStationID; }
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
    CGeodeticLog() = default;

    std::uint32_t m_solutionStatus = 0;
    std::uint32_t m_positionType = 0;
    double m_latitude = 0;
    double m_longitude = 0;
    double m_height = 0;
    float m_undulation = 0;
    std::uint32_t m_datumID = 0;
    float m_latitudeStandardDeviation = 0;
    float m_longitudeStandardDeviation = 0;
    float m_heightStandardDeviation = 0;
    std::string m_baseStationID;
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
