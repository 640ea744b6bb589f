#include "capture_file.h"

#include <gtest/gtest.h>

namespace plc {
namespace {

constexpr std::chrono::nanoseconds kStart = std::chrono::seconds(1750000000);
constexpr std::chrono::nanoseconds kPacketDistance = std::chrono::milliseconds(1);

capture::TcpEndpoint endpoint(const char* address, quint16 port)
{
    return {QHostAddress(QString::fromLatin1(address)), port};
}

QIODevice* opened(QFile* file)
{
    file->open(QIODevice::WriteOnly);
    return file;
}

} // namespace

CaptureFile::CaptureFile()
    : m_file(m_folder.filePath(QStringLiteral("session.pcapng"))),
      m_writer(opened(&m_file), QStringLiteral("test")),
      m_first(&m_writer, endpoint("192.0.2.1", 40000), endpoint("192.0.2.2", 1200)),
      m_second(&m_writer, endpoint("192.0.2.1", 40001), endpoint("192.0.2.2", 1200)),
      m_time(kStart)
{
}

CaptureFile& CaptureFile::client(const char* hex)
{
    return client(QByteArray::fromHex(hex));
}

CaptureFile& CaptureFile::server(const char* hex)
{
    return server(QByteArray::fromHex(hex));
}

CaptureFile& CaptureFile::client(const QByteArray& bytes)
{
    return send(capture::TcpConversation::Client, bytes);
}

CaptureFile& CaptureFile::server(const QByteArray& bytes)
{
    return send(capture::TcpConversation::Server, bytes);
}

CaptureFile& CaptureFile::login()
{
    client("bbbb 0000000e 0100 000002000000060000000000");
    server(replyOf(200));
    client("bbbb 00000011 3100 000d 444f574e4c4f41442e53444200");
    return server(replyOf(30, "3412 00000000000000000000"));
}

CaptureFile& CaptureFile::wait(std::chrono::nanoseconds time)
{
    m_time += time;
    return *this;
}

CaptureFile& CaptureFile::open()
{
    m_current->open(m_time);
    return *this;
}

CaptureFile& CaptureFile::close()
{
    m_current->close(capture::TcpConversation::Client, m_time);
    return *this;
}

CaptureFile& CaptureFile::reset()
{
    m_current->reset(capture::TcpConversation::Server, m_time);
    return *this;
}

CaptureFile& CaptureFile::send(capture::TcpConversation::Side from, const QByteArray& bytes)
{
    m_current->send(from, bytes, m_time);
    m_time += kPacketDistance;
    return *this;
}

std::vector<Row> CaptureFile::rows(std::initializer_list<const char*> fields,
                                   const QStringList& options)
{
    m_file.flush();
    EXPECT_EQ(m_writer.error(), QString());
    return dissectedFields(m_file.fileName(), fields, options);
}

std::string CaptureFile::details()
{
    m_file.flush();
    return dissect(m_file.fileName(), {QStringLiteral("-V")}).toStdString();
}

QByteArray replyOf(int payload, const char* endHex)
{
    constexpr int kHeaderSize = 6;
    const QByteArray end = QByteArray::fromHex(endHex);
    QByteArray reply(kHeaderSize + payload - int(end.size()), '\0');
    reply[0] = reply[1] = char(0xbb);
    reply[4] = char(payload >> 8);
    reply[5] = char(payload & 0xff);
    return reply + end;
}

} // namespace plc
