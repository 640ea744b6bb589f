// What a slip of the hand or of a script must not do: replace files, fill the memory; and what
// spares typing: completion.

#include "tests/e2e/plant.h"
#include "tests/e2e/terminal_process.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QStandardPaths>

namespace plc::test {
namespace {

class Usage : public Plant {
protected:
    Usage()
    {
        writeProject(R"({
          'name': 'Dairy', 'areas': [{'index': 1, 'size': 64}],
          'scopes': [{'name': 'R', 'variables': [
            {'name': 'first', 'type': 'REAL', 'area': 1, 'offset': 0},
            {'name': 'second', 'type': 'INT', 'area': 1, 'offset': 4},
            {'name': 'table', 'type': 'INT', 'area': 1, 'offset': 8, 'array': [[1, 3]]}]}],
          'cyclic': ['R.second']})");
        startSimulator();
    }
    QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
    static void fill(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    static QByteArray content(const QString& path)
    {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    QTemporaryDir m_folder;
};

TEST_F(Usage, ACaptureReplacesAFileOnlyWhenToldSo)
{
    const QString file = path("session.pcapng");
    const QStringList read{QStringLiteral("R.second"), QStringLiteral("--capture"), file};
    EXPECT_EQ(0, run("read", read).exitCode) << "a new file";
    fill(file, "evidence");
    const Outcome outcome = run("read", read);
    EXPECT_EQ(2, outcome.exitCode);
    EXPECT_TRUE(outcome.lines.isEmpty());
    EXPECT_TRUE(outcome.errors.contains(file + QStringLiteral(" exists; --force replaces it")))
        << outcome.errors.toStdString();
    EXPECT_EQ("evidence", content(file));
    EXPECT_EQ(0, run("read", read + QStringList{QStringLiteral("--force")}).exitCode);
    EXPECT_EQ(QByteArray::fromHex("0A0D0D0A"), content(file).left(4));
    EXPECT_EQ(0, run("read", {QStringLiteral("R.second"), QStringLiteral("--capture"),
                              QStringLiteral("/dev/null")})
                     .exitCode)
        << "nothing is lost there";
}

TEST_F(Usage, AnEmptyAddressIsNotTheProjects)
{
    const Outcome outcome =
        run("read", {QStringLiteral("R.second"), QStringLiteral("--address"), QString()});
    EXPECT_EQ(2, outcome.exitCode);
    EXPECT_TRUE(outcome.errors.contains(QStringLiteral("--address has an empty value")));
}

TEST_F(Usage, RunLeavesOutALineWithoutEndAndGoesOnBehindIt)
{
    const std::unique_ptr<LineProcess> plc = start("run", {});
    ASSERT_FALSE(plc->waitForLine({QStringLiteral("R.second = 0")}).isEmpty());
    plc->send(QStringLiteral("write R.second=1") + QString(3 * 1024 * 1024, QLatin1Char('1')));
    plc->send(QStringLiteral("write R.second=7"));
    EXPECT_FALSE(
        plc->waitForLine({QStringLiteral("a line of more than 1024 KiB is left out")}).isEmpty());
    EXPECT_FALSE(plc->waitForLine({QStringLiteral("write R.second = 7: done")}).isEmpty());
}

TEST_F(Usage, WhatIsNoNumberIsWrittenOnlyWhenItIsMeant)
{
    const Outcome outcome = run("write", {QStringLiteral("R.first=nan")});
    EXPECT_EQ(2, outcome.exitCode);
    EXPECT_TRUE(outcome.errors.contains(QStringLiteral("write REAL#nan if it is meant")));
    write({QStringLiteral("R.first=REAL#-inf")});
    EXPECT_EQ("ff 80 00 00", peek(1, 0, 4));
    EXPECT_EQ("REAL#-inf", readText(QStringLiteral("R.first")));
}

TEST_F(Usage, TimesTellTheirDistanceFromUtc)
{
    const QRegularExpression stamp(QStringLiteral(
        "^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}(Z|[+-]\\d\\d:\\d\\d)$"));
    const QStringList briefly{QStringLiteral("--for"), QStringLiteral("2s")};
    Outcome outcome = run("run", briefly + QStringList{QStringLiteral("--json")});
    ASSERT_FALSE(outcome.lines.isEmpty());
    for (const QString& line : outcome.lines)
        EXPECT_TRUE(stamp.match(parseJson(line).value(QLatin1String("time")).toString()).hasMatch())
            << line.toStdString();
    outcome = run("run", briefly + QStringList{QStringLiteral("--trace")});
    ASSERT_FALSE(outcome.lines.isEmpty());
    for (const QString& line : outcome.lines)
        EXPECT_TRUE(stamp.match(line.section(QLatin1Char(' '), 0, 0)).hasMatch())
            << line.toStdString();
    EXPECT_TRUE(stamp.match(outcome.errors.section(QLatin1Char(' '), 0, 0)).hasMatch())
        << outcome.errors.toStdString();
}

/// A shell with the completion and the part of bash-completion that it needs.
class Completion : public Usage {
protected:
    Completion()
    {
        useNoPort();
        m_shell = std::make_unique<TerminalProcess>(
            QStandardPaths::findExecutable(QStringLiteral("bash")),
            QStringList{QStringLiteral("--norc"), QStringLiteral("--noprofile"),
                        QStringLiteral("-i")},
            200, 50,
            QStringList{QStringLiteral("PS1=$ "), QStringLiteral("TERM=dumb"),
                        QStringLiteral("PLC_PROJECT=") + projectPath(),
                        QStringLiteral("PLC_DRIVER=" PLC_LIBRARY)});
        m_shell->type(
            "_filedir() { :; }; _init_completion() {"
            " cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}"
            " words=(\"${COMP_WORDS[@]}\") cword=$COMP_CWORD; }\r");
        m_shell->type("plc() { " PLC_HOST " \"$@\"; }; source " PLC_COMPLETION "; echo rea''dy\r");
        EXPECT_TRUE(m_shell->waitForText("ready"));
    }
    /// Whether these keys lead to this line.
    bool completes(const char* keys, const char* line)
    {
        m_shell->type("\x15");
        m_shell->type(keys);
        return m_shell->waitFor([this, line](const Screen&) {
            QString output = QString::fromUtf8(m_shell->output());
            output.remove(QLatin1Char('\a'));
            return output.endsWith(QString::fromUtf8(line));
        });
    }

private:
    std::unique_ptr<TerminalProcess> m_shell;
};

TEST_F(Completion, GoesOnInsideQuotes)
{
    EXPECT_TRUE(completes("plc read \"R.fi\t", "plc read \"R.first\" "));
    EXPECT_TRUE(completes("plc read 'R.ta\t", "plc read 'R.table["))
        << "the quotes stay open for the subscript";
    EXPECT_TRUE(completes("plc write 'R.fi\t", "plc write 'R.first="));
    EXPECT_TRUE(completes("plc write R.fi\t", "plc write R.first="));
}

} // namespace
} // namespace plc::test
