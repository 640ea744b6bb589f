#ifndef PLC_PANEL_PAGE_PAGE_FILES_H
#define PLC_PANEL_PAGE_PAGE_FILES_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace plc::panel {

/// A file of the page. The bytes are part of the program and are not copied.
struct PageFile {
    QString path;           ///< As a browser asks for it: "/", "/assets/main.js".
    QByteArray contentType; ///< Of the header Content-Type.
    QByteArray bytes;
    QByteArray gzip; ///< The same, for clients that accept the encoding gzip.
    QByteArray etag; ///< With its quotes; other bytes have another one.
};

/// All files of the page.
const QVector<PageFile>& pageFiles();

} // namespace plc::panel

#endif
