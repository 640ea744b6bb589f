#include "project/project.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <limits>

#include "project/declaration_reader.h"
#include "project/json_document.h"
#include "project/json_node.h"
#include "project/label_lookup.h"
#include "project/setting_limits.h"
#include "project/value_limits.h"
#include "streams/input_file.h"
#include "values/nearest_name.h"

namespace plc::project {
namespace {

constexpr streams::InputFileKind kProjectFile = {"a project file", qint64(32) * 1024 * 1024,
                                                 "a project file has less"};
constexpr int kMostCyclicLabels = 100000;
constexpr qint64 kLargestArea = std::numeric_limits<qint32>::max();
constexpr int kMostRetries = 100;
constexpr int kLongestTime = 24 * 60 * 60 * 1000; // ms

void readPlc(const JsonNode& node, Project* project)
{
    node.checkKeys({}, {"address", "port"});
    if (node.has("address")) {
        project->address = node.member("address").text();
        if (project->address.trimmed().isEmpty())
            node.member("address").failExpecting(QStringLiteral("a host name or an IP address"));
    }
    if (node.has("port"))
        project->port = quint16(node.member("port").integer(0, kHighestPort));
}

struct NumberSetting {
    const char* key;
    int ProjectSettings::*field;
    int minimum;
    int maximum;
};

constexpr NumberSetting kNumberSettings[] = {
    {"maxReadBytes", &ProjectSettings::maxReadBytes, 1, kMostReadBytes},
    {"defaultStation", &ProjectSettings::defaultStation, 0, kHighestStation},
    {"retryLimit", &ProjectSettings::retryLimit, 0, kMostRetries},
    {"connectTimeout", &ProjectSettings::connectTimeout, 1, kLongestTime},
    {"replyTimeout", &ProjectSettings::replyTimeout, 1, kLongestTime},
    {"reconnectDelay", &ProjectSettings::reconnectDelay, 1, kLongestTime},
    {"reconnectDelayLimit", &ProjectSettings::reconnectDelayLimit, 1, kLongestTime},
    {"staleAfter", &ProjectSettings::staleAfter, 1, kLongestTime}};

void readSettings(const JsonNode& node, ProjectSettings* settings)
{
    JsonKeys keys{"multiStation", "readOnly"};
    for (const NumberSetting& setting : kNumberSettings)
        keys.push_back(setting.key);
    node.checkKeys({}, keys);
    for (const NumberSetting& setting : kNumberSettings) {
        if (node.has(setting.key)) {
            settings->*setting.field =
                int(node.member(setting.key).integer(setting.minimum, setting.maximum));
        }
    }
    if (node.has("multiStation"))
        settings->multiStation = node.member("multiStation").boolean();
    if (node.has("readOnly"))
        settings->readOnly = node.member("readOnly").boolean();
    if (settings->reconnectDelayLimit < settings->reconnectDelay) {
        node.fail(QStringLiteral("found a reconnectDelayLimit of %1 ms, expected at least the "
                                 "reconnectDelay of %2 ms")
                      .arg(settings->reconnectDelayLimit)
                      .arg(settings->reconnectDelay));
    }
}

QVector<MemoryArea> readAreas(const JsonNode& list)
{
    QVector<MemoryArea> areas;
    QSet<int> indexes;
    for (const JsonNode node : list.elements()) {
        node.checkKeys({"index", "size"}, {"description"});
        MemoryArea area;
        area.index = int(node.member("index").integer(0, kHighestAreaIndex));
        area.size = qint32(node.member("size").integer(1, kLargestArea));
        if (indexes.contains(area.index))
            node.member("index").fail(QStringLiteral("area %1 is declared twice").arg(area.index));
        indexes.insert(area.index);
        areas.append(area);
    }
    return areas;
}

/// Reads the cyclic labels of a project whose scopes are read already.
class CyclicReader {
public:
    explicit CyclicReader(const Project& project)
        : m_finder(project),
          m_multiStation(project.settings.multiStation),
          m_maxReadBytes(project.settings.maxReadBytes)
    {
    }

    QVector<CyclicLabel> read(const JsonNode& list)
    {
        for (const JsonNode node : list.elements()) {
            if (!node.errors()->isEmpty())
                return {};
            if (node.value().isText())
                readLabel(node, {});
            else
                readObject(node);
        }
        return m_labels;
    }

private:
    void readObject(const JsonNode& node)
    {
        if (!node.value().isObject()) {
            node.failExpecting(QStringLiteral("a label or an object with the key \"label\""));
            return;
        }
        node.checkKeys({"label"}, {"elements", "station"});
        CyclicLabel form;
        if (node.has("elements"))
            form.elements = int(node.member("elements").integer(1, kLargestArea));
        if (node.has("station")) {
            form.station = int(node.member("station").integer(0, kHighestStation));
            if (!m_multiStation) {
                node.member("station").fail(QStringLiteral(
                    "a station of its own needs \"multiStation\": true in the settings"));
            }
        }
        readLabel(node.member("label"), form);
    }

    void readLabel(const JsonNode& node, const CyclicLabel& form)
    {
        const QString label = node.text();
        const Expected<QStringList> labels = labelsOf(label, form);
        if (!labels) {
            node.fail(
                QStringLiteral("label %1: %2").arg(values::quoted(label), labels.error().text));
            return;
        }
        for (const QString& each : *labels)
            m_labels.append({each, form.elements, form.station});
    }

    /// Those that a label stands for, whose values are counted.
    Expected<QStringList> labelsOf(const QString& label, const CyclicLabel& form)
    {
        const Expected<QVector<LabelPart>> parts = parseLabel(label);
        if (!parts)
            return parts.error();
        const Expected<LabelTarget> target = m_finder.find(*parts);
        if (!target)
            return target.error();
        if (form.elements > target->elements) {
            return Error{QStringLiteral("%1 elements from here, but the array ends after %2")
                             .arg(form.elements)
                             .arg(target->elements)};
        }
        const Expected<void> fits =
            checkValueLimits(*target->variable, form.elements, m_maxReadBytes);
        if (!fits)
            return fits.error();
        Expected<QStringList> labels =
            expandPattern(*parts, kMostCyclicLabels - int(m_labels.size()));
        if (!labels)
            return labels.error();
        const Expected<void> room = addValues(*target->variable, form.elements, labels->size());
        if (!room)
            return room.error();
        return labels;
    }

    /// Adds so many values to those before them; an error when all together are too large.
    Expected<void> addValues(const Variable& variable, qint64 elements, qint64 values)
    {
        m_bytes += values * bufferBytes(variable, elements);
        m_pieces += values * transferPieces(variable, elements, m_maxReadBytes);
        if (m_bytes > kMostCyclicBytes) {
            return Error{
                QStringLiteral("the cyclic values up to here have %1 bytes, and may have %2")
                    .arg(m_bytes)
                    .arg(kMostCyclicBytes)};
        }
        if (m_pieces > kMostCyclicPieces) {
            return Error{
                QStringLiteral("the cyclic values up to here fall into %1 pieces of at most "
                               "%2 bytes (maxReadBytes), and may fall into %3")
                    .arg(m_pieces)
                    .arg(m_maxReadBytes)
                    .arg(kMostCyclicPieces)};
        }
        return {};
    }

    LabelFinder m_finder;
    bool m_multiStation;
    int m_maxReadBytes;
    QVector<CyclicLabel> m_labels;
    qint64 m_bytes = 0;
    qint64 m_pieces = 0;
};

Project readProject(const JsonNode& root, SharedMemoryRule rule)
{
    Project project;
    root.checkKeys({"name", "areas", "scopes"},
                   {"$schema", "description", "plc", "settings", "structures", "cyclic"});
    if (!root.errors()->isEmpty())
        return project;
    project.name = root.member("name").text();
    if (project.name.trimmed().isEmpty())
        root.member("name").failExpecting(QStringLiteral("a name"));
    if (root.has("plc"))
        readPlc(root.member("plc"), &project);
    if (root.has("settings"))
        readSettings(root.member("settings"), &project.settings);
    project.areas = readAreas(root.member("areas"));
    DeclarationReader declarations(project.areas, rule);
    if (root.has("structures"))
        project.structures = declarations.readStructures(root.member("structures"));
    if (root.errors()->isEmpty())
        project.scopes = declarations.readScopes(root.member("scopes"));
    if (root.errors()->isEmpty() && root.has("cyclic"))
        project.cyclic = CyclicReader(project).read(root.member("cyclic"));
    return project;
}

Expected<Project> parse(QByteArray json, const QString& name, SharedMemoryRule rule)
{
    if (const Expected<void> isGood = streams::checkInputSize(json, name, kProjectFile); !isGood)
        return isGood.error();
    const Expected<JsonDocument> document = JsonDocument::parse(std::move(json));
    if (!document) {
        return Error{QStringLiteral("%1: %2").arg(name, document.error().text)};
    }
    DocumentErrors errors(name);
    Project project = readProject(JsonNode(document->root(), &errors), rule);
    if (!errors.isEmpty()) {
        return Error{errors.first()};
    }
    return project;
}

} // namespace

QString plcName(const QString& path)
{
    return QFileInfo(path).completeBaseName();
}

Expected<Project> loadProject(const QString& path, SharedMemoryRule rule)
{
    Expected<QByteArray> json = streams::readInputFile(path, kProjectFile);
    if (!json)
        return json.error();
    return parse(std::move(*json), path, rule);
}

Expected<Project> parseProject(const QByteArray& json, const QString& name, SharedMemoryRule rule)
{
    return parse(json, name, rule);
}

} // namespace plc::project
