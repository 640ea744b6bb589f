#ifndef PLC_TESTS_SUPPORT_FILE_TEST_H
#define PLC_TESTS_SUPPORT_FILE_TEST_H

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

#include <string>

#include "tests/support/test_folder.h"
#include "values/expected.h"

namespace plc::test {

/// A test with a folder of its own.
class FileTest : public ::testing::Test {
protected:
    QString path(const char* name) const { return files.path(name); }
    std::string names() const { return files.names(); }

    /// Whether it succeeded; else `error` tells why not.
    template <typename T>
    bool succeeds(const Expected<T>& outcome)
    {
        error = outcome ? QString() : outcome.error().text;
        return bool(outcome);
    }

private:
    QTemporaryDir m_folder;

protected:
    TestFolder files{m_folder.path()};
    QString error;
};

} // namespace plc::test

#endif
