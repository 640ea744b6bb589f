#ifndef PLC_TESTS_LOG_LOG_FILES_H
#define PLC_TESTS_LOG_LOG_FILES_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

#include "log/log_writer.h"
#include "tests/support/test_folder.h"
#include "values/expected.h"

namespace plc::log {
namespace test {

using plc::test::TestFolder;

/// 2026-11-21T06:00:00.000Z: 20778 days of 86400 s since 1970, and six hours.
constexpr qint64 kStart = (20778LL * 86400 + 6 * 3600) * 1000;

/// Logs in a folder of their own.
class LogFiles : public ::testing::Test {
protected:
    QString path(const char* name) const { return m_files.path(name); }
    std::string content(const QString& file) const { return m_files.content(file); }
    void put(const QString& file, const char* text) const { m_files.append(file, text); }
    std::string names() const { return m_files.names(); }

    /// A fresh value so many ms behind kStart.
    static LogRecord record(qint64 time, const char* label, const char* value)
    {
        LogRecord record;
        record.time = kStart + time;
        record.label = QString::fromUtf8(label);
        record.value = QString::fromUtf8(value);
        return record;
    }

    /// Whether it succeeded; else `error` tells why not.
    template <typename T>
    bool succeeds(const Expected<T>& outcome)
    {
        error = outcome ? QString() : outcome.error().text;
        return bool(outcome);
    }

    QString error;

private:
    QTemporaryDir m_folder;
    TestFolder m_files{m_folder.path()};
};

} // namespace test
} // namespace plc::log

#endif
