#ifndef PLC_TESTS_E2E_COMMAND_TABLE_H
#define PLC_TESTS_E2E_COMMAND_TABLE_H

#include <gtest/gtest.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include "tests/e2e/spawned_process.h"

namespace plc::test {

/// The commands that `plc --help` names, so that no test of all of them misses a new one.
inline QStringList allCommands()
{
    const Ending help = runToEnd(QStringLiteral(PLC_HOST), {QStringLiteral("--help")}, {});
    EXPECT_EQ(0, help.exitCode);
    static const QRegularExpression usage(QStringLiteral("^  plc ([a-z]+)\\b"),
                                          QRegularExpression::MultilineOption);
    QStringList names;
    auto match = usage.globalMatch(QString::fromUtf8(help.output));
    while (match.hasNext())
        names.append(match.next().captured(1));
    EXPECT_GE(names.size(), 11);
    return names;
}

} // namespace plc::test

#endif
