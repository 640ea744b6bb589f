#include "simulator/options.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>

#include "simulator/signals.h"
#include "values/nearest_name.h"

namespace plc::simulator {
namespace {

constexpr qint64 kMostMemory = qint64(256) * 1024 * 1024;
constexpr int kLongestDelay = 24 * 60 * 60 * 1000; // ms
constexpr int kHighestNumber = 1000000000;
constexpr int kMostClients = 1000;

QCommandLineOption option(const char* name, const char* description, const char* value = nullptr)
{
    return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                              value == nullptr ? QString() : QString::fromLatin1(value));
}

void addOptions(QCommandLineParser* parser)
{
    parser->setApplicationDescription(
        QStringLiteral("Simulates the PLC of a project file: serves logins, reads and writes over "
                       "TCP and lets the values with a signal live. Reads commands from the "
                       "standard input; \"help\" lists them."));
    parser->addPositionalArgument(QStringLiteral("PROJECT"), QStringLiteral("The project file."));
    parser->addOptions({
        option("listen", "Address to listen on, 127.0.0.1 if not given.", "address"),
        option("port", "Port to listen on, the project's if not given; 0 picks a free one.",
               "port"),
        option("quiet", "Print nothing but the address."),
        option("verbose", "Print every frame."),
        option("seed", "Seed of the random walks, 1 if not given.", "number"),
        option("max-clients", "Clients at the same time, 256 if not given.", "count"),
        option("reply-delay", "Delay every reply.", "ms"),
        option("fragment", "Send replies in pieces of so many bytes.", "bytes"),
        option("join", "Send the replies to requests that arrive together in one piece."),
        option("drop-replies", "Lose the first replies to reads and writes.", "count"),
        option("late-reply", "Delay the Nth reply to a read or write.", "N:ms"),
        option("half-reply", "Send half of the Nth such reply and nothing more.", "N"),
        option("duplicate-reply", "Send the Nth such reply twice in one piece.", "N"),
        option("refuse-login", "Refuse every login."),
        option("fail-writes", "Refuse every write."),
    });
    parser->addHelpOption();
    parser->addVersionOption();
}

/// Reads option values; keeps the first thing that is wrong.
class OptionValues {
public:
    OptionValues(const QCommandLineParser& parser, QString* error)
        : m_parser(parser), m_error(error)
    {
    }

    bool has(const char* name) const { return m_parser.isSet(QLatin1String(name)); }
    QString text(const char* name) const { return m_parser.value(QLatin1String(name)); }

    qint64 number(const char* name, qint64 minimum, qint64 maximum, qint64 otherwise)
    {
        return has(name) ? number(name, text(name), minimum, maximum) : otherwise;
    }

    qint64 number(const char* name, const QString& digits, qint64 minimum, qint64 maximum)
    {
        bool converted = false;
        const qint64 value = digits.toLongLong(&converted);
        if (converted && value >= minimum && value <= maximum)
            return value;
        fail(QStringLiteral("--%1: %2 is not a whole number from %3 to %4")
                 .arg(QLatin1String(name), values::quoted(digits))
                 .arg(minimum)
                 .arg(maximum));
        return minimum;
    }

    void fail(const QString& text)
    {
        if (m_error->isEmpty())
            *m_error = text;
    }

private:
    const QCommandLineParser& m_parser;
    QString* m_error;
};

void readFaults(OptionValues* values, ReplyFaults* faults)
{
    faults->setDelay(int(values->number("reply-delay", 0, kLongestDelay, 0)));
    faults->dropNext(int(values->number("drop-replies", 0, kHighestNumber, 0)));
    if (values->has("late-reply")) {
        const QStringList parts = values->text("late-reply").split(QLatin1Char(':'));
        if (parts.size() != 2)
            values->fail(QStringLiteral("--late-reply: expected N:MS, as in 3:1500"));
        const qint64 reply = values->number("late-reply", parts.value(0), 1, kHighestNumber);
        const qint64 delay = values->number("late-reply", parts.value(1), 0, kLongestDelay);
        faults->delayReply(int(reply), int(delay));
    }
    if (values->has("half-reply"))
        faults->halveReply(int(values->number("half-reply", 1, kHighestNumber, 1)));
    if (values->has("duplicate-reply"))
        faults->duplicateReply(int(values->number("duplicate-reply", 1, kHighestNumber, 1)));
}

void readListening(OptionValues* values, Options* options)
{
    if (values->has("listen") && !options->address.setAddress(values->text("listen")))
        values->fail(QStringLiteral("--listen: %1 is not an IP address")
                         .arg(values::quoted(values->text("listen"))));
    if (values->has("port"))
        options->port = quint16(values->number("port", 0, 65535, 0));
    options->mostClients = int(values->number("max-clients", 1, kMostClients, 256));
}

void readBehaviour(OptionValues* values, Options* options)
{
    if (values->has("quiet"))
        options->verbosity = Verbosity::Quiet;
    else if (values->has("verbose"))
        options->verbosity = Verbosity::Verbose;
    options->seed = quint32(values->number("seed", 0, 0xffffffff, 1));
    options->fragment = int(values->number("fragment", 0, kHighestNumber, 0));
    options->join = values->has("join");
    options->refuseLogin = values->has("refuse-login");
    options->failWrites = values->has("fail-writes");
}

} // namespace

std::optional<Options> readOptions(const QStringList& arguments, QString* error)
{
    error->clear();
    QCommandLineParser parser;
    addOptions(&parser);
    if (!parser.parse(arguments)) {
        *error = parser.errorText() + QStringLiteral(" --help lists the options.");
        return {};
    }
    Options options;
    if (parser.isSet(QStringLiteral("help"))) {
        options.information = parser.helpText().trimmed();
        return options;
    }
    if (parser.isSet(QStringLiteral("version"))) {
        options.information =
            QStringLiteral("plc-simulator ") + QCoreApplication::applicationVersion();
        return options;
    }
    OptionValues values(parser, error);
    if (parser.positionalArguments().size() != 1)
        values.fail(QStringLiteral("expected one project file; --help tells more"));
    options.projectFile = parser.positionalArguments().value(0);
    readListening(&values, &options);
    readBehaviour(&values, &options);
    readFaults(&values, &options.faults);
    return error->isEmpty() ? std::optional<Options>(options) : std::nullopt;
}

bool checkSize(const project::Project& project, QString* error)
{
    qint64 memory = 0;
    for (const project::MemoryArea& area : project.areas)
        memory += area.size;
    if (memory > kMostMemory) {
        *error =
            QStringLiteral("the areas of the project have %1 bytes; at most %2 can be simulated")
                .arg(memory)
                .arg(kMostMemory);
    } else if (countSignalValues(project) > kMostSignalValues) {
        *error = QStringLiteral("more than %1 values of the project have a signal")
                     .arg(kMostSignalValues);
    } else {
        return true;
    }
    return false;
}

} // namespace plc::simulator
