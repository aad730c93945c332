// One connection to an SQLite database, and its statements.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <sqlite3.h>
#include <string>

namespace Hub {

/// To be used by one thread at a time.
class CDatabase {
public:
    enum class EAccess { read, write };

    /// Returns why it cannot be opened, the empty text when it is.
    std::string Open(const std::string& path, EAccess access);
    void Close() { m_connection.reset(); }
    bool IsOpen() const { return m_connection != nullptr; }
    /// Whether it is open and its file is no longer at its path.
    bool HasMoved() const;

    /// Runs statements that give no rows. False when one failed: then the rest is not run.
    bool Execute(const char* sql);
    /// The first column of the first row that a statement gives.
    std::optional<std::int64_t> Number(const char* sql);
    std::string Text(const char* sql);

    /// Of the last call: what went wrong, SQLite's code of it, and whether it means that the file
    /// is none of SQLite's or has been damaged.
    std::string Error() const { return sqlite3_errmsg(m_connection.get()); }
    int Code() const { return sqlite3_errcode(m_connection.get()); }
    bool IsDamaged() const { return Code() == SQLITE_CORRUPT || Code() == SQLITE_NOTADB; }

    sqlite3* Connection() const { return m_connection.get(); }

private:
    struct SCloser {
        void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
    };
    std::unique_ptr<sqlite3, SCloser> m_connection;
};

/// A statement that is compiled once and run any number of times.
class CStatement {
public:
    CStatement() = default;
    CStatement(const CDatabase& database, const char* sql);

    /// False when it cannot be compiled; then whether the tables are not as it wants them.
    bool IsValid() const { return m_statement != nullptr; }
    bool HasOtherTables() const { return m_result == SQLITE_ERROR; }

    /// Sets the parameters ?1, ?2...; a number that is NaN and an empty optional are null.
    template <class... TValues>
    CStatement& Bind(const TValues&... values) {
        int index = 0;
        (BindOne(++index, values), ...);
        return *this;
    }

    /// Whether there is a row; false also after a failure.
    bool Step() { return (m_result = sqlite3_step(m_statement.get())) == SQLITE_ROW; }
    /// Runs it to its end. False when that failed.
    bool Run();
    /// Whether the last run has come to its end.
    bool IsDone() const { return m_result == SQLITE_DONE; }
    /// To be called after the last row, so that it holds no lock.
    void Reset() { sqlite3_reset(m_statement.get()); }

    std::int64_t Integer(int column) const {
        return sqlite3_column_int64(m_statement.get(), column);
    }
    double Real(int column) const { return sqlite3_column_double(m_statement.get(), column); }
    std::optional<double> OptionalReal(int column) const;
    std::string Text(int column) const;

private:
    struct SFinalizer {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    void BindOne(int index, std::int64_t value) {
        sqlite3_bind_int64(m_statement.get(), index, value);
    }
    void BindOne(int index, int value) { sqlite3_bind_int64(m_statement.get(), index, value); }
    void BindOne(int index, bool value) { sqlite3_bind_int64(m_statement.get(), index, value); }
    void BindOne(int index, double value) { sqlite3_bind_double(m_statement.get(), index, value); }
    void BindOne(int index, const std::string& value);
    template <class TValue>
    void BindOne(int index, const std::optional<TValue>& value) {
        if (value) {
            BindOne(index, *value);
        } else {
            sqlite3_bind_null(m_statement.get(), index);
        }
    }

    std::unique_ptr<sqlite3_stmt, SFinalizer> m_statement;
    int m_result = SQLITE_OK;
};

} // namespace Hub
