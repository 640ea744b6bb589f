#ifndef PLC_IEC_FILE_FORMAT_H
#define PLC_IEC_FILE_FORMAT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace plc::iec {

/// What a file is that cannot hold declarations in structured text, and what to do instead:
/// "PLCopen XML; export …". Empty for a file that may hold them.
QString foreignFormat(const QByteArray& bytes);

} // namespace plc::iec

#endif
