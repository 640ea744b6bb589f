#ifndef PLC_IEC_DIAGNOSTICS_H
#define PLC_IEC_DIAGNOSTICS_H

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include "iec/source_file.h"

namespace plc::iec {

/// What warnings are about, for those that say the same of many variables.
enum class WarningKind {
    NoAddress,
    ProcessAddress, ///< At inputs and outputs.
    OpenAddress,    ///< Left to the controller.
    FunctionBlock,  ///< Its members are not known.
    UnknownSize,    ///< What is placed behind it may lie elsewhere.
    Overlay,
    Layout,     ///< Variables may lie elsewhere than in the controller.
    SkippedPart ///< Declarations may be lost.
};

/// Whether it tells of something other than the declarations say, and not only of variables that
/// are left out.
bool changesMeaning(WarningKind kind);

struct Diagnostic {
    enum Severity { Error, Warning };
    Severity severity;
    Position position;
    QString text;
    WarningKind kind = WarningKind::Layout; ///< Of a warning.
};

/// What there is to say about the files, in the order in which it was found.
class Diagnostics {
public:
    /// More errors than these help nobody; from then on nothing is kept and the work may end.
    static constexpr int kMostErrors = 100;

    void error(const Position& position, const QString& text);
    void warning(const Position& position, WarningKind kind, const QString& text);

    int errorCount() const { return m_errors; }
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

/// How many warnings are shown before others of their kind are only counted.
constexpr int kShownWarnings = 20;

/// All that is to be told, in the order in which it was found, and then how many more warnings
/// there are of each kind. Errors and warnings that change the meaning are all there, the latter in
/// one line each from the kShownWarnings-th of a kind on; `all` leaves none out.
QStringList diagnosticTexts(const QVector<SourceFile>& files, const Diagnostics& diagnostics,
                            bool all);

} // namespace plc::iec

#endif
