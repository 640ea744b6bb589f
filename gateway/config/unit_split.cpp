#include "gateway/config/unit_split.h"

#include <QtCore/QDir>
#include <QtCore/QHash>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

#include "gateway/config/config_text.h"
#include "gateway/config/settings.h"
#include "values/csv.h"
#include "values/nearest_name.h"

namespace plc::gateway {
namespace {

const char kDevices[] = "devices";
const char kName[] = "name";
const char kPort[] = "port";
const char kCycle[] = "cycle";

const QStringList kColumns = {QLatin1String(kName), QStringLiteral("project"),
                              QStringLiteral("address"), QLatin1String(kPort),
                              QLatin1String(kCycle)};

/// Ports, and cycle times in ms, which may also be such as 1s.
const QStringList kNumericColumns = {QLatin1String(kPort), QLatin1String(kCycle)};

constexpr int kNumberBase = 10;
constexpr int kFewestDigits = 2;

/// "07"
QString numberText(int number)
{
    return QStringLiteral("%1").arg(number, kFewestDigits, kNumberBase, QLatin1Char('0'));
}

/// What file names and units of the service manager take everywhere.
QString plainName(QString name)
{
    for (QChar& character : name) {
        const bool isPlain = (character >= QLatin1Char('a') && character <= QLatin1Char('z')) ||
                             (character >= QLatin1Char('A') && character <= QLatin1Char('Z')) ||
                             (character >= QLatin1Char('0') && character <= QLatin1Char('9')) ||
                             QStringLiteral("._-").contains(character);
        if (!isPlain)
            character = QLatin1Char('-');
    }
    return name;
}

/// "changes.sqlite" becomes "changes-02.sqlite". Each service has folders of its own.
QString numberedPath(const QString& path, int number)
{
    if (path.startsWith(QLatin1String("$STATE_DIRECTORY/")) ||
        path.startsWith(QLatin1String("$RUNTIME_DIRECTORY/")))
        return path;
    const int slash = int(path.lastIndexOf(QLatin1Char('/')));
    const int point = int(path.lastIndexOf(QLatin1Char('.')));
    const int end = point > slash + 1 ? point : int(path.size());
    return path.left(end) + QLatin1Char('-') + numberText(number) + path.mid(end);
}

void numberPath(const char* key, int number, QJsonObject* object)
{
    const QLatin1String name(key);
    if (object->contains(name))
        object->insert(name, numberedPath(object->value(name).toString(), number));
}

/// "127.0.0.1:9108" becomes "127.0.0.1:9109".
void numberPort(int number, QJsonObject* metrics)
{
    const QLatin1String key("listen");
    if (!metrics->contains(key))
        return;
    const QString listen = metrics->value(key).toString();
    const int colon = int(listen.lastIndexOf(QLatin1Char(':')));
    metrics->insert(
        key, listen.left(colon + 1) + QString::number(listen.mid(colon + 1).toInt() + number - 1));
}

/// Leads from one folder to where a path leads from another.
class PathMove {
public:
    explicit PathMove(const SplitTask& task)
        : m_from(realFolder(task.patternFolder)), m_to(realFolder(task.folder))
    {
    }

    void apply(const char* key, QJsonObject* object) const
    {
        const QLatin1String name(key);
        const QString path = object->value(name).toString();
        // Others than relative ones: those of a folder of the service begin with its variable.
        if (m_from == m_to || path.isEmpty() || QDir::isAbsolutePath(path) ||
            path.startsWith(QLatin1Char('$')))
            return;
        object->insert(name, m_to.relativeFilePath(m_from.absoluteFilePath(path)));
    }

private:
    /// Steps upwards lead from the real folder, whatever links lead to it.
    static QDir realFolder(const QString& path)
    {
        const QString real = QDir(path).canonicalPath();
        return QDir(real.isEmpty() ? QDir(path).absolutePath() : real);
    }

    const QDir m_from;
    const QDir m_to;
};

QJsonArray movedBrokers(const QJsonArray& brokers, const PathMove& move)
{
    QJsonArray moved;
    for (const QJsonValue& each : brokers) {
        QJsonObject broker = each.toObject();
        move.apply("passwordFile", &broker);
        const QLatin1String tlsKey("tls");
        if (broker.contains(tlsKey)) {
            QJsonObject tls = broker.value(tlsKey).toObject();
            for (const char* key : {"authorities", "certificate", "key"})
                move.apply(key, &tls);
            broker.insert(tlsKey, tls);
        }
        moved.append(broker);
    }
    return moved;
}

/// The pattern for a unit, still without devices.
QJsonObject numberedUnit(QJsonObject unit, int number)
{
    const QLatin1String node("node");
    unit.insert(node, unit.value(node).toString() + QLatin1Char('-') + numberText(number));
    for (const char* key : {"audit", "status"})
        numberPath(key, number, &unit);
    const std::pair<const char*, const char*> nested[] = {{"store", "file"}, {"metrics", "socket"}};
    for (const auto& [key, path] : nested) {
        QJsonObject object = unit.value(QLatin1String(key)).toObject();
        if (object.isEmpty())
            continue;
        numberPath(path, number, &object);
        numberPort(number, &object);
        unit.insert(QLatin1String(key), object);
    }
    return unit;
}

/// Makes devices of the lines of a list.
class ListReader {
public:
    ListReader(const QString& listName, const QJsonObject& pattern)
        : m_listName(listName), m_pattern(pattern)
    {
    }

    Expected<QVector<QJsonObject>> read(const QString& list)
    {
        const Expected<QVector<values::csv::Record>> records = values::csv::parse(list);
        if (!records)
            return Error{QStringLiteral("%1: %2").arg(m_listName, records.error().text)};
        QVector<QJsonObject> devices;
        for (const values::csv::Record& record : *records) {
            m_line = record.line;
            const bool isHead = &record == &records->first();
            if (isHead ? !readHead(record.fields) : !readDevice(record.fields, &devices))
                return Error{QStringLiteral("%1: line %2: %3")
                                 .arg(m_listName, QString::number(m_line), m_problem)};
        }
        if (devices.isEmpty())
            return Error{QStringLiteral("%1: found no PLC behind the line with the names of the "
                                        "columns")
                             .arg(m_listName)};
        return devices;
    }

private:
    bool fail(const QString& problem)
    {
        m_problem = problem;
        return false;
    }

    bool readHead(const QStringList& fields)
    {
        for (const QString& field : fields) {
            const QString column = field.trimmed().toLower();
            if (!kColumns.contains(column))
                return fail(QStringLiteral("unknown column %1%2, expected some of %3")
                                .arg(values::quoted(field),
                                     values::nearestNameHint(field, kColumns),
                                     kColumns.join(QLatin1String(", "))));
            if (m_columns.contains(column))
                return fail(QStringLiteral("column %1 stands there twice").arg(column));
            m_columns.append(column);
        }
        if (!m_columns.contains(QLatin1String(kName)))
            return fail(QStringLiteral("column name is missing"));
        return true;
    }

    bool readDevice(const QStringList& fields, QVector<QJsonObject>* devices)
    {
        if (fields.size() != m_columns.size())
            return fail(QStringLiteral("found %1 fields, expected %2")
                            .arg(fields.size())
                            .arg(m_columns.size()));
        QJsonObject device = m_pattern;
        device.remove(QLatin1String(kName));
        for (int i = 0; i < int(fields.size()); ++i) {
            const QString field = fields[i].trimmed();
            bool isNumber = false;
            const int number = field.toInt(&isNumber, kNumberBase);
            if (kNumericColumns.contains(m_columns[i]) && isNumber)
                device.insert(m_columns[i], number);
            else if (!field.isEmpty())
                device.insert(m_columns[i], field);
        }
        devices->append(device);
        return checkName(device.value(QLatin1String(kName)).toString());
    }

    /// Devices of different units go to one broker and to one list of PLCs.
    bool checkName(const QString& name)
    {
        if (name.isEmpty())
            return fail(QStringLiteral("the name is empty"));
        const int earlier = m_lines.value(name.toCaseFolded(), 0);
        if (earlier > 0)
            return fail(QStringLiteral("%1 is in line %2 already, perhaps in another case")
                            .arg(values::quoted(name))
                            .arg(earlier));
        m_lines.insert(name.toCaseFolded(), m_line);
        return true;
    }

    const QString m_listName;
    const QJsonObject m_pattern;
    QStringList m_columns;
    QHash<QString, int> m_lines; ///< By name.
    int m_line = 0;
    QString m_problem;
};

/// The pattern, checked as any configuration is.
Expected<QJsonObject> readPattern(const SplitTask& task)
{
    const Expected<GatewaySettings> settings = parseSettings(task.pattern, task.patternName);
    if (!settings)
        return settings.error();
    if (settings->devices.size() != 1)
        return Error{QStringLiteral("%1: /devices: found %2 devices, expected the one that all "
                                    "others are made after")
                         .arg(task.patternName)
                         .arg(settings->devices.size())};
    return QJsonDocument::fromJson(task.pattern).object();
}

} // namespace

Expected<QVector<UnitConfiguration>> splitUnits(const SplitTask& task)
{
    const Expected<QJsonObject> pattern = readPattern(task);
    if (!pattern)
        return pattern.error();
    const QLatin1String devicesKey(kDevices);
    const QJsonObject patternDevice = pattern->value(devicesKey).toArray().first().toObject();
    const Expected<QVector<QJsonObject>> devices =
        ListReader(task.listName, patternDevice).read(task.list);
    if (!devices)
        return devices.error();
    const int most = std::clamp(task.devices, 1, kMostDevices);
    const QString node = pattern->value(QLatin1String("node")).toString();
    const PathMove move(task);
    const QLatin1String brokersKey("brokers");
    QVector<UnitConfiguration> units;
    for (int first = 0; first < int(devices->size()); first += most) {
        const int number = int(units.size()) + 1;
        QJsonArray some;
        for (QJsonObject device : devices->mid(first, most)) {
            move.apply("project", &device);
            some.append(device);
        }
        QJsonObject unit = numberedUnit(*pattern, number);
        unit.insert(brokersKey, movedBrokers(pattern->value(brokersKey).toArray(), move));
        unit.insert(devicesKey, some);
        const QString name = QStringLiteral("%1-%2.json").arg(plainName(node), numberText(number));
        units.append({name, configText(unit)});
        // What the list has, and a port beyond the last one, shows now and not in operation.
        const Expected<GatewaySettings> settings = parseSettings(units.last().json, name);
        if (!settings)
            return settings.error();
    }
    return units;
}

} // namespace plc::gateway
