#include "service/console.h"

#include <QtCore/QCoreApplication>

#include <unistd.h>

#include "streams/output_stream.h"
#include "values/visible_text.h"

namespace plc::service {
namespace {

bool write(int descriptor, const QString& text)
{
    streams::OutputStream stream(descriptor);
    return stream.write(text.toUtf8() + '\n');
}

} // namespace

bool print(const QString& text)
{
    return write(STDOUT_FILENO, text);
}

void log(const QString& line)
{
    write(STDERR_FILENO, values::visibleText(line));
}

int complain(const QString& line, int exitCode)
{
    log(QStringLiteral("%1: %2").arg(QCoreApplication::applicationName(), line));
    return exitCode;
}

} // namespace plc::service
