// A position manager with everything around it that its tests look at and move.
#pragma once

#include "Framing/RecordFactory.h"
#include "LogObserver/PositionManager.h"
#include "LogObserver/ReceiverStatusObserver.h"
#include "Support/FakeClock.h"
#include "Support/LogSentences.h"
#include "Support/TemporaryFolder.h"
#include "platform/Config.h"
#include "platform/Published.h"
#include "platform/RemoteLogger.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

class CPositionManagerTesting : public testing::Test {
protected:
    CPositionManagerTesting() { m_published.Forget(); }

    void Offer(const Bytes::Sentence& sentence) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        m_manager.NewRecord(record.get());
    }
    void OfferSolution(std::uint16_t log, std::uint32_t type, std::uint32_t status = 0) {
        Offer(Sentences::Cartesian(log).u32(0, status).positionType(type).u8(105, 9));
    }
    void OfferPDPStat(std::uint32_t third, std::uint32_t fifth) {
        Offer(Sentences::Pdpstat().u32(8, third).u32(16, fifth));
    }
    /// Tells the receiver status observer the firmware.
    void SetFirmware(const std::string& softwareVersion) {
        Novatel::CNovatelVERSION::SComponent card;
        card.type = 1;
        card.softwareVersion = softwareVersion;
        const std::unique_ptr<CGPSRecord> record(
            CreateRecord(Sentences::Version().component(card)));
        m_receiverStatus.NewRecord(record.get());
    }

    nlohmann::json Last(const std::string& method) const {
        nlohmann::json last;
        for (const SLinkMessage& message : m_published.Messages()) {
            if (message.method == method) {
                last = nlohmann::json::parse("{" + message.members + "}");
            }
        }
        return last;
    }
    nlohmann::json Solution() const { return Last("position.ecef"); }
    std::vector<std::string> Status(const std::string& level, const std::string& key) const {
        return m_published.Texts("\"level\":\"" + level + "\",\"key\":\"" + key + "\"");
    }
    std::vector<std::string> Essential(const std::string& key) const {
        return Status("essential", key);
    }

    CFakeClock m_clock;
    CTemporaryFolder m_folder;
    CConfig m_config{m_folder.Path() + "/none.conf"};
    CPublished m_published;
    CRemoteLogger m_logger{"NovatelPositionManager"};
    CReceiverStatusObserver m_receiverStatus;
    CPositionManager m_manager{m_logger, m_config};
};
