#include "gateway/store/topic_file.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include "streams/file_replacement.h"

namespace plc::gateway {
namespace {

constexpr char kAdded[] = "+";
constexpr char kRemoved[] = "-";

QByteArray lineOf(const char* sign, const QString& broker, const QString& topic)
{
    const QJsonArray entry{QLatin1String(sign), broker, topic};
    return QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

TopicFile::TopicFile(const QString& path, std::function<void(const QString&)> log)
    : m_path(path), m_log(std::move(log))
{
    read();
}

void TopicFile::read()
{
    QFile file(m_path);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        m_log(QStringLiteral("%1: %2; what brokers keep of former runs is not known")
                  .arg(m_path, file.errorString()));
        return;
    }
    while (!file.atEnd())
        take(file.readLine());
}

void TopicFile::take(const QByteArray& line)
{
    const QJsonArray entry = QJsonDocument::fromJson(line).array();
    if (entry.size() != 3) {
        m_isWhole = false;
        return;
    }
    const QString sign = entry.at(0).toString();
    QSet<QString>& topics = m_topics[entry.at(1).toString()];
    if (line.endsWith('\n') && sign == QLatin1String(kAdded)) {
        topics.insert(entry.at(2).toString());
        return;
    }
    topics.remove(entry.at(2).toString());
    // Also of a line that a full disk or the end of the process has cut off.
    m_isWhole = false;
}

QStringList TopicFile::topics(const QString& broker) const
{
    const QSet<QString> topics = m_topics.value(broker);
    return QStringList(topics.begin(), topics.end());
}

void TopicFile::add(const QString& broker, const QStringList& topics)
{
    for (const QString& topic : topics)
        m_topics[broker].insert(topic);
    write(kAdded, broker, topics);
}

void TopicFile::remove(const QString& broker, const QStringList& topics)
{
    for (const QString& topic : topics)
        m_topics[broker].remove(topic);
    write(kRemoved, broker, topics);
}

void TopicFile::write(const char* sign, const QString& broker, const QStringList& topics)
{
    QByteArray lines;
    for (const QString& topic : topics)
        lines += lineOf(sign, broker, topic);
    const Expected<void> written = m_isWhole ? append(lines) : rewrite();
    m_isWhole = bool(written);
    if (!written && !m_isFailing) {
        m_log(QStringLiteral("%1: %2; what brokers keep is known to this process alone")
                  .arg(m_path, written.error().text));
    }
    m_isFailing = !written;
}

Expected<void> TopicFile::append(const QByteArray& lines) const
{
    QFile file(m_path);
    const bool isWritten = file.open(QIODevice::WriteOnly | QIODevice::Append) &&
                           file.write(lines) == lines.size() && file.flush();
    if (!isWritten)
        return Error{file.errorString()};
    return {};
}

Expected<void> TopicFile::rewrite() const
{
    streams::FileReplacement file(m_path);
    if (!file.open())
        return Error{file.reason()};
    for (auto broker = m_topics.begin(); broker != m_topics.end(); ++broker) {
        for (const QString& topic : broker.value())
            file.write(lineOf(kAdded, broker.key(), topic));
    }
    if (!file.commit())
        return Error{file.reason()};
    return {};
}

} // namespace plc::gateway
