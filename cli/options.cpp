#include "cli/options.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>

#include <cmath>
#include <limits>

#include "project/label_syntax.h"
#include "values/duration_text.h"
#include "values/nearest_name.h"

namespace plc::cli {
namespace {

constexpr int kHighestPort = 65535;
constexpr int kHighestStation = 255;
constexpr int kLongestTime = 24 * 60 * 60 * 1000;       // ms
constexpr qint64 kLongestPeriod = 366LL * kLongestTime; // ms
const QLatin1String kCsvSuffix(".csv");
constexpr int kHighestNumber = std::numeric_limits<int>::max();
constexpr double kLongestRun = std::numeric_limits<int>::max(); // ms

constexpr double kLongestRoundTrip = 60 * 1000; // ms
constexpr double kSlowestNetwork = 0.001;       // Mbit/s
constexpr double kFastestNetwork = 100000;      // Mbit/s

const char kHelp[] = R"(plc exchanges data with a PLC through the driver library.

  plc run [LABEL...]         read the project's cyclic labels (or these) again and again
  plc watch [LABEL...]       show them with trend, minimum and maximum; keys sort and write
  plc log [LABEL...]         keep each change of them in a CSV file or an SQLite database
  plc read LABEL...          read these once
  plc write LABEL=VALUE...   write these and report what the PLC said to each
  plc resolve LABEL...       show type, area and address of these
  plc symbols [PATTERN]      list the project's variables; PATTERN, which may have
                             * and ?, is found anywhere in their labels
  plc import FILE...         make a project of declarations in structured text (IEC 61131-3)
  plc stats [LABEL...]       read them like run and tell how the link fares: requests, round
                             trips, retries, refusals, failures
  plc diagnose [LABEL...]    go step by step from the PLC's name to these values, explain the
                             step that fails, and name labels that the PLC refuses
  plc plan [PROJECT]         show what a scan of the cyclic labels takes, and the best setting

A label is SCOPE.VARIABLE with subscripts and members as declared, such as
Plant.tank[3].level. LABEL*N stands for N elements of an array from that one on;
their values are written as 1,2,3. To run, watch, log and read, a label may also be
a pattern with * and ?, or have a range: 'Plant.tank*.level', Plant.tank[1..3].level.
Values: TRUE, -5, 16#FF, 1.5, T#1m30s, 'text' (the quotes may be left out); what is
no number only as REAL#nan, REAL#inf and LREAL#-inf.
A DURATION is 500ms, 10s or 1m30s; a number alone is ms, and seconds for --for.

Options for all commands:
  -p, --project FILE   project file; else what PLC_PROJECT names
  --driver FILE        driver library; else what PLC_DRIVER names, else the nearest one
  --json               print one JSON object a line
  -h, --help           print this
  -v, --version        print the version
Options for run, watch, log, stats, read, write and diagnose:
  --address HOST       connect there and not to the project's address
  --port N             the same for the port
  --timeout DURATION   time for the connection and for each whole reply
  --read-only          refuse every write, as the project's setting readOnly does
  --trace              print every frame with its meaning on the standard error
  --capture FILE       keep what is sent and received in FILE, for Wireshark (pcapng)
  --force              replace the file of --capture if it exists
Options for run, watch, log, stats, read and resolve:
  --labels FILE        also the labels in the first column of this CSV file
Options for read and symbols:
  --csv                print comma-separated values, with a line of names first
Options for symbols:
  --tree               show scopes, structures and members as a tree
  --depth N            levels of the tree: 1 scopes, 2 variables, 3 members, and so on
  --check              list variables that share memory, and gaps between variables
  --gap BYTES          list gaps of at least so many bytes (1)
Options for import:
  -o, --output FILE    write the project there and not to the standard output
  --merge FILE         put the symbols into this project and keep everything else of it
  --name NAME          name of a new project; else that of the first file
  --area N             memory area of addresses such as %MW10, which name none (0)
  --base AREA:OFFSET   place variables without an address one behind the other from here
  --align N            values lie at multiples of their size or of N: 1, 2, 4 or 8 (4)
  --scope NAME         scope of the global variables; without one, labels begin with the dot
  --all-warnings       show each variable that is left out, and not only the first 20
Options for run, watch, log and stats:
  --for DURATION       end after this time
  --cycle DURATION     time from one pass over all values to the next, at least (100ms)
  --station-off N      begin with station N switched off; may be given again
Options for run and watch:
  --interval DURATION  time between two screens (200ms) or prints (1s; watch: each change)
Options for run:
  --once               print each value once and end
Options for log:
  -o, --output FILE    .csv, or a database: .sqlite, .sqlite3, .db; it goes on if it exists
  --every DURATION     all values at this interval and not changes
  --rotate-size SIZE   go on in a new CSV file before one has more bytes: 500k, 64M, 2G
  --rotate-every DURATION  the same after this time: 1h, 1d
  --keep N             rotated files that stay; the oldest go (all)
  --export FILE        turn this database into the CSV file --output; needs no project
Options for plan:
  --rtt DURATION       round-trip time to the PLC and back (1ms)
  --mbit N             speed of the network in Mbit/s (100)

While it runs, plc run takes these lines from its standard input:
  write LABEL=VALUE    write a value; its outcome is printed
  station N off|on     switch a station off or on
  quit                 end, when the writes before it have their outcomes
On a terminal it shows the values in place: arrows and PgUp/PgDn scroll, ":"
begins one of the lines above, q ends. Otherwise it prints values that changed,
with their age, and all that happens to the link, line by line.

Exit codes: 0 done; 1 the PLC refused, the link failed, a write was not done, or output
could not be written; 2 wrong usage or project file.)";

struct CommandName {
    const char* name;
    Command command;
    int fewestArguments;
    int mostArguments;
    const char* argumentsText;
};

constexpr int kAnyNumber = std::numeric_limits<int>::max();

const CommandName kCommands[] = {
    {"run", Command::Run, 0, kAnyNumber, "any number of labels"},
    {"watch", Command::Watch, 0, kAnyNumber, "any number of labels"},
    {"log", Command::Log, 0, kAnyNumber, "any number of labels"},
    {"read", Command::Read, 1, kAnyNumber, "at least one label"},
    {"write", Command::Write, 1, kAnyNumber, "at least one LABEL=VALUE"},
    {"resolve", Command::Resolve, 1, kAnyNumber, "at least one label"},
    {"symbols", Command::Symbols, 0, 1, "at most one pattern"},
    {"import", Command::Import, 1, kAnyNumber, "at least one file"},
    {"plan", Command::Plan, 0, 1, "at most one project file"},
    {"diagnose", Command::Diagnose, 0, kAnyNumber, "any number of labels"},
    {"stats", Command::Stats, 0, kAnyNumber, "any number of labels"}};

/// Which commands an option is for.
enum Use {
    kForAll,
    kForLink,
    kForLabels,
    kForCyclic,
    kForViews,
    kForRun,
    kForLog,
    kForFiles,
    kForTables,
    kForSymbols,
    kForImport,
    kForPlan
};

struct OptionDescription {
    const char* names; ///< Separated by blanks, the longest last.
    bool hasValue;
    Use use;
};

const OptionDescription kOptions[] = {
    {"p project", true, kForAll},      {"driver", true, kForAll},
    {"json", false, kForAll},          {"h help", false, kForAll},
    {"v version", false, kForAll},     {"address", true, kForLink},
    {"port", true, kForLink},          {"timeout", true, kForLink},
    {"trace", false, kForLink},        {"capture", true, kForLink},
    {"read-only", false, kForLink},    {"force", false, kForLink},
    {"for", true, kForCyclic},         {"once", false, kForRun},
    {"cycle", true, kForCyclic},       {"interval", true, kForViews},
    {"station-off", true, kForCyclic}, {"rtt", true, kForPlan},
    {"mbit", true, kForPlan},          {"o output", true, kForFiles},
    {"every", true, kForLog},          {"rotate-size", true, kForLog},
    {"rotate-every", true, kForLog},   {"keep", true, kForLog},
    {"export", true, kForLog},         {"labels", true, kForLabels},
    {"csv", false, kForTables},        {"tree", false, kForSymbols},
    {"depth", true, kForSymbols},      {"check", false, kForSymbols},
    {"gap", true, kForSymbols},        {"merge", true, kForImport},
    {"name", true, kForImport},        {"area", true, kForImport},
    {"base", true, kForImport},        {"align", true, kForImport},
    {"scope", true, kForImport},       {"all-warnings", false, kForImport}};

bool isFor(Command command, Use use)
{
    switch (use) {
        case kForAll:
            return true;
        case kForLink:
            return isFor(command, kForCyclic) || command == Command::Read ||
                   command == Command::Write || command == Command::Diagnose;
        case kForLabels:
            return isFor(command, kForCyclic) || command == Command::Read ||
                   command == Command::Resolve;
        case kForFiles:
            return command == Command::Log || command == Command::Import;
        case kForTables:
            return command == Command::Read || command == Command::Symbols;
        case kForSymbols:
            return command == Command::Symbols;
        case kForImport:
            return command == Command::Import;
        case kForCyclic:
            return isFor(command, kForViews) || command == Command::Log ||
                   command == Command::Stats;
        case kForViews:
            return command == Command::Run || command == Command::Watch;
        case kForRun:
            return command == Command::Run;
        case kForLog:
            return command == Command::Log;
        case kForPlan:
            break;
    }
    return command == Command::Plan;
}

QStringList namesOf(const OptionDescription& description)
{
    return QString::fromLatin1(description.names).split(QLatin1Char(' '));
}

/// Each 1024 times the one before.
const QString kSizeUnits = QStringLiteral("kmg");
constexpr int kBitsOfSizeUnit = 10;

/// Which durations an option takes.
struct DurationRange {
    double plain; ///< ms of a number without a unit; 0: it needs one.
    double lowest;
    double highest;
};

/// Of times that must not be 0, which is without end to some of them.
constexpr double kAboveZero = std::numeric_limits<double>::min();
constexpr double kMillisecond = 1;
constexpr double kSecond = 1000; // ms
constexpr double kNoPlainNumber = 0;

/// Milliseconds; nothing if it is no duration.
std::optional<double> durationOf(const QString& text, double plain)
{
    if (const std::optional<quint64> whole = values::parseDuration(QStringLiteral("T#") + text))
        return double(*whole);
    const bool hasUnit = text.endsWith(QLatin1String("ms"), Qt::CaseInsensitive);
    bool ok = false;
    const double number = (hasUnit ? text.chopped(2) : text).toDouble(&ok);
    const double unit = hasUnit ? kMillisecond : plain;
    return ok && unit > 0 ? std::optional<double>(number * unit) : std::nullopt;
}

/// What a number without a unit means.
QString plainText(double plain)
{
    if (plain == kNoPlainNumber)
        return QString();
    return plain == kSecond ? QStringLiteral(" or a number of seconds")
                            : QStringLiteral(" or a number of ms");
}

/// Takes values out of the parsed command line and keeps the first complaint.
class OptionReader {
public:
    OptionReader(const QCommandLineParser& parser, QString* error)
        : m_parser(parser), m_error(error)
    {
    }

    bool has(const char* name) const { return m_parser.isSet(QString::fromLatin1(name)); }
    QString text(const char* name) const { return m_parser.value(QString::fromLatin1(name)); }
    QVector<int> integers(const char* name, int lowest, int highest)
    {
        QVector<int> numbers;
        const QStringList texts = m_parser.values(QString::fromLatin1(name));
        for (const QString& text : texts) {
            bool ok = false;
            const int number = text.toInt(&ok, 10);
            if (!ok || number < lowest || number > highest) {
                complain(QStringLiteral("--%1 takes a number from %2 to %3, not %4")
                             .arg(QString::fromLatin1(name))
                             .arg(lowest)
                             .arg(highest)
                             .arg(values::quoted(text)));
            }
            numbers.append(number);
        }
        return numbers;
    }
    int integer(const char* name, int lowest, int highest, int otherwise)
    {
        return has(name) ? integers(name, lowest, highest).last() : otherwise;
    }
    double number(const char* name, double lowest, double highest, double otherwise)
    {
        if (!has(name))
            return otherwise;
        bool ok = false;
        const double number = text(name).toDouble(&ok);
        if (ok && number >= lowest && number <= highest)
            return number;
        complain(QStringLiteral("--%1 takes a number from %2 to %3, not %4")
                     .arg(QString::fromLatin1(name))
                     .arg(lowest)
                     .arg(highest)
                     .arg(values::quoted(text(name))));
        return otherwise;
    }
    /// Milliseconds of a duration such as 500ms, 10s or 1m30s, or of a number of `plain` ms, which
    /// may have a fraction; `otherwise` if it is not given.
    double duration(const char* name, const DurationRange& range, double otherwise)
    {
        if (!has(name))
            return otherwise;
        const QString written = text(name);
        const std::optional<double> duration = durationOf(written, range.plain);
        if (duration && *duration >= range.lowest && *duration <= range.highest)
            return *duration;
        complain(QStringLiteral("--%1 takes a duration such as 500ms, 10s or 1m30s%2, from %3 to "
                                "%4, not %5")
                     .arg(QString::fromLatin1(name), plainText(range.plain),
                          values::durationText(quint64(std::ceil(range.lowest))).mid(2),
                          values::durationText(quint64(range.highest)).mid(2),
                          values::quoted(written)));
        return otherwise;
    }
    /// The same in whole milliseconds, of which a fraction counts as one.
    int milliseconds(const char* name, const DurationRange& range, int otherwise)
    {
        return int(std::ceil(duration(name, range, otherwise)));
    }
    /// Bytes of a size such as 64M; 0 if it is not given.
    qint64 size(const char* name)
    {
        if (!has(name))
            return 0;
        const QString written = text(name);
        const int unit = written.isEmpty() ? -1 : int(kSizeUnits.indexOf(written.back().toLower()));
        bool ok = false;
        const qint64 count = (unit < 0 ? written : written.chopped(1)).toLongLong(&ok, 10);
        const int shift = kBitsOfSizeUnit * (unit + 1);
        if (ok && count > 0 && count <= (std::numeric_limits<qint64>::max() >> shift))
            return count << shift;
        complain(QStringLiteral("--%1 takes a number of bytes such as 500k, 64M or 2G, not %2")
                     .arg(QString::fromLatin1(name), values::quoted(written)));
        return 0;
    }
    void complain(const QString& text)
    {
        if (m_error->isEmpty())
            *m_error = text;
    }

    QStringList texts(const char* name) const { return m_parser.values(QString::fromLatin1(name)); }

private:
    const QCommandLineParser& m_parser;
    QString* m_error;
};

const CommandName* findCommand(const QStringList& arguments, OptionReader* reader)
{
    QStringList names;
    for (const CommandName& command : kCommands) {
        const QString name = QString::fromLatin1(command.name);
        if (!arguments.isEmpty() && arguments.first() == name)
            return &command;
        names.append(name);
    }
    reader->complain(arguments.isEmpty()
                         ? QStringLiteral("a command is expected: %1 (plc --help tells more)")
                               .arg(names.join(QStringLiteral(", ")))
                         : QStringLiteral("%1 is no command%2; there are %3")
                               .arg(values::quoted(arguments.first()),
                                    values::nearestNameHint(arguments.first(), names),
                                    names.join(QStringLiteral(", "))));
    return nullptr;
}

void checkUse(const CommandName& command, OptionReader* reader)
{
    for (const OptionDescription& option : kOptions) {
        const QByteArray name = namesOf(option).last().toLatin1();
        if (reader->has(name.constData()) && !isFor(command.command, option.use)) {
            reader->complain(
                QStringLiteral("--%1 is no option of plc %2")
                    .arg(QString::fromLatin1(name), QString::fromLatin1(command.name)));
        }
    }
}

LogOptions readLogValues(OptionReader* reader)
{
    LogOptions log;
    log.output = reader->text("output");
    log.exported = reader->text("export");
    log.every = reader->milliseconds("every", {kNoPlainNumber, kAboveZero, kLongestTime}, 0);
    log.rotateSize = reader->size("rotate-size");
    log.rotateEvery = qint64(std::ceil(
        reader->duration("rotate-every", {kNoPlainNumber, kAboveZero, double(kLongestPeriod)}, 0)));
    log.keep = reader->integer("keep", 1, std::numeric_limits<int>::max(), 0);
    return log;
}

void checkExport(const Options& options, OptionReader* reader)
{
    if (!options.arguments.isEmpty())
        reader->complain(QStringLiteral("--export takes the whole database; leave out the labels"));
    if (isDatabase(options.log.output))
        reader->complain(QStringLiteral("--export writes a .csv file, not %1")
                             .arg(values::quoted(options.log.output)));
    for (const char* name : {"every", "rotate-size", "rotate-every", "keep"}) {
        if (reader->has(name))
            reader->complain(
                QStringLiteral("--%1 has no meaning with --export").arg(QString::fromLatin1(name)));
    }
}

void checkLog(const Options& options, OptionReader* reader)
{
    const LogOptions& log = options.log;
    const bool rotates = log.rotateSize > 0 || log.rotateEvery > 0;
    if (log.output.isEmpty())
        reader->complain(QStringLiteral("plc log takes --output FILE, ending in .csv or .sqlite"));
    else if (!isDatabase(log.output) && !log.output.endsWith(kCsvSuffix, Qt::CaseInsensitive))
        reader->complain(
            QStringLiteral("--output takes a file that ends in .csv, .sqlite, .sqlite3 "
                           "or .db, not %1")
                .arg(values::quoted(log.output)));
    if (rotates && isDatabase(log.output))
        reader->complain(QStringLiteral("--rotate-size and --rotate-every are for .csv files"));
    if (log.keep > 0 && !rotates)
        reader->complain(QStringLiteral("--keep goes with --rotate-size or --rotate-every"));
    if (!log.exported.isEmpty())
        checkExport(options, reader);
}

SymbolsOptions readSymbolsValues(OptionReader* reader)
{
    SymbolsOptions symbols;
    symbols.tree = reader->has("tree");
    symbols.check = reader->has("check");
    symbols.depth = reader->integer("depth", 1, kHighestNumber, symbols.depth);
    symbols.gap = reader->integer("gap", 1, kHighestNumber, symbols.gap);
    return symbols;
}

void checkSymbols(const Options& options, OptionReader* reader)
{
    if (reader->has("depth") && !options.symbols.tree)
        reader->complain(QStringLiteral("--depth goes with --tree"));
    if (reader->has("gap") && !options.symbols.check)
        reader->complain(QStringLiteral("--gap goes with --check"));
    if (options.symbols.tree && options.symbols.check)
        reader->complain(QStringLiteral("--tree and --check are two different lists; give one"));
    if (options.csv && (options.symbols.tree || options.symbols.check))
        reader->complain(QStringLiteral("--csv is for the plain list; leave out --tree, --check"));
    if (options.symbols.check && !options.arguments.isEmpty())
        reader->complain(QStringLiteral("--check takes all of the project; leave out the pattern"));
}

/// AREA:OFFSET
std::optional<iec::MemoryPlace> readBase(OptionReader* reader)
{
    if (!reader->has("base"))
        return {};
    const QStringList parts = reader->text("base").split(QLatin1Char(':'));
    bool areaIsGood = false, offsetIsGood = false;
    iec::MemoryPlace base;
    base.area = parts.first().toInt(&areaIsGood, 10);
    base.offset = parts.last().toInt(&offsetIsGood, 10);
    const bool isGood = areaIsGood && offsetIsGood && parts.size() == 2 && base.area >= 0 &&
                        base.area <= project::kHighestAreaIndex && base.offset >= 0;
    if (!isGood) {
        reader->complain(QStringLiteral("--base takes AREA:OFFSET such as 1:2000, not %1")
                             .arg(values::quoted(reader->text("base"))));
    }
    return base;
}

ImportOptions readImportValues(OptionReader* reader)
{
    ImportOptions import;
    import.output = reader->text("output");
    import.merged = reader->text("merge");
    import.name = reader->text("name");
    import.places.defaultArea = reader->integer("area", 0, project::kHighestAreaIndex, 0);
    import.places.base = readBase(reader);
    import.places.alignment = reader->integer("align", 1, 8, import.places.alignment);
    import.places.globalScope = reader->text("scope");
    import.allWarnings = reader->has("all-warnings");
    return import;
}

void checkImport(const ImportOptions& import, OptionReader* reader)
{
    const int alignment = import.places.alignment;
    if ((alignment & (alignment - 1)) != 0)
        reader->complain(QStringLiteral("--align takes 1, 2, 4 or 8, not %1").arg(alignment));
    if (!import.merged.isEmpty() && !import.name.isEmpty())
        reader->complain(QStringLiteral("--merge keeps the project's name; leave out --name"));
    const QString scope = import.places.globalScope;
    if (!scope.isEmpty() && !project::isLabelName(scope))
        reader->complain(QStringLiteral("--scope takes a name without . [ ] , = quotes and "
                                        "blanks, not %1")
                             .arg(values::quoted(scope)));
}

/// An empty value is a variable of a script that was never set, and not what is used without the
/// option.
void checkEmptyValues(OptionReader* reader)
{
    for (const OptionDescription& option : kOptions) {
        const QByteArray name = namesOf(option).last().toLatin1();
        const QStringList texts = reader->texts(name.constData());
        for (const QString& text : texts) {
            if (option.hasValue && text.trimmed().isEmpty())
                reader->complain(QStringLiteral("--%1 has an empty value; give one, or leave the "
                                                "option out")
                                     .arg(QString::fromLatin1(name)));
        }
    }
}

Options readValues(OptionReader* reader)
{
    Options options;
    options.projectFile =
        reader->has("project") ? reader->text("project") : qEnvironmentVariable("PLC_PROJECT");
    options.driverFile = reader->text("driver");
    options.address = reader->text("address");
    options.port = reader->integer("port", 1, kHighestPort, 0);
    options.timeout = reader->milliseconds("timeout", {kMillisecond, kAboveZero, kLongestTime}, 0);
    options.json = reader->has("json");
    options.trace = reader->has("trace");
    options.captureFile = reader->text("capture");
    options.readOnly = reader->has("read-only");
    options.force = reader->has("force");
    options.once = reader->has("once");
    options.duration = reader->milliseconds("for", {kSecond, kAboveZero, kLongestRun}, 0);
    options.interval = reader->milliseconds("interval", {kMillisecond, kAboveZero, kLongestTime},
                                            options.interval);
    options.cycleTime =
        reader->milliseconds("cycle", {kMillisecond, 0, kLongestTime}, options.cycleTime);
    options.csv = reader->has("csv");
    options.labelFile = reader->text("labels");
    options.log = readLogValues(reader);
    options.symbols = readSymbolsValues(reader);
    options.import = readImportValues(reader);
    options.roundTrip =
        reader->duration("rtt", {kMillisecond, 0, kLongestRoundTrip}, options.roundTrip);
    options.bandwidth = reader->number("mbit", kSlowestNetwork, kFastestNetwork, options.bandwidth);
    options.stationsOff = reader->integers("station-off", 0, kHighestStation);
    return options;
}

QString informationText(const OptionReader& reader)
{
    if (reader.has("help"))
        return QString::fromUtf8(kHelp);
    if (reader.has("version"))
        return QStringLiteral("plc ") + QCoreApplication::applicationVersion();
    return QString();
}

} // namespace

bool isDatabase(const QString& logFile)
{
    for (const char* suffix : {".sqlite", ".sqlite3", ".db"}) {
        if (logFile.endsWith(QLatin1String(suffix), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

std::optional<Options> readOptions(const QStringList& arguments, QString* error)
{
    QCommandLineParser parser;
    for (const OptionDescription& description : kOptions) {
        parser.addOption(
            QCommandLineOption(namesOf(description), QString(),
                               description.hasValue ? QStringLiteral("value") : QString()));
    }
    if (!parser.parse(arguments)) {
        *error = parser.errorText() + QStringLiteral(" --help lists the options.");
        return {};
    }
    error->clear();
    OptionReader reader(parser, error);
    checkEmptyValues(&reader);
    Options options = readValues(&reader);
    options.information = informationText(reader);
    if (!options.information.isEmpty())
        return options;
    options.arguments = parser.positionalArguments();
    const CommandName* command = findCommand(options.arguments, &reader);
    if (command != nullptr) {
        options.command = command->command;
        options.arguments.removeFirst();
        checkUse(*command, &reader);
        const int count = int(options.arguments.size());
        // A file of labels takes the place of all others.
        const int fewest = options.labelFile.isEmpty() ? command->fewestArguments : 0;
        if (count < fewest || count > command->mostArguments) {
            reader.complain(QStringLiteral("plc %1 takes %2")
                                .arg(QString::fromLatin1(command->name),
                                     QString::fromLatin1(command->argumentsText)));
        }
        if (options.command == Command::Plan && count == 1)
            options.projectFile = options.arguments.takeFirst();
        if (options.command == Command::Log)
            checkLog(options, &reader);
        if (options.command == Command::Symbols)
            checkSymbols(options, &reader);
        if (options.command == Command::Import)
            checkImport(options.import, &reader);
        if (options.force && options.captureFile.isEmpty())
            reader.complain(QStringLiteral("--force goes with --capture"));
        if (options.csv && options.json)
            reader.complain(QStringLiteral("--csv and --json are two different forms; give one"));
        const bool needsProject =
            options.command != Command::Import && options.log.exported.isEmpty();
        if (options.projectFile.isEmpty() && needsProject) {
            reader.complain(
                QStringLiteral("no project file; give it with --project or in PLC_PROJECT"));
        }
    }
    return error->isEmpty() ? std::optional<Options>(options) : std::nullopt;
}

} // namespace plc::cli
