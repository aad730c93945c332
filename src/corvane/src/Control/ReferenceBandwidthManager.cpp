#include "Control/ReferenceBandwidthManager.h"

#include "Control/ChannelManager.h"
#include "Control/CommandManager.h"
#include "platform/Time.h"

#include <cmath>

namespace {

constexpr std::int32_t kNoLimit = 1000;
constexpr double kGlonassShare = 0.25;

} // namespace

ReferenceBandwidthManager::ReferenceBandwidthManager(CLogger& logger, CConfig& config,
                                                     const CCommandManager& commands,
                                                     ChannelManager* gps, ChannelManager* glonass)
    : m_logger(logger),
      m_config(config),
      m_commands(commands),
      m_gps(gps),
      m_glonass(glonass),
      m_bandwidthLimit(config.GetInteger("Corvane", "bandwidth_limit", 100'000)) {
}

void ReferenceBandwidthManager::Apply(std::int32_t gpsTotal, std::int32_t glonassTotal) {
    const std::int32_t max = MaxSatellites(m_commands.ReferenceFormat(), m_bandwidthLimit);
    const bool hasGlonass = m_commands.GlonassCorrections();
    std::int32_t gps = kNoLimit;
    std::int32_t glonass = kNoLimit;
    SplitSatellites(max, hasGlonass ? kGlonassShare : 0.0, gps, glonass);
    if (!hasGlonass) {
        glonass = kNoLimit;
    }
    m_logger.SetEssentialStatus("bandwidth_max_satellites", "%d,%d,%d", static_cast<int>(max),
                                static_cast<int>(gps), static_cast<int>(glonass));
    if (m_gps != nullptr && LimitChannels(*m_gps, gps, gpsTotal)) {
        m_logger.SetEssentialStatus("bandwidth_limited_gps_channels", "%d,%d,%d",
                                    static_cast<int>(gpsTotal), static_cast<int>(gps),
                                    static_cast<int>(m_gps->ActiveCount()));
    }
    // What the GPS channels cannot use goes to GLONASS.
    const std::int32_t spare = hasGlonass && gps > gpsTotal ? gps - gpsTotal : 0;
    if (m_glonass != nullptr && LimitChannels(*m_glonass, spare + glonass, glonassTotal)) {
        m_logger.SetEssentialStatus("bandwidth_limited_glonass_channels", "%d,%d,%d,%d",
                                    static_cast<int>(glonassTotal), static_cast<int>(glonass),
                                    static_cast<int>(spare),
                                    static_cast<int>(m_glonass->ActiveCount()));
    }
}

bool ReferenceBandwidthManager::LimitChannels(ChannelManager& manager, std::int32_t count,
                                              std::int32_t total) {
    return manager.Limit(Core::MonotonicTime::Now(), count, total);
}

/// An error, so that the change always reaches the log.
void ReferenceBandwidthManager::SetBandwidth(std::int32_t bytesPerSecond) {
    m_bandwidthLimit = bytesPerSecond;
    m_config.SetInteger("Corvane", "bandwidth_limit", bytesPerSecond);
    m_logger.Error("ReferenceBandwidthManager Set New Bandwidth %dBps",
                   static_cast<int>(bytesPerSecond));
}

/// The subtractions are the overheads of a format's messages, the factors what a satellite takes.
std::int32_t ReferenceBandwidthManager::MaxSatellites(const std::string& format,
                                                      std::int32_t bytesPerSecond) const {
    const double b = bytesPerSecond;
    double satellites = kNoLimit;
    if (format == "VARN1") {
        satellites = (b - 6 - 6 - 3.8 - 1.9 - 3.7) / 14 * 0.5;
    } else if (format == "CMR") {
        satellites = (b - 6 - 6 - 3.8 - 3.7) / 14 * 0.5;
    } else if (format == "RTCM3") {
        satellites = (b - 1.9 - 8 - 8) * 0.0625 * 0.5;
    }
    return static_cast<std::int32_t>(std::floor(satellites));
}

void ReferenceBandwidthManager::SplitSatellites(std::int32_t maxSatellites, double glonassShare,
                                                std::int32_t& gps, std::int32_t& glonass) const {
    glonass = static_cast<std::int32_t>(std::floor(maxSatellites * glonassShare));
    gps = maxSatellites - glonass;
}
