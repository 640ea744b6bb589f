#ifndef PLC_CAPTURE_LINK_CAPTURE_H
#define PLC_CAPTURE_LINK_CAPTURE_H

#include <QtCore/QFile>

#include <memory>

#include "capture/tcp_conversation.h"
#include "streams/file_replacement.h"
#include "values/export.h"

namespace plc::capture {

/// The connections of a link, one after the other, in a capture file. All are written as they
/// happen, so that the file is readable also when the process is killed.
class PLC_HOST_EXPORT LinkCapture {
public:
    /// Creates the file, in place of one that is there; `application` names the program in it.
    /// After an error, the reason alone, what was there stays.
    Expected<void> create(const QString& path, const QString& application);
    /// Whether a file could be made, though perhaps not written.
    bool wasMade() const { return m_file.isOpen(); }
    bool isOn() const { return bool(m_writer); }
    QString path() const { return m_path; }
    /// What went wrong while writing; empty while all could be written.
    QString error() const { return m_writer ? m_writer->error() : QString(); }

    /// The client has made a connection; an earlier one has ended before.
    void connected(const TcpEndpoint& client, const TcpEndpoint& server);
    void sent(TcpConversation::Side from, const QByteArray& bytes);
    /// `first` closed the connection, and the other followed.
    void closed(TcpConversation::Side first);
    void reset(TcpConversation::Side from);
    /// The connection is given up and nothing of it reaches the other end.
    void abandoned() { m_conversation.reset(); }

private:
    Expected<void> begin(const QString& application);

    QString m_path;
    std::unique_ptr<streams::FileReplacement> m_place; ///< Holds the descriptor.
    QFile m_file;
    std::unique_ptr<PcapngWriter> m_writer;
    std::unique_ptr<TcpConversation> m_conversation; ///< Null between connections.
};

} // namespace plc::capture

#endif
