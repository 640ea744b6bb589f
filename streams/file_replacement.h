#ifndef PLC_STREAMS_FILE_REPLACEMENT_H
#define PLC_STREAMS_FILE_REPLACEMENT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include "values/expected.h"
#include "values/export.h"

namespace plc::streams {

/// A new file in the place of one that may be there, whole or not at all: until commit() the old
/// one stays as it is, also when the disk is full or the program is killed.
///
/// What is no file on a disk, such as a pipe, is written as it is: it has no old content.
class PLC_HOST_EXPORT FileReplacement {
public:
    explicit FileReplacement(const QString& path) : m_path(path) {}
    /// Takes away what was not committed.
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// An error when no file can be made there.
    Expected<void> open();
    /// Returns false when the bytes cannot be written, which commit() explains.
    bool write(const QByteArray& bytes);
    /// Brings all to the disk and puts it in its place. After an error the old file is as it was.
    Expected<void> commit();
    /// Why a call failed, in the words of the system.
    const QString& reason() const { return m_failure; }
    /// Of the new file, for writing on behind commit(); closed with this object. -1 while not open.
    int descriptor() const { return m_descriptor; }

private:
    bool openNew();
    void takeOver(const QByteArray& target) const;
    bool flush();
    bool bringToDisk();
    Error failure(const char* what, const QString& reason);

    const QString m_path;
    QByteArray m_target;    ///< What `m_path` leads to.
    QByteArray m_temporary; ///< Empty when there is nothing to be renamed.
    QByteArray m_pending;
    QString m_failure;
    bool m_hasOld = false;
    int m_descriptor = -1;
};

} // namespace plc::streams

#endif
