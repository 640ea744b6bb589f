#include "capture/link_capture.h"

namespace plc::capture {
namespace {

std::chrono::nanoseconds sinceEpoch()
{
    return std::chrono::system_clock::now().time_since_epoch();
}

} // namespace

bool LinkCapture::create(const QString& path, const QString& application, QString* error)
{
    m_path = path;
    m_place = std::make_unique<streams::FileReplacement>(path);
    if (m_place->open(error)) {
        m_file.open(m_place->descriptor(), QIODevice::WriteOnly | QIODevice::Unbuffered);
        m_writer = std::make_unique<PcapngWriter>(&m_file, application);
        *error = m_writer->error();
        if (error->isEmpty() && m_place->commit(error))
            return true;
    }
    *error = m_place->reason().isEmpty() ? *error : m_place->reason();
    return false;
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

} // namespace plc::capture
