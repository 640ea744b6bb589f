// What terminals would obey stands in a project's texts and in a text of the PLC. Nothing of it may
// come out of the programs as it is, whatever they are asked for.

#include <QtCore/QJsonArray>

#include "tests/e2e/command_table.h"
#include "tests/e2e/plant.h"
#include "tests/e2e/terminal_process.h"
#include "values/visible_text.h"

namespace plc::test {
namespace {

/// Sets a terminal's title, rings, blinks, begins a C1 sequence, and turns the line around.
constexpr char kHostile[] =
    R"(\u001b]0;owned\u0007\u001b[5m\u009b5m\u0085\u007f\u202e\u2066\u200f\u2028\ud800a\r\nb\tc)";

QByteArray describedProject()
{
    QByteArray json = R"({
  'name': 'Name@',
  'settings': {'reconnectDelay': 50, 'reconnectDelayLimit': 100, 'connectTimeout': 2000},
  'areas': [{'index': 1, 'size': 256}],
  'structures': [{'name': 'S', 'size': 2, 'members': [
    {'name': 'm', 'type': 'INT', 'offset': 0, 'unit': 'mm@', 'description': 'member@'}]}],
  'scopes': [{'name': 'R', 'variables': [
    {'name': 'a', 'type': 'INT', 'area': 1, 'offset': 0, 'unit': 'rpm@', 'description': 'what@',
     'overlay': true},
    {'name': 'b', 'type': 'INT', 'area': 1, 'offset': 0, 'unit': 'x@'},
    {'name': 'text', 'type': 'STRING', 'length': 20, 'area': 1, 'offset': 20, 'unit': 'u@'},
    {'name': 'wide', 'type': 'WSTRING', 'length': 10, 'area': 1, 'offset': 60},
    {'name': 's', 'type': 'S', 'area': 1, 'offset': 100}]}],
  'cyclic': ['R.a', 'R.text', 'R.wide', 'R.s.m']
})";
    return json.replace('\'', '"').replace("@", kHostile);
}

/// What a terminal would obey, but for ends of lines; and bytes that are no UTF-8.
QString obeyedParts(const QByteArray& output)
{
    const QString text = QString::fromUtf8(output);
    QString found;
    for (int i = 0; i < int(text.size()); ++i) {
        const QChar unit = text[i];
        const bool isLineEnd = unit == QLatin1Char('\n');
        if ((values::isObeyed(unit.unicode()) && !isLineEnd) ||
            unit == QChar(QChar::ReplacementCharacter))
            found += QStringLiteral("U+%1 ").arg(uint(unit.unicode()), 4, 16, QLatin1Char('0'));
    }
    return found;
}

/// Without the sequences that the program itself styles and draws with.
QByteArray withoutOwnSequences(const QByteArray& output)
{
    static const QRegularExpression own(QStringLiteral(
        "\x1b\\[(\\?1049h|\\?25l|2J|\\?25h|\\?1049l|K|[0-9]+;1H|0m|31m|32m|33m|1m|2m|7m|"
        "1;33m)|\r\n"));
    return QString::fromUtf8(output).remove(own).toUtf8();
}

class OutsideText : public Plant {
protected:
    OutsideText()
    {
        writeProject(describedProject());
        startSimulator();
        // ESC ] 0 ; x BEL, 9B, line end, 85; then the override of direction and half a character.
        poke(1, 20, "1B5D303B78079B0A85");
        poke(1, 60, "202E D800 0041 2028");
    }

    QString path(const QString& name) const
    {
        return projectPath().section(QLatin1Char('/'), 0, -2) + QLatin1Char('/') + name;
    }
    QString sources() const
    {
        const QString file = path(QStringLiteral("a.st"));
        QFile source(file);
        source.open(QIODevice::WriteOnly);
        source.write(
            "VAR_GLOBAL\n  a AT %MW10 : INT; (* x \x1b]0;y\x07 \xC2\x9B \xE2\x80\xAE z *)\n"
            "  \x1b]0;y\x07 b : UNKNOWN\xE2\x80\xAE;\nEND_VAR\n");
        return file;
    }
    QString goodSource() const
    {
        const QString file = path(QStringLiteral("good.st"));
        QFile source(file);
        source.open(QIODevice::WriteOnly);
        source.write(
            "VAR_GLOBAL\n  a AT %MW10 : INT; (* x \x1b]0;y\x07 \xC2\x9B \xE2\x80\xAE z *)\n"
            "END_VAR\n");
        return file;
    }
    static QString hostileName() { return QStringLiteral("x\x1b]0;y\x07\u202e\u0085\ny"); }

    /// Ways to call each command: good ones, and some that it complains of.
    QVector<QStringList> calls(const QString& command) const
    {
        const QString json = QStringLiteral("--json");
        const QString csv = QStringLiteral("--csv");
        const QString label = QStringLiteral("R.") + hostileName();
        const QStringList all{QStringLiteral("R.a"), QStringLiteral("R.text"),
                              QStringLiteral("R.wide"), QStringLiteral("R.s.m")};
        const QStringList soon{QStringLiteral("--for"), QStringLiteral("0.4")};
        const QStringList away{QStringLiteral("--address"), hostileName()};
        const QStringList traced{QStringLiteral("--trace")};
        if (command == QLatin1String("read"))
            return {all,
                    all + QStringList{json},
                    all + QStringList{csv},
                    all + traced,
                    {label},
                    all + away,
                    all + QStringList{QStringLiteral("--capture"),
                                      path(hostileName() + QStringLiteral("/a"))},
                    all + QStringList{QStringLiteral("--labels"), path(hostileName())}};
        if (command == QLatin1String("write")) {
            const QString value = QStringLiteral("R.text=") + hostileName().left(9);
            return {{QStringLiteral("R.text=\x1b]0;\x07")},
                    {QStringLiteral("R.text=\x1b]0;\x07"), json},
                    {value},
                    {QStringLiteral("R.wide=\u202e\u2066")},
                    {label + QStringLiteral("=1")},
                    {QStringLiteral("R.a=") + hostileName()}};
        }
        if (command == QLatin1String("run"))
            return {soon,
                    soon + QStringList{json},
                    {QStringLiteral("--once")},
                    {QStringLiteral("--once"), json},
                    soon + away,
                    soon + away + QStringList{json}};
        if (command == QLatin1String("watch") || command == QLatin1String("stats"))
            return {soon, soon + QStringList{json}, soon + away, soon + away + QStringList{json}};
        if (command == QLatin1String("log")) {
            const QStringList to{QStringLiteral("--output"),
                                 path(hostileName() + QStringLiteral(".csv"))};
            return {soon + to,
                    soon + to + QStringList{json},
                    {QStringLiteral("--output"), path(hostileName() + QStringLiteral("/a.csv"))},
                    {QStringLiteral("--export"), path(hostileName() + QStringLiteral(".db")),
                     QStringLiteral("--output"), path(QStringLiteral("b.csv"))}};
        }
        if (command == QLatin1String("resolve"))
            return {all, all + QStringList{json}, {label}};
        if (command == QLatin1String("symbols"))
            return {{},
                    {json},
                    {csv},
                    {QStringLiteral("--tree")},
                    {QStringLiteral("--tree"), json},
                    {QStringLiteral("--check")},
                    {QStringLiteral("--check"), json}};
        if (command == QLatin1String("import"))
            return {{sources()},
                    {goodSource()},
                    {goodSource(), QStringLiteral("--name"), hostileName()},
                    {path(hostileName())},
                    {goodSource(), QStringLiteral("--output"),
                     path(hostileName() + QStringLiteral("/a"))}};
        if (command == QLatin1String("plan"))
            return {{}, {json}, {path(hostileName())}};
        if (command == QLatin1String("diagnose"))
            return {{},     {json}, all, all + QStringList{json}, away, away + QStringList{json},
                    {label}};
        ADD_FAILURE() << "no call is known of " << command.toStdString();
        return {};
    }
    QStringList argumentsFor(const QString& command, const QStringList& call)
    {
        if (command == QLatin1String("import") || call.contains(QStringLiteral("--export")))
            return QStringList{command} + call;
        QStringList all{command};
        if (!(command == QLatin1String("plan") && !call.isEmpty() &&
              !call.first().startsWith(QLatin1Char('-'))))
            all += QStringList{QStringLiteral("--project"), projectPath()};
        all += QStringList{QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY)};
        const QStringList withoutLink{QStringLiteral("resolve"), QStringLiteral("symbols"),
                                      QStringLiteral("plan")};
        if (!withoutLink.contains(command))
            all += QStringList{QStringLiteral("--port"), simulator().port()};
        return all + call;
    }
    Ending call(const QString& command, const QStringList& arguments)
    {
        Surroundings surroundings;
        surroundings.environment.append(QStringLiteral("LC_ALL=C.UTF-8"));
        return runToEnd(QStringLiteral(PLC_HOST), argumentsFor(command, arguments), surroundings);
    }
};

TEST_F(OutsideText, ComesOutOfNoCommandAsATerminalWouldObeyIt)
{
    for (const QString& command : allCommands()) {
        for (const QStringList& arguments : calls(command)) {
            const Ending ending = call(command, arguments);
            const std::string name =
                (command + QLatin1Char(' ') + arguments.join(QLatin1Char(' '))).toStdString();
            EXPECT_NE(-1, ending.exitCode) << name;
            EXPECT_FALSE(ending.output.isEmpty() && ending.errors.isEmpty()) << name;
            EXPECT_EQ("", obeyedParts(ending.output).toStdString()) << name << "\n"
                                                                    << ending.output.toStdString();
            EXPECT_EQ("", obeyedParts(ending.errors).toStdString()) << name << "\n"
                                                                    << ending.errors.toStdString();
        }
    }
}

TEST_F(OutsideText, IsUnchangedForWhoReadsTheJson)
{
    const QString unit = QJsonDocument::fromJson(describedProject())
                             .object()
                             .value(QLatin1String("structures"))
                             .toArray()
                             .first()
                             .toObject()
                             .value(QLatin1String("members"))
                             .toArray()
                             .first()
                             .toObject()
                             .value(QLatin1String("unit"))
                             .toString();
    ASSERT_TRUE(unit.contains(QChar(0x1B)));
    const Ending ending =
        call(QStringLiteral("read"), {QStringLiteral("R.s.m"), QStringLiteral("R.text"),
                                      QStringLiteral("R.wide"), QStringLiteral("--json")});
    const QList<QByteArray> lines = ending.output.split('\n');
    ASSERT_EQ(4, lines.size()) << ending.output.toStdString();
    const auto member = [&lines](int line, const char* name) {
        return QJsonDocument::fromJson(lines[line]).object().value(QLatin1String(name)).toString();
    };
    EXPECT_EQ(unit, member(0, "unit"));
    EXPECT_EQ(QString::fromLatin1("\x1b]0;x\x07\x9b\n\x85"), member(1, "value"));
    EXPECT_EQ(4, member(2, "value").size());
    EXPECT_EQ(QChar(0x202E), member(2, "value").at(0));
}

TEST_F(OutsideText, OfAnImportReadsBackFromTheProject)
{
    const Ending ending = call(QStringLiteral("import"), {goodSource()});
    ASSERT_EQ(0, ending.exitCode) << ending.errors.toStdString();
    EXPECT_TRUE(ending.output.contains("\\u001b]0;y\\u0007 \\u009b \\u202e z"))
        << ending.output.toStdString();
}

TEST_F(OutsideText, ComesOutOnNoTerminalAsItWouldObeyIt)
{
    const QStringList usual{QStringLiteral("LC_ALL=C.UTF-8"), QStringLiteral("TERM=xterm"),
                            QStringLiteral("NO_COLOR=")};
    for (const char* command :
         {"run", "watch", "stats", "diagnose", "read", "symbols", "resolve", "plan"}) {
        QStringList call{QStringLiteral("R.a"), QStringLiteral("R.text"), QStringLiteral("R.wide")};
        if (QByteArray(command) == "symbols" || QByteArray(command) == "plan")
            call.clear();
        if (QByteArray(command) == "run" || QByteArray(command) == "watch" ||
            QByteArray(command) == "stats")
            call += QStringList{QStringLiteral("--for"), QStringLiteral("0.6")};
        TerminalProcess terminal(QStringLiteral(PLC_HOST),
                                 argumentsFor(QString::fromLatin1(command), call), 100, 24, usual);
        terminal.exitCode();
        const QByteArray shown = withoutOwnSequences(terminal.output());
        EXPECT_FALSE(shown.isEmpty()) << command;
        EXPECT_EQ("", obeyedParts(shown).toStdString()) << command << "\n" << shown.toStdString();
    }
}

class OutsideTextInSimulator : public OutsideText {
protected:
    /// A line for each command, with what the memory and a user may bring along.
    QByteArray line(const QString& command) const
    {
        const QByteArray name = command.toUtf8();
        const QByteArray hostile = "x\x1b]0;y\x07\xC2\x9B\xE2\x80\xAE";
        if (command == QLatin1String("get"))
            return "get R.text\nget R.wide\nget R." + hostile;
        if (command == QLatin1String("set"))
            return "set R.text \x1b]0;\x07\nget R.text\nset R.a " + hostile;
        if (command == QLatin1String("peek"))
            return "peek 1 20 9\npeek " + hostile + " 1 1";
        if (command == QLatin1String("poke"))
            return "poke 1 20 1B5D303B78079B0A85\npoke 1 60 202ED8002028\npoke 1 1 " + hostile;
        const QStringList quiet{QStringLiteral("disconnect"), QStringLiteral("offline"),
                                QStringLiteral("online"), QStringLiteral("status"),
                                QStringLiteral("help")};
        if (quiet.contains(command))
            return name + "\n" + name + " " + hostile;
        return name + " " + hostile;
    }
};

TEST_F(OutsideTextInSimulator, ComesOutOfNoControlCommandAsATerminalWouldObeyIt)
{
    const QStringList start{projectPath(), QStringLiteral("--port"), QStringLiteral("0")};
    Surroundings surroundings;
    surroundings.input = "help\nstop\n";
    const Ending help = runToEnd(QStringLiteral(PLC_SIMULATOR), start, surroundings);
    static const QRegularExpression usage(QStringLiteral("^  ([a-z-]+)"),
                                          QRegularExpression::MultilineOption);
    QByteArray input = line(QStringLiteral("poke")) + '\n';
    int commands = 0;
    auto match = usage.globalMatch(QString::fromUtf8(help.output));
    while (match.hasNext()) {
        const QString command = match.next().captured(1);
        ++commands;
        if (command != QLatin1String("stop"))
            input += line(command) + '\n';
    }
    EXPECT_GE(commands, 19);
    surroundings.input = input + "\x1b]0;y\x07\xE2\x80\xAE\nget R.text\nstop\n";
    const Ending ending = runToEnd(QStringLiteral(PLC_SIMULATOR), start, surroundings);
    EXPECT_EQ(0, ending.exitCode);
    EXPECT_EQ("", obeyedParts(ending.output).toStdString()) << ending.output.toStdString();
    EXPECT_EQ("", obeyedParts(ending.errors).toStdString()) << ending.errors.toStdString();
    EXPECT_TRUE(ending.output.contains("ok '$1B]0;x$07$9B$L$85'\n")) << ending.output.toStdString();
}

} // namespace
} // namespace plc::test
