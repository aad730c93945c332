#include "platform/ServiceLink.h"

#include "HubLink.h"

void ServiceLink::SetProgram(const std::string& program) {
    CHubLink::Get().SetProgram(program);
}

SocketC& ServiceLink::Socket() {
    return CHubLink::Get();
}

void ServiceLink::BeginOfflineRun() {
    CHubLink::Get().BeginOfflineRun();
}

void ServiceLink::Finish() {
    CHubLink::Get().Finish();
}
