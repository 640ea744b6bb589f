#ifndef PLC_TESTS_SUPPORT_STATED_TEXT_H
#define PLC_TESTS_SUPPORT_STATED_TEXT_H

#include <QtCore/QString>

namespace plc::test {

/// Of a text in UTF-8.
inline QString stated(const char* text)
{
    return QString::fromUtf8(text);
}

} // namespace plc::test

#endif
