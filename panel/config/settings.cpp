#include "panel/config/settings.h"

#include <arpa/inet.h>

#include <QtCore/QFileInfo>

#include <algorithm>

#include "configuration/configuration_file.h"
#include "configuration/field_readers.h"
#include "configuration/listen_address.h"
#include "configuration/service_paths.h"
#include "panel/config/plc_reader.h"
#include "project/json_node.h"
#include "project/project.h"
#include "values/nearest_name.h"

namespace plc::panel {

using project::JsonNode;

namespace {

constexpr int kLongestHost = 255;                       // characters
constexpr qint64 kSmallestRecord = qint64(1024) * 1024; // bytes
constexpr qint64 kDay = qint64(24) * 60 * 60 * 1000;    // ms
constexpr qint64 kMostDays = 36500;

void readListen(const JsonNode& node, PanelSettings* settings)
{
    const auto found = configuration::parseListenAddress(node.text());
    if (!found) {
        node.failExpecting(QStringLiteral("an address with a port, such as 127.0.0.1:8080"));
        return;
    }
    settings->address = found->address;
    settings->port = found->port;
}

bool isHost(const QString& text)
{
    const QByteArray bytes = text.toLatin1();
    in6_addr address = {};
    if (::inet_pton(AF_INET6, bytes.constData(), &address) == 1)
        return true;
    const auto isOfNames = [](QChar character) {
        const ushort code = character.unicode();
        return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') ||
               (code >= '0' && code <= '9') || code == '-' || code == '.' || code == '_';
    };
    return !text.isEmpty() && text.size() <= kLongestHost &&
           std::all_of(text.begin(), text.end(), isOfNames);
}

/// Names of other scripts stand as browsers send them: in letters of ASCII ("xn--…").
QString readHost(const JsonNode& node)
{
    QString host = node.text();
    if (!isHost(host))
        node.failExpecting(
            QStringLiteral("a name or an address without a port, such as panel.example"));
    return host;
}

void readTls(const JsonNode& node, PanelSettings* settings)
{
    node.checkKeys({"certificate", "key"}, {});
    settings->certificate = configuration::readPath(node.member("certificate"));
    settings->key = configuration::readPath(node.member("key"));
}

/// Days, for longer than the other durations of a configuration.
qint64 readDays(const JsonNode& node)
{
    const QString text = node.text();
    bool ok = false;
    const qint64 days = text.endsWith(QLatin1Char('d')) ? text.chopped(1).toLongLong(&ok) : 0;
    if (ok && days >= 1 && days <= kMostDays)
        return days * kDay;
    node.failExpecting(QStringLiteral("a number of days such as \"400d\""));
    return kDay;
}

RecordSettings readRecord(const JsonNode& node)
{
    RecordSettings record;
    node.checkKeys({"file"}, {"size", "age"});
    record.file = configuration::readPath(node.member("file"));
    if (node.has("size"))
        record.size = configuration::readSize(node.member("size"), kSmallestRecord);
    if (node.has("age"))
        record.age = readDays(node.member("age"));
    return record;
}

void readFiles(const JsonNode& root, PanelSettings* settings)
{
    if (root.has("users"))
        settings->usersFile = configuration::readPath(root.member("users"));
    if (root.has("audit"))
        settings->auditFile = configuration::readPath(root.member("audit"));
    if (root.has("record"))
        settings->record = readRecord(root.member("record"));
    if (root.has("recipes"))
        settings->recipes = configuration::readPath(root.member("recipes"));
}

PanelSettings readSettings(const JsonNode& root)
{
    PanelSettings settings;
    root.checkKeys({"plcs"}, {"$schema", "listen", "hosts", "socket", "tls", "users", "audit",
                              "record", "readOnly", "recipes"});
    if (!root.errors()->isEmpty())
        return settings;
    if (root.has("listen"))
        readListen(root.member("listen"), &settings);
    if (root.has("hosts")) {
        for (const JsonNode host : root.member("hosts").elements())
            settings.hosts.append(readHost(host));
    }
    if (root.has("socket"))
        settings.socket = configuration::readSocketPath(root.member("socket"));
    if (root.has("tls"))
        readTls(root.member("tls"), &settings);
    readFiles(root, &settings);
    if (root.has("readOnly"))
        settings.isReadOnly = root.member("readOnly").boolean();
    settings.plcs = readPlcs(root.member("plcs"));
    return settings;
}

void resolvePaths(const QString& folder, PanelSettings* settings)
{
    for (QString* path :
         {&settings->socket, &settings->certificate, &settings->key, &settings->usersFile,
          &settings->auditFile, &settings->record.file, &settings->recipes})
        *path = configuration::resolvedPath(*path, folder);
    for (PlcSettings& plc : settings->plcs)
        plc.project = configuration::resolvedPath(plc.project, folder);
}

} // namespace

Expected<PanelSettings> loadSettings(const QString& path)
{
    const Expected<QByteArray> json =
        streams::readInputFile(path, configuration::kConfigurationFile);
    if (!json)
        return json.error();
    Expected<PanelSettings> settings = parseSettings(*json, path);
    if (settings)
        resolvePaths(QFileInfo(path).absolutePath(), &*settings);
    return settings;
}

Expected<PanelSettings> parseSettings(const QByteArray& json, const QString& name)
{
    return configuration::parseConfiguration(json, name, &readSettings);
}

Expected<QVector<PlcSettings>> plcsOfProjects(const QStringList& projects)
{
    QVector<PlcSettings> plcs;
    for (const QString& project : projects) {
        PlcSettings plc;
        plc.project = project;
        plc.name = project::plcName(project);
        for (const PlcSettings& other : std::as_const(plcs)) {
            if (other.name == plc.name)
                return Error{QStringLiteral("%1 and %2 would both be called %3; a configuration "
                                            "file gives them names")
                                 .arg(other.project, project, values::quoted(plc.name))};
        }
        plcs.append(plc);
    }
    if (plcs.size() > kMostPlcs)
        return Error{QStringLiteral("%1 projects are given, %2 at most are served")
                         .arg(plcs.size())
                         .arg(kMostPlcs)};
    return plcs;
}

} // namespace plc::panel
