#include "host/capture/link_capture.h"

namespace plc {
namespace {

std::chrono::nanoseconds sinceEpoch()
{
    return std::chrono::system_clock::now().time_since_epoch();
}

} // namespace

bool LinkCapture::create(const QString& path, const QString& application, QString* error)
{
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        *error = m_file.errorString();
        return false;
    }
    m_writer = std::make_unique<PcapngWriter>(&m_file, application);
    *error = m_writer->error();
    return error->isEmpty();
}

void LinkCapture::connected(const TcpEndpoint& client, const TcpEndpoint& server)
{
    if (!isOn())
        return;
    m_conversation = std::make_unique<TcpConversation>(m_writer.get(), client, server);
    m_conversation->open(sinceEpoch());
}

void LinkCapture::sent(TcpConversation::Side from, const QByteArray& bytes)
{
    if (m_conversation)
        m_conversation->send(from, bytes, sinceEpoch());
}

void LinkCapture::closed(TcpConversation::Side first)
{
    if (m_conversation)
        m_conversation->close(first, sinceEpoch());
    m_conversation.reset();
}

void LinkCapture::reset(TcpConversation::Side from)
{
    if (m_conversation)
        m_conversation->reset(from, sinceEpoch());
    m_conversation.reset();
}

} // namespace plc
