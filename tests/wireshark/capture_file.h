#ifndef PLC_TESTS_WIRESHARK_CAPTURE_FILE_H
#define PLC_TESTS_WIRESHARK_CAPTURE_FILE_H

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include "capture/tcp_conversation.h"
#include "tests/wireshark/dissection.h"

namespace plc {

/// A capture of one connection, and what tshark and the dissector make of it.
///
/// The client is 192.0.2.1 port 40000, the PLC 192.0.2.2 port 1200. Every packet comes a
/// millisecond after the one before it. Bytes are given in hexadecimal; blanks count for nothing.
class CaptureFile {
public:
    CaptureFile();

    CaptureFile& client(const char* hex);
    CaptureFile& server(const char* hex);
    CaptureFile& client(const QByteArray& bytes);
    CaptureFile& server(const QByteArray& bytes);
    /// The two requests of a login and their replies; the PLC info bytes are 34 and 12.
    CaptureFile& login();
    CaptureFile& wait(std::chrono::nanoseconds time);

    /// What `tshark -T fields` prints for the packets of the protocol.
    std::vector<Row> rows(std::initializer_list<const char*> fields,
                          const QStringList& options = QStringList());

    /// All packets with their details, as text.
    std::string details();

    CaptureFile& open();
    CaptureFile& close();
    CaptureFile& reset();

    /// Another connection, from port 40001, in the same capture.
    void useSecondConnection() { m_current = &m_second; }
    void useFirstConnection() { m_current = &m_first; }

private:
    CaptureFile& send(capture::TcpConversation::Side from, const QByteArray& bytes);

    QTemporaryDir m_folder;
    QFile m_file;
    capture::PcapngWriter m_writer;
    capture::TcpConversation m_first;
    capture::TcpConversation m_second;
    capture::TcpConversation* m_current = &m_first;
    std::chrono::nanoseconds m_time;
};

/// A good reply of so many bytes behind the length field, ending in the given ones.
QByteArray replyOf(int payload, const char* endHex = "");

} // namespace plc

#endif
