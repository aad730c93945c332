#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryGeodeticLog.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

CNovatelBinaryGeodeticLog::CNovatelBinaryGeodeticLog(const Bytes::Sentence& sentenceData,
                                                     ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
}

void CNovatelBinaryGeodeticLog::DecodeGeodeticLog(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_solutionStatus = body.UInt32(0);
    m_positionType = body.UInt32(4);
    m_latitude = body.Double(8);
    m_longitude = body.Double(16);
    m_height = body.Double(24);
    m_undulation = body.Float(32);
    m_datumID = body.UInt32(36);
    m_latitudeStandardDeviation = body.Float(40);
    m_longitudeStandardDeviation = body.Float(44);
    m_heightStandardDeviation = body.Float(48);
    m_baseStationID = body.Characters(52, 4);
    m_differentialAge = body.Float(56);
    m_solutionAge = body.Float(60);
    m_satellitesTracked = body.UInt8(64);
    m_satellitesUsed = body.UInt8(65);
    m_satellitesUsedL1 = body.UInt8(66);
    m_satellitesUsedMultiFrequency = body.UInt8(67);
    m_reserved = body.UInt8(68);
    m_extendedSolutionStatus = body.UInt8(69);
    m_galileoBeiDouMask = body.UInt8(70);
    m_gpsGLONASSMask = body.UInt8(71);
}

} // namespace Novatel
