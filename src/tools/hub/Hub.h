// The whole hub: its services, what listens to them, and the loop that serves them.
#pragma once

#include "hub/Settings.h"
#include "hub/gpsd/GPSDServer.h"
#include "hub/history/History.h"
#include "hub/history/Reader.h"
#include "hub/http/FrameMaker.h"
#include "hub/http/Frames.h"
#include "hub/http/WebServer.h"
#include "hub/mqtt/Publisher.h"
#include "hub/recording/Recorder.h"
#include "hub/services/Categories.h"
#include "hub/services/ServicesServer.h"
#include "hub/state/State.h"
#include "platform/SocketCollection.h"

#include <csignal>
#include <memory>
#include <string>
#include <vector>

namespace Hub {

class CHub {
public:
    explicit CHub(const SSettings& settings);

    /// Begins to serve. What cannot be served now is told and tried again while it runs; what can
    /// never be, since a setting is wrong, is returned as a text.
    std::string Start();
    /// Serves until the process is asked to end; only while it waits are signals let through that
    /// are not in `blocked`.
    void Run(const sigset_t& blocked);

private:
    SReply AnswerHistory(const std::string& what, const CWebServer::TParameters& parameters);
    void Pass(const sigset_t& blocked);
    void TellOpenDoors() const;

    const SSettings m_settings;
    SocketCollectionC m_sockets;
    CCategories m_categories;
    CState m_state;
    CFrames m_frames;
    CFrameMaker m_frameMaker;
    CGPSDServer m_gpsd;
    std::unique_ptr<CHistory> m_history; ///< null when none is kept
    CHistoryReader m_historyReader;
    CRecorder m_recorder;
    CMQTTPublisher m_mqtt;
    const std::vector<CHubObserver*> m_observers;
    CServicesServer m_services;
    CWebServer m_webServer; ///< its threads use what is above
};

} // namespace Hub
