#include "bench/support/process_figures.h"

#include <QtCore/QFile>
#include <QtCore/QList>

#include <unistd.h>

namespace plc::bench {
namespace {

QByteArray contents(qint64 process, const char* name)
{
    QFile file(QStringLiteral("/proc/%1/%2").arg(process).arg(QLatin1String(name)));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
    return file.readAll();
}

} // namespace

double processorMs(qint64 process)
{
    // The name, in brackets, may hold blanks; behind it the twelfth and thirteenth field count.
    const QByteArray all = contents(process, "stat");
    const QList<QByteArray> fields = all.mid(all.lastIndexOf(')') + 2).split(' ');
    const double ticks = fields.value(11).toDouble() + fields.value(12).toDouble();
    return 1000.0 * ticks / double(::sysconf(_SC_CLK_TCK));
}

double privateKib(qint64 process)
{
    double sum = 0.0;
    for (const QByteArray& line : contents(process, "smaps_rollup").split('\n')) {
        if (line.startsWith("Private_"))
            sum += line.simplified().split(' ').value(1).toDouble();
    }
    return sum;
}

} // namespace plc::bench
