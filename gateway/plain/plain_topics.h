#ifndef PLC_GATEWAY_PLAIN_PLAIN_TOPICS_H
#define PLC_GATEWAY_PLAIN_PLAIN_TOPICS_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

namespace plc::gateway {

/// The topics of the plain convention: BASE/DEVICE/PATH for a value, BASE/DEVICE/PATH/set to write
/// it, BASE/DEVICE/PATH/outcome for how that ended; BASE/state and BASE/DEVICE/state tell whether
/// values are live. BASE is GROUP/NODE. Characters of a name that mean something in a topic stand
/// as %2B (+), %23 (#) and %25 (%).
class PlainTopics {
public:
    PlainTopics(const QString& group, const QString& node);

    /// A name as it stands in topics.
    static QString escaped(const QString& name);

    QString ofNode(const char* last) const;
    /// `device` and `path` as escaped() gives them.
    QString ofDevice(const QString& device, const char* last) const;
    QString ofValue(const QString& device, const QString& path) const;
    QString ofOutcome(const QString& device, const QString& path) const;

    /// Filters for writes to paths of so many levels at most. A filter has a fixed number of levels
    /// where something stands behind the wildcards.
    QVector<QString> writeFilters(int levels) const;

    struct Target {
        QString device;
        QString path;
    };
    /// Device and path of a topic for writes.
    std::optional<Target> target(const QString& topic) const;
    /// Device and path of a topic as ofValue() gives it.
    std::optional<Target> value(const QString& topic) const;

private:
    const QString m_base; ///< With the slash behind it.
};

} // namespace plc::gateway

#endif
