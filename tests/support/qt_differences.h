#ifndef PLC_TESTS_SUPPORT_QT_DIFFERENCES_H
#define PLC_TESTS_SUPPORT_QT_DIFFERENCES_H

// What tests use that Qt 4.8 names otherwise.

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)

#define QStringLiteral(text) QString::fromLatin1(text)

#endif

namespace plc::test {

/// Drops all messages of Qt.
inline void silenceQt()
{
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    qInstallMsgHandler([](QtMsgType, const char*) {});
#else
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
#endif
}

} // namespace plc::test

#endif
