#include "capture/link_capture.h"

namespace plc::capture {
namespace {

std::chrono::nanoseconds sinceEpoch()
{
    return std::chrono::system_clock::now().time_since_epoch();
}

} // namespace

Expected<void> LinkCapture::create(const QString& path, const QString& application)
{
    m_path = path;
    m_place = std::make_unique<streams::FileReplacement>(path);
    Expected<void> made = begin(application);
    if (made || m_place->reason().isEmpty())
        return made;
    return Error{m_place->reason()};
}

Expected<void> LinkCapture::begin(const QString& application)
{
    if (Expected<void> opened = m_place->open(); !opened)
        return opened;
    m_file.open(m_place->descriptor(), QIODevice::WriteOnly | QIODevice::Unbuffered);
    m_writer = std::make_unique<PcapngWriter>(&m_file, application);
    if (!m_writer->error().isEmpty())
        return Error{m_writer->error()};
    return m_place->commit();
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
