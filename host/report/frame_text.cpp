#include "host/report/frame_text.h"

#include <QtCore/QStringList>

#include "host/transfers/result_text.h"

namespace plc::host {
namespace {

QString entryText(const FrameEntry& entry)
{
    return QStringLiteral("area %1 %2 %3 length %4")
        .arg(entry.area)
        .arg(entry.isBit ? QStringLiteral("bit") : QStringLiteral("address"))
        .arg(entry.address)
        .arg(entry.length);
}

QString entriesText(const QVector<FrameEntry>& entries, const QVector<QByteArray>& data)
{
    QStringList texts;
    for (int i = 0; i < int(entries.size()); ++i) {
        QString text = entryText(entries[i]);
        if (i < int(data.size()))
            text += QStringLiteral(" = ") + hexText(data[i]);
        texts.append(text);
    }
    return texts.join(QStringLiteral(", "));
}

QVector<QByteArray> writtenBlocks(const SentRequest& request)
{
    QVector<QByteArray> blocks;
    if (request.content.service == Service::Write) {
        for (const FrameEntry& entry : request.content.entries)
            blocks.append(writtenBytes(request.frame, entry));
    }
    return blocks;
}

QString serviceText(Service service)
{
    switch (service) {
        case Service::Identification:
            return QStringLiteral("login: identification");
        case Service::File:
            return QStringLiteral("login: file request");
        case Service::Read:
            return QStringLiteral("read");
        case Service::Write:
            return QStringLiteral("write");
        case Service::Unknown:
            break;
    }
    return QStringLiteral("unknown service");
}

QString judgementText(const Answer& answer)
{
    QString result =
        QStringLiteral("result %1, %2").arg(answer.result).arg(resultText(answer.result));
    switch (answer.kind) {
        case Answer::Accepted:
            return QStringLiteral("accepted");
        case Answer::Refused:
            return QStringLiteral("refused");
        case Answer::Retried:
            return QStringLiteral("not accepted, sent again");
        case Answer::Abandoned:
            return QStringLiteral("given up: ") + result;
        case Answer::LoginRefused:
            return result;
        case Answer::Misfit:
            return QStringLiteral("not a reply to this request by its size");
    }
    return result;
}

} // namespace

QString requestText(const SentRequest& request)
{
    const RequestContent& content = request.content;
    QString text = serviceText(content.service);
    if (content.service == Service::Read || content.service == Service::Write) {
        text += QStringLiteral(" of %1 entries: ").arg(content.entries.size());
        text += entriesText(content.entries, writtenBlocks(request));
    }
    return content.wellFormed ? text : text + QStringLiteral(" (malformed)");
}

QString replyText(const SentRequest& request, const QByteArray& reply, const Answer& answer)
{
    QString text = QStringLiteral("reply to %1").arg(serviceText(request.content.service));
    if (!request.content.isLogin())
        text += answer.status < 0 ? QStringLiteral(", no status")
                                  : QStringLiteral(", status %1").arg(answer.status);
    if (request.content.service == Service::Read && answer.status == 0) {
        const QVector<FrameEntry>& entries = request.content.entries;
        text += QStringLiteral(": ") + entriesText(entries, readReplyBlocks(reply, entries));
    }
    return QStringLiteral("%1; %2").arg(text, judgementText(answer));
}

QString hexText(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

} // namespace plc::host
