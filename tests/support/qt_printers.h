#ifndef PLC_TESTS_SUPPORT_QT_PRINTERS_H
#define PLC_TESTS_SUPPORT_QT_PRINTERS_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <ostream>

// How GoogleTest shows Qt values in a failure message.
inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toHex(' ').toUpper().toStdString() << "\" (" << bytes.size() << " bytes)";
}

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

#endif
