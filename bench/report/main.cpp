#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <cstdio>
#include <cstdlib>

#include "requirements.h"
#include "stored_ratios.h"
#include "table.h"

namespace {

constexpr char kUsage[] =
    "usage: bench_report ROUND.json... [--requirements FILE] [--compare FILE] [--store FILE]\n"
    "Prints the table of a run of bench_driver, of one or more rounds; checks requirements; "
    "compares with stored ratios,\n"
    "or stores them. Exit code 1: a requirement is missed, or a ratio has become worse.\n";

/// The arguments before the first option.
QStringList roundsIn(const QStringList& arguments)
{
    QStringList rounds;
    for (int i = 1; i < int(arguments.size()) && !arguments.at(i).startsWith(QLatin1Char('-')); ++i)
        rounds.append(arguments.at(i));
    return rounds;
}

/// The argument behind `option`, or an empty text.
QString valueOf(const QStringList& arguments, const char* option)
{
    const int position = int(arguments.indexOf(QLatin1String(option)));
    return position < 0 ? QString() : arguments.value(position + 1);
}

} // namespace

int main(int argc, char** argv)
{
    using namespace plc::bench;

    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QStringList rounds = roundsIn(arguments);
    if (rounds.isEmpty()) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const Measurements measurements(rounds);
    printTable(measurements);

    bool good = true;
    const QString requirements = valueOf(arguments, "--requirements");
    if (!requirements.isEmpty())
        good = checkRequirements(measurements, requirements) && good;
    const QString stored = valueOf(arguments, "--compare");
    if (!stored.isEmpty())
        good = compareWithStored(measurements, stored) && good;
    const QString store = valueOf(arguments, "--store");
    if (!store.isEmpty())
        storeRatios(measurements, store);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
