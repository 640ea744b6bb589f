#ifndef PLC_SIMULATOR_FRAME_TEXT_H
#define PLC_SIMULATOR_FRAME_TEXT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace plc::simulator {

/// What a request asks for, in a few words.
QString requestText(const QByteArray& request);

/// What a reply says, in a few words; replies may be cut short or lost.
QString replyText(const QByteArray& reply);

} // namespace plc::simulator

#endif
