#ifndef PLC_GATEWAY_CONFIG_SETTINGS_H
#define PLC_GATEWAY_CONFIG_SETTINGS_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "configuration/label_rules.h"
#include "values/expected.h"

namespace plc::gateway {

/// Of one process: more of them would make a birth, and what a crash takes along, too large.
constexpr int kMostDevices = 64;

/// How a broker is recognised, and how the gateway shows who it is. Files are PEM.
struct TlsSettings {
    QString authorities; ///< Certificates of the authorities; empty: those of the system.
    QString certificate; ///< Of the gateway; empty: none.
    QString key;         ///< Of that certificate.
};

struct BrokerSettings {
    QString host;
    quint16 port = 1883; ///< 8883 with TLS.
    bool isVersion5 = false;
    std::optional<TlsSettings> tls;
    QString user;         ///< Empty: none is given.
    QString passwordFile; ///< Its first line is the password; read for each connection.
};

struct DeviceSettings {
    QString name;
    QString project;                ///< Path of the project file.
    std::optional<QString> address; ///< In place of the project's.
    std::optional<quint16> port;
    QVector<QString> labels; ///< Labels and patterns; empty: those that the project reads.
    int cycleTime = 1000;    ///< ms from the start of one pass to that of the next.
    QVector<configuration::DeadbandRule> deadbands; ///< The last that fits a label counts.
    QVector<configuration::WritableRule> writable;  ///< The last that fits a label counts.
};

enum class PublicationFormat { Sparkplug, Plain };

struct MetricsSettings {
    QString address; ///< A loopback address; empty: none.
    quint16 port = 0;
    QString socket; ///< Path of a Unix socket; empty: none.
};

/// The configuration of one gateway process. Paths are absolute: in the file they may stand
/// relative to its folder, or to one of the service manager's, see configuration::resolvedPath().
struct GatewaySettings {
    PublicationFormat format = PublicationFormat::Sparkplug;
    QString group;
    QString node;
    QString primaryHost;        ///< Empty: values are published whoever listens. Sparkplug only.
    bool retainsValues = false; ///< Plain only.
    QVector<BrokerSettings> brokers; ///< In the order in which they are tried.
    int keepAlive = 10;              ///< Seconds.
    QString storeFile;
    qint64 storeSize = qint64(100) * 1024 * 1024; ///< Bytes on disk at most.
    int historyRate = 2000;                       ///< Stored changes sent in a second at most.
    QString auditFile;                            ///< Empty: none; then nothing may be writable.
    MetricsSettings metrics;
    QString statusSocket; ///< Path of the Unix socket for `plc-gateway status`; empty: none.
    QVector<DeviceSettings> devices;
};

/// Reads and checks a configuration. An error is one line that names the file, the path in the
/// document (`/devices/0/name`), what was found and what was expected.
Expected<GatewaySettings> loadSettings(const QString& path);

/// As loadSettings() from bytes; `name` stands for the file in errors, relative paths stay so.
Expected<GatewaySettings> parseSettings(const QByteArray& json, const QString& name);

} // namespace plc::gateway

#endif
