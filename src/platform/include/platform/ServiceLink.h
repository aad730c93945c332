// The process's one connection to the services of the controller, as its main loop sees it.
#pragma once

#include "platform/SocketCollection.h"
#include "platform/Time.h"

#include <string>

namespace ServiceLink {

/// Where the services listen.
inline constexpr int kPort = 10001;

/// Names the program to the services. To be called once, before anything is published.
void SetProgram(const std::string& program);

/// The link as a member of the main loop's socket collection.
SocketC& Socket();

/// For a run that ends with its input, so that nothing of it is lost: waits for the outcome of the
/// first connect, at most one second, and lets publishing wait when the link is full. Services
/// that take nothing for ten seconds are treated as gone, and not waited for again.
void BeginOfflineRun();

/// Before a normal end of the process: flushes standard output, then waits up to two seconds for
/// what is left to leave, but only while connected.
void Finish();

} // namespace ServiceLink
