#include "cli/console.h"

#include <unistd.h>

#include <QtCore/QFileInfo>

#include <utility>

#include "streams/output_stream.h"
#include "values/csv.h"
#include "values/visible_text.h"

namespace plc::cli {
namespace {

struct Console {
    streams::OutputStream output{STDOUT_FILENO};
    streams::OutputStream errors{STDERR_FILENO};
    bool isLossTold = false;
    std::function<void()> lossHandler;
};

Console& console()
{
    static Console theConsole;
    return theConsole;
}

QByteArray lineBytes(const QString& line)
{
    return values::visibleText(line).toUtf8() + '\n';
}

QByteArray headedLine(const QString& styledHeading, const QString& rest)
{
    return styledHeading.toUtf8() + lineBytes(rest);
}

void tellLoss()
{
    Console& all = console();
    if (std::exchange(all.isLossTold, true))
        return;
    complain(QStringLiteral("the standard output cannot be written: %1").arg(all.output.error()));
    if (const std::function<void()> handle = std::exchange(all.lossHandler, nullptr))
        handle();
}

} // namespace

void print(const QString& line)
{
    printBytes(lineBytes(line));
}

void print(Emphasis emphasis, const QString& heading, const QString& rest)
{
    printBytes(headedLine(Style::ofOutput().apply(emphasis, values::visibleText(heading)), rest));
}

void printText(const QString& text)
{
    for (const QString& line : text.split(QLatin1Char('\n')))
        print(line);
}

void printRow(const QStringList& fields)
{
    QStringList shown;
    for (const QString& field : fields)
        shown.append(values::visibleText(field));
    print(values::csv::row(shown));
}

void printOutcome(const QString& line)
{
    if (!printBytes(lineBytes(line)))
        printError(line);
}

bool printBytes(const QByteArray& bytes)
{
    const bool isWritten = console().output.write(bytes);
    if (!isWritten)
        tellLoss();
    return isWritten;
}

void printError(const QString& line)
{
    console().errors.write(lineBytes(line));
}

void printErrorText(const QString& text)
{
    for (const QString& line : text.split(QLatin1Char('\n')))
        printError(line);
}

bool mayReplace(const QString& path, bool force)
{
    return force || !QFileInfo(path).isFile();
}

void complain(const QString& line)
{
    console().errors.write(
        headedLine(Style::ofErrors().apply(Emphasis::Failure, QStringLiteral("plc:")),
                   QLatin1Char(' ') + line));
}

bool isOutputLost()
{
    return !console().output.error().isEmpty();
}

void whenOutputIsLost(std::function<void()> handle)
{
    console().lossHandler = std::move(handle);
}

int finishOutput(int exitCode)
{
    if (!console().output.close())
        tellLoss();
    return isOutputLost() && exitCode == kExitDone ? kExitRefused : exitCode;
}

} // namespace plc::cli
