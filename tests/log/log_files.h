#ifndef PLC_TESTS_LOG_LOG_FILES_H
#define PLC_TESTS_LOG_LOG_FILES_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "log/log_writer.h"
#include "tests/support/file_test.h"

namespace plc::log {
namespace test {

/// 2026-11-21T06:00:00.000Z: 20778 days of 86400 s since 1970, and six hours.
constexpr qint64 kStart = (20778LL * 86400 + 6 * 3600) * 1000;

/// Logs in a folder of their own.
class LogFiles : public plc::test::FileTest {
protected:
    std::string content(const QString& file) const { return files.content(file); }
    void put(const QString& file, const char* text) const { files.append(file, text); }

    /// A fresh value so many ms behind kStart.
    static LogRecord record(qint64 time, const char* label, const char* value)
    {
        LogRecord record;
        record.time = kStart + time;
        record.label = QString::fromUtf8(label);
        record.value = QString::fromUtf8(value);
        return record;
    }
};

} // namespace test
} // namespace plc::log

#endif
