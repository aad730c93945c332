// The daemon's entry: settings, every object in its fixed order, the main loop, teardown.

#include "Control/CommandManager.h"
#include "Control/ConstellationManager.h"
#include "Control/SoftloadManager.h"
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
#include "LogObserver/PDPFilterResetter.h"
#include "LogObserver/PositionManager.h"
#include "LogObserver/ReceiverStatusObserver.h"
#include "LogObserver/ScreenDumpObserver.h"
#include "MainLoop.h"
#include "Port/BreakoutController.h"
#include "Port/PortHandler.h"
#include "RPC/NovatelMPIServer.h"
#include "platform/DebugPrint.h"
#include "platform/Process.h"
#include "platform/RemoteLogger.h"
#include "platform/ServiceLink.h"

#include <string>
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
constexpr int kRPCBacklog = 5;

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

/// What steers the receiver, and what is known of it.
struct SControl {
    CReceiverStatusObserver* receiverStatus;
    CCommandManager* commands;
    SoftloadManager* upgrade;
    BreakoutController* breakout;
};

/// The command list comes from a file, when one is named, or from the settings.
CCommandManager* NewCommandManager(const HandlerSettings& settings, CInputOutputHandler& source,
                                   CConstellationManager& constellation, CLogger& logger) {
    auto* const commands = new CCommandManager(settings.Config());
    commands->SetByteSource(&source);
    commands->SetConstellationManager(&constellation);
    if (!commands->LoadConfigurationFile(settings.ConfigurationFile())) {
        deprintf("Cannot read the receiver's configuration: %s\n", commands->LastError().c_str());
        logger.Error("Cannot read the receiver's configuration: %s", commands->LastError().c_str());
    }
    return commands;
}

/// Makes the observers in the order in which they are offered each record.
SControl NewObservers(const HandlerSettings& settings, CInputOutputHandler& source, CLogger& logger,
                      EpochFlusher* epochFlusher, ObserverList& observers) {
    auto* const receiverStatus = new CReceiverStatusObserver;
    auto* const constellation = new CConstellationManager;
    auto* const positionManager = new CPositionManager(logger, settings.Config());
    positionManager->SetReceiverStatus(receiverStatus);
    positionManager->SetReferenceManager(new ReferenceManagerAPI);
    observers = {receiverStatus,           positionManager, new CNMEALogObserver(*receiverStatus),
                 new CDiagnosticsObserver, constellation,   epochFlusher};
    if (settings.DisplayPackets()) {
        observers.push_back(new CScreenDumpObserver);
    }
    auto* const commands = NewCommandManager(settings, source, *constellation, logger);
    observers.push_back(commands);
    if (settings.PDPFilterReset()) {
        observers.push_back(new PDPFilterResetter(*commands));
    }
    auto* const upgrade = new SoftloadManager(&source, logger);
    observers.push_back(upgrade);
    auto* const breakout = new BreakoutController(source, settings.BreakoutMode());
    breakout->SetBaudRate(settings.BaudRate());
    return {receiverStatus, commands, upgrade, breakout};
}

Novatel::CPortHandler* NewPortHandler(const std::string& name, const HandlerSettings& settings,
                                      CInputOutputHandler* source, const FramerList& framers,
                                      const ObserverList& observers, SoftloadManager* upgrade) {
    auto* const handler = new Novatel::CPortHandler(name, settings.Config());
    handler->SetByteSource(source);
    handler->SetFramers(&framers);
    handler->SetObservers(&observers);
    handler->SetUpgradeManager(upgrade);
    return handler;
}

CNovatelMPIServer* NewRPCServer(CConfig& config, SocketCollectionC& sockets,
                                const SControl& control, CLogger& logger) {
    auto* const server =
        new CNovatelMPIServer(sockets, control.commands, control.upgrade, control.receiverStatus);
    const auto report = [&logger](const std::string& failure) {
        deprintf("RPC service: %s\n", failure.c_str());
        logger.Error("RPC service: %s", failure.c_str());
    };
    server->StartServer(config.GetString("platform", "rpc_listen", "127.0.0.1"),
                        CNovatelMPIServer::kPort, kRPCBacklog, report);
    sockets.Add(server);
    return server;
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
    ObserverList observers;
    auto* const epochFlusher = new EpochFlusher;
    const SControl control = NewObservers(settings, *mainSource, *logger, epochFlusher, observers);

    auto* const diagnosticHandler =
        NewPortHandler("NovatelPortHandler2", settings, diagnosticSource, diagnosticFramers,
                       observers, control.upgrade);
    diagnosticHandler->SetPrimary(false);
    auto* const mainHandler = NewPortHandler("NovatelPortHandler", settings, mainSource,
                                             mainFramers, observers, control.upgrade);
    mainHandler->SetCommandManager(control.commands);
    mainHandler->SetBreakoutController(control.breakout);
    epochFlusher->SetPortHandler(mainHandler);
    const std::vector<Novatel::CPortHandler*> portHandlers{diagnosticHandler, mainHandler};

    auto* const sockets = new SocketCollectionC;
    sockets->Add(&ServiceLink::Socket());
    MPISocketServerC* const rpcServer = NewRPCServer(settings.Config(), *sockets, control, *logger);
    mainHandler->Start();
    logger->SetIdleParameters(settings.Config().GetDouble("Corvane", "idle_delay_threshold", 0.0));
    if (settings.IsRawFile() || settings.IsReplay()) {
        ServiceLink::BeginOfflineRun();
    }
    CMainLoop(portHandlers, *sockets, *rpcServer, *logger).Run();

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
