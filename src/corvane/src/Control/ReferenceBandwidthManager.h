// Keeps a reference station's corrections within the bandwidth of its data link.
#pragma once

#include "platform/Config.h"
#include "platform/Logger.h"

#include <cstdint>
#include <string>

class CCommandManager;
class ChannelManager;

/// Turns the bandwidth limit into a number of satellites and has the channel managers track no
/// more. Complete, but nobody creates one: the reference output is dormant.
class ReferenceBandwidthManager {
public:
    /// Reads "bandwidth_limit" (bytes per second, default 100000) from section "Corvane". Nothing
    /// is owned; either channel manager may be null.
    ReferenceBandwidthManager(CLogger& logger, CConfig& config, const CCommandManager& commands,
                              ChannelManager* gps, ChannelManager* glonass);
    virtual ~ReferenceBandwidthManager() = default;

    /// Decides for a receiver with so many channels of each system, and publishes it.
    virtual void Apply(std::int32_t gpsTotal, std::int32_t glonassTotal);
    /// Whether that changed any channel.
    virtual bool LimitChannels(ChannelManager& manager, std::int32_t count, std::int32_t total);
    /// From now on and in the settings; bytes per second.
    virtual void SetBandwidth(std::int32_t bytesPerSecond);
    /// How many satellites a format's messages, one of each a second, leave room for; 1000 for a
    /// format without limit, negative when not even their overhead fits.
    virtual std::int32_t MaxSatellites(const std::string& format,
                                       std::int32_t bytesPerSecond) const;
    virtual void SplitSatellites(std::int32_t maxSatellites, double glonassShare, std::int32_t& gps,
                                 std::int32_t& glonass) const;

private:
    CLogger& m_logger;
    CConfig& m_config;
    const CCommandManager& m_commands;
    ChannelManager* m_gps;
    ChannelManager* m_glonass;
    std::int32_t m_bandwidthLimit;
};
