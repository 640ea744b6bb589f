#ifndef PLC_TESTS_HOST_LOG_LOG_FILES_H
#define PLC_TESTS_HOST_LOG_LOG_FILES_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include "host/log/log_writer.h"

namespace plc {
namespace test {

/// 2026-11-21T06:00:00.000Z: 20778 days of 86400 s since 1970, and six hours.
constexpr qint64 kStart = (20778LL * 86400 + 6 * 3600) * 1000;

/// Logs in a folder of their own.
class LogFiles : public ::testing::Test {
protected:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    std::string content(const QString& file) const
    {
        QFile opened(file);
        EXPECT_TRUE(opened.open(QIODevice::ReadOnly)) << file.toStdString();
        return opened.readAll().toStdString();
    }
    void put(const QString& file, const char* text) const
    {
        QFile opened(file);
        ASSERT_TRUE(opened.open(QIODevice::WriteOnly | QIODevice::Append));
        opened.write(text);
    }
    /// Names of the files in the folder, in the order of the alphabet, separated by blanks.
    std::string names() const
    {
        return QDir(m_folder.path())
            .entryList(QDir::Files, QDir::Name)
            .join(QLatin1Char(' '))
            .toStdString();
    }

    /// A fresh value so many ms behind kStart.
    static LogRecord record(qint64 time, const char* label, const char* value)
    {
        LogRecord record;
        record.time = kStart + time;
        record.label = QString::fromUtf8(label);
        record.value = QString::fromUtf8(value);
        return record;
    }

    QString error;

private:
    QTemporaryDir m_folder;
};

} // namespace test
} // namespace plc

#endif
