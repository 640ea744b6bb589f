#include "host/cli/console.h"

#include <QtCore/QFileInfo>

#include <cstdio>

#include "host/cli/style.h"
#include "host/csv.h"

namespace plc {
namespace {

void writeLine(std::FILE* file, const QString& line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), file);
    std::fflush(file);
}

} // namespace

void print(const QString& line)
{
    writeLine(stdout, line);
}

void printRow(const QStringList& fields)
{
    print(csv::row(fields));
}

void printError(const QString& line)
{
    writeLine(stderr, line);
}

bool mayReplace(const QString& path, bool force)
{
    return force || !QFileInfo(path).isFile();
}

void complain(const QString& line)
{
    writeLine(stderr, Style::ofErrors().apply(Emphasis::Failure, QStringLiteral("plc:")) +
                          QLatin1Char(' ') + line);
}

} // namespace plc
