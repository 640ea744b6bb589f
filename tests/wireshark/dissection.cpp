#include "tests/wireshark/dissection.h"

#include <gtest/gtest.h>

#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QTemporaryDir>

namespace plc {
namespace {

constexpr int kTsharkTimeout = 50000; // ms

} // namespace

QByteArray dissect(const QString& file, const QStringList& arguments)
{
    // Nobody's own settings and plug-ins.
    const QTemporaryDir home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home.path());
    environment.remove(QStringLiteral("XDG_CONFIG_HOME"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(
        QStringLiteral(PLC_TSHARK),
        QStringList{QStringLiteral("-n"), QStringLiteral("-X"),
                    QStringLiteral("lua_script:" PLC_DISSECTOR), QStringLiteral("-r"), file} +
            arguments);
    const bool finished = process.waitForFinished(kTsharkTimeout);
    const QByteArray errors = process.readAllStandardError();
    EXPECT_TRUE(finished && process.exitCode() == 0) << errors.constData();
    EXPECT_FALSE(errors.contains("Lua")) << errors.constData();
    return process.readAllStandardOutput();
}

std::vector<Row> dissectedFields(const QString& file, std::initializer_list<const char*> fields,
                                 const QStringList& options)
{
    QStringList arguments = {QStringLiteral("-T"), QStringLiteral("fields"), QStringLiteral("-E"),
                             QStringLiteral("separator=|")};
    for (const char* const field : fields)
        arguments << QStringLiteral("-e") << QString::fromLatin1(field);
    QStringList ours = options;
    if (!ours.contains(QStringLiteral("-Y")))
        ours += filter("codesys_block");
    std::vector<Row> result;
    const QList<QByteArray> lines = dissect(file, arguments + ours).split('\n');
    for (const QByteArray& line : lines) {
        if (line.isEmpty())
            continue;
        Row row;
        const QList<QByteArray> values = line.split('|');
        for (const QByteArray& value : values)
            row.push_back(value.toStdString());
        result.push_back(row);
    }
    return result;
}

QStringList filter(const char* expression)
{
    return {QStringLiteral("-Y"), QString::fromLatin1(expression)};
}

} // namespace plc
