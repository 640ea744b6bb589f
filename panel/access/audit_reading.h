#ifndef PLC_PANEL_ACCESS_AUDIT_READING_H
#define PLC_PANEL_ACCESS_AUDIT_READING_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include "values/expected.h"

namespace plc::panel {

/// What the hashes of an audit file tell.
struct AuditVerification {
    enum Flaw { None, Altered, Missing, Reordered };

    Flaw flaw = None;
    qint64 flawedLine = 0; ///< The first; counted from 1. Missing ones stood before it.
    QString sentence;      ///< What is wrong with it; empty: nothing is.
    qint64 lines = 0;
    qint64 cuts = 0;             ///< Places where a process or a disk ended within a line.
    bool isContinued = false;    ///< The file goes on with the chain of another.
    bool endsWithinLine = false; ///< Being written, or cut off just now.
    QByteArray previous;         ///< Of the first line: the head of the file before, or random.
    QByteArray head;             ///< The hash of the last line.
    qint64 firstNumber = -1;
    qint64 lastNumber = -1;
};

/// Reads a file from its beginning and compares all hashes. Lines that were taken away at the end
/// show only in a head that was noted elsewhere: compare `head` with it. Whoever can write the file
/// can also calculate a new chain; so can only a head that was noted elsewhere show that.
Expected<AuditVerification> verifyAudit(const QString& path);

/// Some lines of a file, as they stand there, and what its hashes told while it was read once.
struct AuditPage {
    QVector<QByteArray> lines;
    AuditVerification verification;
};

/// As verifyAudit(). `from` counts from 0; a negative one counts from the end, from
/// -kMostAuditLines on. At most kMostAuditLines.
Expected<AuditPage> readAudit(const QString& path, qint64 from, int limit);

constexpr int kMostAuditLines = 10000;

} // namespace plc::panel

#endif
