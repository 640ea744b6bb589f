#ifndef PLC_IEC_SOURCE_FILE_H
#define PLC_IEC_SOURCE_FILE_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace plc::iec {

/// A file of declarations.
struct SourceFile {
    QString name;
    QString text;
};

/// A place in one of several files; line and column count from 1.
struct Position {
    int file = 0; ///< Index of the file.
    int line = 1;
    int column = 1;
};

/// The text of a file as programming systems export it: UTF-8 or UTF-16 with a byte order mark,
/// UTF-8 without one, or else Latin-1.
QString decodeSource(const QByteArray& bytes);

} // namespace plc::iec

#endif
