#include "cli/style.h"

#include <unistd.h>

#include <QtCore/QByteArray>

namespace plc::cli {
namespace {

constexpr char kOff[] = "\x1b[0m";

struct Sequences {
    Emphasis emphasis;
    const char* coloured;
    const char* monochrome;
};

constexpr Sequences kSequences[] = {
    {Emphasis::Success, "\x1b[32m", ""},        {Emphasis::Warning, "\x1b[33m", "\x1b[1m"},
    {Emphasis::Failure, "\x1b[31m", "\x1b[1m"}, {Emphasis::Changed, "\x1b[1;33m", "\x1b[1m"},
    {Emphasis::Faint, "\x1b[2m", "\x1b[2m"},    {Emphasis::Strong, "\x1b[1m", "\x1b[1m"},
    {Emphasis::Heading, "\x1b[7m", "\x1b[7m"}};

const char* sequenceOf(Emphasis emphasis, Style::Capability capability)
{
    for (const Sequences& sequences : kSequences) {
        if (sequences.emphasis == emphasis && capability == Style::Coloured)
            return sequences.coloured;
        if (sequences.emphasis == emphasis && capability == Style::Monochrome)
            return sequences.monochrome;
    }
    return "";
}

} // namespace

Style Style::of(int descriptor)
{
    if (::isatty(descriptor) == 0 || qgetenv("TERM") == "dumb")
        return Style(Plain);
    return Style(qEnvironmentVariableIsEmpty("NO_COLOR") ? Coloured : Monochrome);
}

Style Style::ofOutput()
{
    return of(STDOUT_FILENO);
}

Style Style::ofErrors()
{
    return of(STDERR_FILENO);
}

QString Style::apply(Emphasis emphasis, const QString& text) const
{
    const char* const on = sequenceOf(emphasis, m_capability);
    return *on == '\0' ? text : QLatin1String(on) + text + QLatin1String(kOff);
}

} // namespace plc::cli
