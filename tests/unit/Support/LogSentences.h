// Builds the sentences of the receiver's logs in the logs' own words: Bestpos().undulation(-29.2f).
#pragma once

#include "Logs/NovatelOEMV/NovatelCHANCONFIGLIST.h"
#include "Logs/NovatelOEMV/NovatelCOMCONFIG.h"
#include "Logs/NovatelOEMV/NovatelRANGE.h"
#include "Logs/NovatelOEMV/NovatelRXSTATUS.h"
#include "Logs/NovatelOEMV/NovatelSatsLog.h"
#include "Logs/NovatelOEMV/NovatelTRACKSTAT.h"
#include "Logs/NovatelOEMV/NovatelVERSION.h"
#include "Support/BinarySentence.h"

namespace Sentences {

class Bestpos : public CBinarySentence<Bestpos> {
public:
    Bestpos() : CBinarySentence(42) { bodySize(72); }
    Bestpos& undulation(float metres) { return f32(32, metres); }
    Bestpos& extendedStatus(std::uint8_t value) { return u8(69, value); }
    Bestpos& gpsGlonassMask(std::uint8_t value) { return u8(71, value); }
};

/// BESTXYZ 241, PSRXYZ 243, RTKXYZ 244, PDPXYZ 471.
class Cartesian : public CBinarySentence<Cartesian> {
public:
    explicit Cartesian(std::uint16_t logID) : CBinarySentence(logID) { bodySize(112); }
    Cartesian& position(double x, double y, double z) { return f64(8, x).f64(16, y).f64(24, z); }
    Cartesian& positionType(std::uint32_t value) { return u32(4, value); }
    Cartesian& stationID(std::string_view fourCharacters) { return text(88, fourCharacters); }
};

class Omnihppos : public CBinarySentence<Omnihppos> {
public:
    Omnihppos() : CBinarySentence(495) { bodySize(72); }
    Omnihppos& latitude(double degrees) { return f64(8, degrees); }
    Omnihppos& stationID(std::string_view fourCharacters) { return text(52, fourCharacters); }
};

class Pdpstat : public CBinarySentence<Pdpstat> {
public:
    Pdpstat() : CBinarySentence(1085) { bodySize(44); }
};

class Refstation : public CBinarySentence<Refstation> {
public:
    Refstation() : CBinarySentence(175) { bodySize(44); }
    Refstation& stationID(std::string_view characters) { return text(36, characters); }
};

class Time : public CBinarySentence<Time> {
public:
    Time() : CBinarySentence(101) { bodySize(44); }
};

/// A log of equal blocks whose number stands at `countOffset`; the blocks follow it.
template <class TSelf>
class CListSentence : public CBinarySentence<TSelf> {
public:
    CListSentence(std::uint16_t logID, std::size_t countOffset, std::size_t blockSize)
        : CBinarySentence<TSelf>(logID), m_countOffset(countOffset), m_blockSize(blockSize) {
        announcing(0);
    }
    /// Instead of the true number of blocks; to be said last.
    TSelf& announcing(std::uint32_t count) { return this->u32(m_countOffset, count); }

protected:
    /// The body offset of one more block, zeroed and counted.
    std::size_t NewBlock() {
        const std::size_t offset = m_countOffset + 4 + m_blockSize * m_count;
        this->bodySize(offset + m_blockSize);
        announcing(++m_count);
        return offset;
    }

private:
    std::size_t m_countOffset;
    std::size_t m_blockSize;
    std::uint32_t m_count = 0;
};

class Range : public CListSentence<Range> {
public:
    Range() : CListSentence(43, 0, 44) {}
    Range& observation(const Novatel::CNovatelRANGE::SObservation& value) {
        const std::size_t at = NewBlock();
        return u16(at, value.prn)
            .u16(at + 2, value.glonassFrequency)
            .f64(at + 4, value.pseudorange)
            .f32(at + 12, value.pseudorangeDeviation)
            .f64(at + 16, value.carrierPhase)
            .f32(at + 24, value.carrierPhaseDeviation)
            .f32(at + 28, value.doppler)
            .f32(at + 32, value.carrierToNoise)
            .f32(at + 36, value.lockTime)
            .u32(at + 40, value.trackingStatus);
    }
};

class Trackstat : public CListSentence<Trackstat> {
public:
    Trackstat() : CListSentence(83, 12, 40) {}
    Trackstat& solutionStatus(std::uint32_t value) { return u32(0, value); }
    Trackstat& positionType(std::uint32_t value) { return u32(4, value); }
    Trackstat& elevationCutOff(float degrees) { return f32(8, degrees); }
    Trackstat& channel(const Novatel::CNovatelTRACKSTAT::SChannel& value) {
        const std::size_t at = NewBlock();
        return u16(at, value.prn)
            .u16(at + 2, value.glonassFrequency)
            .u32(at + 4, value.trackingStatus)
            .f64(at + 8, value.pseudorange)
            .f32(at + 16, value.doppler)
            .f32(at + 20, value.carrierToNoise)
            .f32(at + 24, value.lockTime)
            .f32(at + 28, value.pseudorangeResidual)
            .u32(at + 32, value.rejectCode)
            .f32(at + 36, value.pseudorangeWeight);
    }
};

class Psrdop : public CListSentence<Psrdop> {
public:
    Psrdop() : CListSentence(174, 24, 4) {}
    Psrdop& prn(std::uint32_t value) { return u32(NewBlock(), value); }
};

/// PSRSATS 1162, RTKSATS 1174, PDPSATS 1234.
class Sats : public CListSentence<Sats> {
public:
    explicit Sats(std::uint16_t logID) : CListSentence(logID, 0, 16) {}
    Sats& satellite(const Novatel::CNovatelSatsLog::SSatellite& value) {
        const std::size_t at = NewBlock();
        return u32(at, value.system)
            .u16(at + 4, static_cast<std::uint16_t>(value.id))
            .u16(at + 6, static_cast<std::uint16_t>(value.glonassFrequency))
            .u32(at + 8, value.status)
            .u32(at + 12, value.signalMask);
    }
};

class Rxstatus : public CListSentence<Rxstatus> {
public:
    Rxstatus() : CListSentence(93, 4, 16) {}
    Rxstatus& errorWord(std::uint32_t value) { return u32(0, value); }
    Rxstatus& status(const Novatel::CNovatelRXSTATUS::SStatus& value) {
        const std::size_t at = NewBlock();
        return u32(at, value.status)
            .u32(at + 4, value.priorityMask)
            .u32(at + 8, value.eventSetMask)
            .u32(at + 12, value.eventClearMask);
    }
};

class Version : public CListSentence<Version> {
public:
    Version() : CListSentence(37, 0, 108) {}
    Version& component(const Novatel::CNovatelVERSION::SComponent& value) {
        const std::size_t at = NewBlock();
        return u32(at, value.type)
            .text(at + 4, value.model)
            .text(at + 20, value.serialNumber)
            .text(at + 36, value.hardwareVersion)
            .text(at + 52, value.softwareVersion)
            .text(at + 68, value.bootVersion)
            .text(at + 84, value.compileDate)
            .text(at + 96, value.compileTime);
    }
};

class Comconfig : public CListSentence<Comconfig> {
public:
    Comconfig() : CListSentence(317, 0, 44) {}
    Comconfig& port(const Novatel::CNovatelCOMCONFIG::SPort& value) {
        const std::size_t at = NewBlock();
        return u32(at, value.port)
            .u32(at + 4, value.baudRate)
            .u32(at + 8, value.parity)
            .u32(at + 12, value.dataBits)
            .u32(at + 16, value.stopBits)
            .u32(at + 20, value.handshaking)
            .u32(at + 24, value.echo ? 1 : 0)
            .u32(at + 28, value.breakDetection ? 1 : 0)
            .u32(at + 32, value.receiveMode)
            .u32(at + 36, value.transmitMode)
            .u32(at + 40, value.responses ? 1 : 0);
    }
};

class Chanconfiglist : public CBinarySentence<Chanconfiglist> {
public:
    Chanconfiglist() : CBinarySentence(1148) { bodySize(8); }
    Chanconfiglist& inUse(std::uint32_t value) { return u32(0, value); }
    Chanconfiglist& set(const std::vector<Novatel::CNovatelCHANCONFIGLIST::SSignal>& signals) {
        u32(BodySize(), static_cast<std::uint32_t>(signals.size()));
        for (const auto& signal : signals) {
            u32(BodySize(), signal.numberOfChannels);
            u32(BodySize(), signal.signalType);
        }
        return announcing(++m_sets);
    }
    /// Instead of the true number of sets; to be said last.
    Chanconfiglist& announcing(std::uint32_t sets) { return u32(4, sets); }

private:
    std::uint32_t m_sets = 0;
};

/// The answer to the command `commandID`.
class Response : public CBinarySentence<Response> {
public:
    explicit Response(std::uint16_t commandID) : CBinarySentence(commandID) {
        messageType(0x80).bodySize(4);
    }
    Response& responseID(std::uint32_t value) { return u32(0, value); }
    Response& responseText(std::string_view value) { return text(4, value); }
};

} // namespace Sentences
