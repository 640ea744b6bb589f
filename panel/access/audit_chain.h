#ifndef PLC_PANEL_ACCESS_AUDIT_CHAIN_H
#define PLC_PANEL_ACCESS_AUDIT_CHAIN_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace plc::panel {

/// Something that was asked for, or what came of it.
struct AuditRecord {
    enum Phase { Requested, Outcome };

    qint64 time = 0;                          ///< Milliseconds since 1970-01-01T00:00:00Z.
    QString action = QStringLiteral("write"); ///< Or "login", "logout", "recipe" and so on.
    Phase phase = Requested;
    QString user;
    QString address; ///< As Caller::address.
    QString plc;
    QString label;
    QString oldValue;  ///< As the panel knew it from the PLC; null: not known.
    QString seenValue; ///< As the client says that its user saw it; null: not told.
    QString newValue;  ///< Null: none.
    QString id;        ///< The same for what was asked for and for what came of it.
    QString outcome; ///< "done", "refused", "unknown", "notSent", "notDone"; empty while only asked
                     ///< for.
    QString reason;
};

// Each line is a JSON object on its own. "n" counts them, also across files; "previous" is the
// SHA-256 of the line before without its end, as sha256sum shows it. The first line of a chain has
// random digits there, that of a file that goes on with a chain the hash of the last line of the
// file before. Lines are given without their end.

constexpr int kLongestAuditText = 48 * 1024; ///< Characters.
/// As a line has the text: of a longer one its beginning, length and hash, which is not too long
/// any more.
QString auditText(const QString& text);
constexpr qint64 kLongestAuditLine = qint64(1024) * 1024; ///< Bytes.

QByteArray recordLine(const AuditRecord& record, qint64 number, const QByteArray& previous);
/// The first line of a chain, or of a file.
QByteArray beginningLine(qint64 time, bool isContinued, qint64 number, const QByteArray& previous);
/// Follows what is no whole line, since a process or a disk ended within it.
QByteArray cutLine(qint64 time, const QByteArray& cut, qint64 number, const QByteArray& previous);

/// What holds a line in its chain.
struct AuditLink {
    qint64 number = -1;
    QByteArray previous;
    QByteArray cut; ///< Hash of the part of a line that stands before; empty: none does.
    bool isBeginning = false;
    bool isContinued = false;
    QByteArray hash; ///< Of the line itself.
};

/// Whether these bytes are the begin of a beginningLine(), or one without its end, and nothing
/// else: all that a process or a disk leaves that ends within the first line.
bool isCutBeginning(const QByteArray& bytes);

/// Whether these bytes may have been left by processes or a disk that ended within a line: a part
/// of one, and behind it parts of cutLine() alone, each in a line of its own. What was written
/// whole is none.
bool isCutPart(const QByteArray& bytes);

/// Nothing for what is no line of an audit.
std::optional<AuditLink> parseAuditLine(const QByteArray& line);

} // namespace plc::panel

#endif
