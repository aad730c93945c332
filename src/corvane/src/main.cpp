// The daemon's entry: settings, every object in its fixed order, the main loop, teardown.

#include "Framing/NMEASentenceConstructor.h"
#include "Framing/NovatelASCIISentenceConstructor.h"
#include "Framing/NovatelBinarySentenceConstructor.h"
#include "HandlerSettings.h"
#include "IO/FileHandler.h"
#include "IO/QuentaHandler.h"
#include "IO/ReplayHandler.h"
#include "IO/SerialHandler.h"
#include "LogObserver/DiagnosticsObserver.h"
#include "LogObserver/EpochFlusher.h"
#include "LogObserver/NMEALogObserver.h"
#include "LogObserver/PositionManager.h"
#include "LogObserver/ReceiverStatusObserver.h"
#include "LogObserver/ScreenDumpObserver.h"
#include "MainLoop.h"
#include "Port/PortHandler.h"
#include "platform/DebugPrint.h"
#include "platform/Process.h"
#include "platform/RemoteLogger.h"
#include "platform/ServiceLink.h"

#include <string_view>
#include <vector>

namespace {

using FramerList = Novatel::CPortHandler::FramerList;
using ObserverList = Novatel::CPortHandler::ObserverList;

constexpr int kFailure = -1;
constexpr int kRealTimePriority = 49;
constexpr int kRealTimeClass = 1;
/// The multiplexer's port on which the receiver's diagnostic port is read.
constexpr char kDiagnosticPort[] = "52";
constexpr std::int32_t kDiagnosticReadSize = 4096;

bool IsHelpWanted(int argc, char* const argv[]) {
    return argc == 2 &&
           (argv[1] == std::string_view("-h") || argv[1] == std::string_view("--help"));
}

/// Null for a type that does not exist.
CInputOutputHandler* NewByteSource(std::int32_t ioType) {
    switch (ioType) {
    case HandlerSettings::rawFile:
        return new CFileHandler;
    case HandlerSettings::serialPort:
        return new CSerialHandler;
    case HandlerSettings::replay:
        return new CReplayHandler;
    case HandlerSettings::portMultiplexer:
        return new CQuentaHandler;
    default:
        return nullptr;
    }
}

void SetUpMainSource(CInputOutputHandler& source, const HandlerSettings& settings) {
    source.SetBaudRate(settings.BaudRate());
    source.SetReadSize(settings.ReadSize());
    source.SetDevice(settings.Device());
}

CInputOutputHandler* NewDiagnosticSource() {
    CInputOutputHandler* const source = new CQuentaHandler;
    source->SetDevice(kDiagnosticPort);
    source->SetReadSize(kDiagnosticReadSize);
    source->Open();
    return source;
}

FramerList NewFramers() {
    return {new Novatel::CNovatelBinarySentenceConstructor,
            new Novatel::CNovatelASCIISentenceConstructor, new CNMEASentenceConstructor};
}

template <typename T>
void DeleteAll(std::vector<T*>& objects) {
    for (T* object : objects) {
        delete object;
    }
    objects.clear();
}

/// Wires everything up, runs the loop and takes down what holds a resource. The port handlers, the
/// socket collection and the logger are left to the end of the process, which follows at once.
int RunDaemon(const HandlerSettings& settings) {
    CInputOutputHandler* const mainSource = NewByteSource(settings.IOType());
    if (mainSource == nullptr) {
        deprintf("Unrecognised I/O type. Exiting\n");
        return kFailure;
    }
    auto* const logger = new CRemoteLogger("NovatelPositionManager");
    SetUpMainSource(*mainSource, settings);
    CInputOutputHandler* const diagnosticSource = NewDiagnosticSource();
    FramerList mainFramers = NewFramers();
    FramerList diagnosticFramers = NewFramers();

    auto* const receiverStatus = new CReceiverStatusObserver;
    auto* const positionManager = new CPositionManager(*logger, settings.Config());
    positionManager->SetReceiverStatus(receiverStatus);
    positionManager->SetReferenceManager(new ReferenceManagerAPI);
    auto* const epochFlusher = new EpochFlusher;
    ObserverList observers{receiverStatus, positionManager, new CNMEALogObserver(*receiverStatus),
                           new CDiagnosticsObserver, epochFlusher};
    if (settings.DisplayPackets()) {
        observers.push_back(new CScreenDumpObserver);
    }

    auto* const diagnosticHandler =
        new Novatel::CPortHandler("NovatelPortHandler2", settings.Config());
    diagnosticHandler->SetByteSource(diagnosticSource);
    diagnosticHandler->SetFramers(&diagnosticFramers);
    diagnosticHandler->SetObservers(&observers);
    auto* const mainHandler = new Novatel::CPortHandler("NovatelPortHandler", settings.Config());
    mainHandler->SetByteSource(mainSource);
    mainHandler->SetFramers(&mainFramers);
    mainHandler->SetObservers(&observers);
    epochFlusher->SetPortHandler(mainHandler);
    const std::vector<Novatel::CPortHandler*> portHandlers{diagnosticHandler, mainHandler};

    auto* const sockets = new SocketCollectionC;
    sockets->Add(&ServiceLink::Socket());
    mainHandler->Start();
    logger->SetIdleParameters(settings.Config().GetDouble("Corvane", "idle_delay_threshold", 0.0));
    if (settings.IsRawFile() || settings.IsReplay()) {
        ServiceLink::BeginOfflineRun();
    }
    CMainLoop(portHandlers, *sockets, *logger).Run();

    DeleteAll(diagnosticFramers);
    DeleteAll(mainFramers);
    DeleteAll(observers);
    delete mainSource;
    delete diagnosticSource;
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
    Core::Utilities::PrepareProcess();
    Core::Utilities::CrashHandler::Get().Enable("corvane");
    CConfig* const config = CConfig::GetSystemConfig();
    HandlerSettings settings(*config);
    if (IsHelpWanted(argc, argv)) {
        PrintUsage(argv[0]);
        return 0;
    }
    if (!settings.ParseOptions(argc, argv)) {
        return kFailure;
    }
    if (settings.ElevatePriority() &&
        Core::Utilities::SetProcessPriority(kRealTimePriority, kRealTimeClass) == 0) {
        deprintf("Unable to set process priority\n");
        return kFailure;
    }
    ServiceLink::SetProgram("corvane");
    const int status = RunDaemon(settings);
    config->Release();
    ServiceLink::Finish();
    return status;
}
