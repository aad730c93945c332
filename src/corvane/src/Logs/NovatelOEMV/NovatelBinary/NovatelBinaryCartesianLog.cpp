#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryCartesianLog.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

CNovatelBinaryCartesianLog::CNovatelBinaryCartesianLog(const Bytes::Sentence& sentenceData,
                                                       ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
}

void CNovatelBinaryCartesianLog::DecodeCartesianLog(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_positionStatus = body.UInt32(0);
    m_positionType = body.UInt32(4);
    m_x = body.Double(8);
    m_y = body.Double(16);
    m_z = body.Double(24);
    m_xStandardDeviation = body.Float(32);
    m_yStandardDeviation = body.Float(36);
    m_zStandardDeviation = body.Float(40);
    m_velocityStatus = body.UInt32(44);
    m_velocityType = body.UInt32(48);
    m_velocityX = body.Double(52);
    m_velocityY = body.Double(60);
    m_velocityZ = body.Double(68);
    m_velocityXStandardDeviation = body.Float(76);
    m_velocityYStandardDeviation = body.Float(80);
    m_velocityZStandardDeviation = body.Float(84);
    m_baseStationID = body.Characters(88, 4);
    m_velocityLatency = body.Float(92);
    m_differentialAge = body.Float(96);
    m_solutionAge = body.Float(100);
    m_satellitesTracked = body.UInt8(104);
    m_satellitesUsed = body.UInt8(105);
    m_satellitesUsedL1 = body.UInt8(106);
    m_satellitesUsedMultiFrequency = body.UInt8(107);
    m_reserved = body.UInt8(108);
    m_extendedSolutionStatus = body.UInt8(109);
    m_galileoBeiDouMask = body.UInt8(110);
    m_gpsGLONASSMask = body.UInt8(111);
}

} // namespace Novatel
