// Answers the questions about the history that come over HTTP.
#pragma once

#include "hub/Reply.h"
#include "hub/history/Arguments.h"
#include "hub/history/Database.h"

#include <mutex>
#include <string>

namespace Hub {

/// Reads the database that CHistory writes, over a connection of its own. Any number of threads
/// may ask.
class CHistoryReader {
public:
    explicit CHistoryReader(const std::string& path) : m_path(path) {}

    /// `what` is the path behind "/api/history/".
    SReply Answer(const std::string& what, const TQuery& query);

private:
    std::string Prepare();

    const std::string m_path;
    std::mutex m_mutex;
    CDatabase m_database;
};

} // namespace Hub
