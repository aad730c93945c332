// An upgrade with its receiver, its firmware file and its clock in the hands of a test.
#pragma once

#include "Control/SoftloadManager.h"
#include "Framing/RecordFactory.h"
#include "Support/FakeByteSource.h"
#include "Support/FakeClock.h"
#include "Support/LogSentences.h"
#include "Support/TemporaryFolder.h"
#include "Support/TextSentences.h"
#include "platform/Published.h"
#include "platform/RemoteLogger.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

class CSoftloadTesting : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    CSoftloadTesting() { m_published.Forget(); }

    void Offer(const Bytes::Sentence& sentence) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        ASSERT_NE(record, nullptr);
        m_manager.NewRecord(record.get());
    }
    /// The receiver's soft-load status.
    void Report(const std::string& status) {
        Offer(Sentences::AsciiLog("SOFTLOADSTATUSA", status));
    }

    bool Start(const std::string& path) { return m_manager.StartUpgrade(path); }
    /// An upgrade whose receiver is ready for the file; what led there is forgotten.
    void StartLoading(const std::string& bytes, const std::string& status = "READY_FOR_DATA") {
        ASSERT_TRUE(Start(m_folder.Write("firmware", bytes)));
        Report(status);
        Forget();
    }
    /// An upgrade that waits for the receiver.
    void StartWaiting() {
        ASSERT_TRUE(Start(m_folder.Write("firmware", "S0\nS1\n")));
        Forget();
    }
    /// What the receiver's status makes of a fresh upgrade.
    void StartAgainWith(const std::string& status) {
        ASSERT_TRUE(Start(m_folder.Write("firmware", "S0\nS1\n")));
        Forget();
        Report(status);
    }
    void Forget() {
        m_source.done.clear();
        m_published.Forget();
    }

    std::int32_t Service() { return m_manager.Service(Core::MonotonicTime::Now()); }
    /// A pass as soon as a burst is allowed.
    std::int32_t ServiceLater() {
        m_clock.Advance(Core::Time::FromMilliseconds(80));
        return Service();
    }
    /// What is done to the source by `step`.
    template <class TStep>
    Lines Done(const TStep& step) {
        m_source.done.clear();
        step();
        return m_source.done;
    }
    Lines DoneByService() {
        return Done([this] { Service(); });
    }
    Lines DoneByServiceLater() {
        return Done([this] { ServiceLater(); });
    }

    /// Every event since it was last forgotten, as "error: text".
    Lines Events() const {
        Lines events;
        for (const SLinkMessage& message : m_published.Messages()) {
            if (message.method == std::string("logger.event")) {
                const auto event = nlohmann::json::parse("{" + message.members + "}");
                events.push_back(event["level"].get<std::string>() + ": " +
                                 event["text"].get<std::string>());
            }
        }
        return events;
    }
    Lines Status(const std::string& key) const {
        return m_published.Texts("\"level\":\"essential\",\"key\":\"" + key + "\"");
    }
    /// "ended percent result".
    std::string Progress() const {
        bool ended = false;
        std::int32_t percent = -1;
        const bool result = m_manager.GetProgress(ended, percent);
        return std::string(ended ? "ended " : "going on ") + std::to_string(percent) +
               (result ? " well" : " badly");
    }

    static std::string Written(const std::string& line) {
        return "write SOFTLOADSREC \"" + line + "\"\r\n";
    }
    static inline const std::string kCommit = "write SOFTLOADCOMMIT\r\n";
    static inline const std::string kReset = "write FRESET\r\n";

    CFakeClock m_clock;
    CTemporaryFolder m_folder;
    CPublished m_published;
    CRemoteLogger m_logger{"Logger"};
    CFakeByteSource m_source;
    SoftloadManager m_manager{&m_source, m_logger};
};
