#ifndef PLC_TESTS_SUPPORT_TEST_FOLDER_H
#define PLC_TESTS_SUPPORT_TEST_FOLDER_H

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <string>
#include <utility>

namespace plc::test {

/// The files of a folder that a test works in.
class TestFolder {
public:
    explicit TestFolder(QString folder) : m_folder(std::move(folder)) {}

    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }
    /// Makes the file, in place of one that is there.
    void put(const QString& file, const char* text) const
    {
        write(file, text, QIODevice::Truncate);
    }
    /// Makes the file, or goes on with it.
    void append(const QString& file, const char* text) const
    {
        write(file, text, QIODevice::Append);
    }
    std::string content(const QString& file) const
    {
        QFile opened(file);
        EXPECT_TRUE(opened.open(QIODevice::ReadOnly)) << file.toStdString();
        return opened.readAll().toStdString();
    }
    /// Names of all files, hidden ones too, in the order of the alphabet, separated by blanks.
    std::string names() const
    {
        return m_folder.entryList(QDir::Files | QDir::Hidden, QDir::Name)
            .join(QLatin1Char(' '))
            .toStdString();
    }

private:
    static void write(const QString& file, const char* text, QIODevice::OpenMode how)
    {
        QFile opened(file);
        ASSERT_TRUE(opened.open(QIODevice::WriteOnly | how)) << file.toStdString();
        opened.write(text);
    }

    QDir m_folder;
};

} // namespace plc::test

#endif
