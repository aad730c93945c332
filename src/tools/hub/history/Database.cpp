#include "hub/history/Database.h"

namespace Hub {

std::string CDatabase::Open(const std::string& path, EAccess access) {
    constexpr int kWaitForLock = 2000; // milliseconds; an operator's sqlite3 may hold one
    const int flags =
        access == EAccess::read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* connection = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &connection, flags, nullptr);
    m_connection.reset(connection);
    if (result != SQLITE_OK) {
        std::string why = connection == nullptr ? sqlite3_errstr(result) : Error();
        Close();
        return why;
    }
    sqlite3_busy_timeout(connection, kWaitForLock);
    return "";
}

bool CDatabase::HasMoved() const {
    int hasMoved = 0;
    if (IsOpen()) {
        sqlite3_file_control(m_connection.get(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    }
    return hasMoved != 0;
}

bool CDatabase::Execute(const char* sql) {
    return sqlite3_exec(m_connection.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::optional<std::int64_t> CDatabase::Number(const char* sql) {
    CStatement statement(*this, sql);
    if (!statement.IsValid() || !statement.Step()) {
        return std::nullopt;
    }
    return statement.Integer(0);
}

std::string CDatabase::Text(const char* sql) {
    CStatement statement(*this, sql);
    return statement.IsValid() && statement.Step() ? statement.Text(0) : "";
}

CStatement::CStatement(const CDatabase& database, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    m_result = sqlite3_prepare_v2(database.Connection(), sql, -1, &statement, nullptr);
    m_statement.reset(statement);
}

bool CStatement::Run() {
    while (Step()) {
    }
    Reset();
    return IsDone();
}

std::optional<double> CStatement::OptionalReal(int column) const {
    if (sqlite3_column_type(m_statement.get(), column) == SQLITE_NULL) {
        return std::nullopt;
    }
    return Real(column);
}

std::string CStatement::Text(int column) const {
    const unsigned char* const text = sqlite3_column_text(m_statement.get(), column);
    const int length = sqlite3_column_bytes(m_statement.get(), column);
    return text == nullptr
               ? std::string()
               : std::string(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
}

void CStatement::BindOne(int index, const std::string& value) {
    sqlite3_bind_text64(m_statement.get(), index, value.data(), value.size(), SQLITE_TRANSIENT,
                        SQLITE_UTF8);
}

} // namespace Hub
