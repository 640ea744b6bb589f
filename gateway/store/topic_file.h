#ifndef PLC_GATEWAY_STORE_TOPIC_FILE_H
#define PLC_GATEWAY_STORE_TOPIC_FILE_H

#include <QtCore/QMap>
#include <QtCore/QSet>

#include <functional>

#include "gateway/model/topic_record.h"
#include "values/expected.h"

namespace plc::gateway {

/// A record of topics in a file of lines, which are only added while the process runs:
///
///     ["+","broker:1883","works/hall/pump/state"]
///
/// "-" in the place of "+" takes a topic out. What was added outlives the end of the process,
/// however it ends; what the last seconds before a loss of power brought may be lost. Where the
/// disk takes nothing, the record is in memory alone, and written when there is room again.
class TopicFile : public TopicRecord {
public:
    /// Reads the file, which need not exist. `log` is told once that it cannot be written.
    TopicFile(const QString& path, std::function<void(const QString&)> log);

    QStringList topics(const QString& broker) const override;
    void add(const QString& broker, const QStringList& topics) override;
    void remove(const QString& broker, const QStringList& topics) override;

private:
    void read();
    void take(const QByteArray& line);
    void write(const char* sign, const QString& broker, const QStringList& topics);
    Expected<void> append(const QByteArray& lines) const;
    Expected<void> rewrite() const;

    const QString m_path;
    const std::function<void(const QString&)> m_log;
    QMap<QString, QSet<QString>> m_topics; ///< By broker.
    bool m_isWhole = true;                 ///< The file has what is in memory, and nothing else.
    bool m_isFailing = false;
};

} // namespace plc::gateway

#endif
