#ifndef PLC_HOST_IEC_DIAGNOSTICS_H
#define PLC_HOST_IEC_DIAGNOSTICS_H

#include <QtCore/QVector>

#include "host/iec/source_file.h"

namespace plc {
namespace iec {

struct Diagnostic {
    enum Severity { Error, Warning };
    Severity severity;
    Position position;
    QString text;
};

/// What there is to say about the files, in the order in which it was found.
class Diagnostics {
public:
    /// More errors than these help nobody; from then on nothing is kept and the work may end.
    static constexpr int kMostErrors = 100;

    void error(const Position& position, const QString& text);
    void warning(const Position& position, const QString& text);

    int errorCount() const { return m_errors; }
    int warningCount() const { return int(m_list.size()) - m_errors; }
    bool isFull() const { return m_errors >= kMostErrors; }
    const QVector<Diagnostic>& list() const { return m_list; }

private:
    QVector<Diagnostic> m_list;
    int m_errors = 0;
};

/// "plant.st:12", for a text that points to another place.
QString placeText(const QVector<SourceFile>& files, const Position& position);

/// Three lines: "plant.st:12:8: error: TEXT", the line of the file, and a caret below the place. Of
/// a long line a part is shown.
QString diagnosticText(const QVector<SourceFile>& files, const Diagnostic& diagnostic);

} // namespace iec
} // namespace plc

#endif
