// A port handler with the three framers, a byte source, a clock and a hub of a test's own.
#pragma once

#include "Framing/NMEASentenceConstructor.h"
#include "Framing/NovatelASCIISentenceConstructor.h"
#include "Framing/NovatelBinarySentenceConstructor.h"
#include "Logs/GPSRecord.h"
#include "Port/PortHandler.h"
#include "Support/FakeByteSource.h"
#include "Support/FakeClock.h"
#include "Support/LogSentences.h"
#include "Support/TemporaryFolder.h"
#include "Support/TextSentences.h"
#include "platform/Published.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Keeps the identifiers of the records it was offered.
class CRecordingObserver : public CLogObserver {
public:
    void NewRecord(CGPSRecord* record) override { messageIDs.push_back(record->GetMessageID()); }

    std::vector<int> messageIDs;
};

class PortHandler : public testing::Test {
protected:
    explicit PortHandler(const std::string& configuration = "")
        : m_config(m_folder.Write("corvane.conf", configuration)), m_handler("Port", m_config) {
        m_handler.SetByteSource(&m_source);
        m_handler.SetFramers(&m_framers);
        m_handler.SetObservers(&m_observers);
    }

    template <class TBytes>
    bool Receive(const TBytes& bytes) {
        m_source.Bring(bytes);
        return m_handler.HandlePort(true);
    }

    void Pass(double seconds) {
        m_clock.Advance(Core::Time::FromSeconds(seconds));
        m_handler.HandlePort(false);
    }

    std::vector<std::string> Status(const std::string& key) const {
        return m_published.Texts("\"level\":\"essential\",\"key\":\"" + key + "\"");
    }
    int Events(const std::string& text) const {
        return m_published.Count("\"level\":\"error\",\"text\":\"" + text + "\"");
    }

    CFakeClock m_clock;
    CTemporaryFolder m_folder;
    CConfig m_config;
    CPublished m_published;
    CFakeByteSource m_source;
    Novatel::CNovatelBinarySentenceConstructor m_binary;
    Novatel::CNovatelASCIISentenceConstructor m_ascii;
    CNMEASentenceConstructor m_nmea;
    Novatel::CPortHandler::FramerList m_framers{&m_binary, &m_ascii, &m_nmea};
    CRecordingObserver m_observer;
    Novatel::CPortHandler::ObserverList m_observers{&m_observer};
    Novatel::CPortHandler m_handler;
};
