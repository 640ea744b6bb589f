#ifndef PLC_PANEL_API_RECORDED_LABELS_H
#define PLC_PANEL_API_RECORDED_LABELS_H

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <optional>

#include "panel/http/response.h"
#include "project/symbols.h"
#include "recorder/reader.h"

namespace plc::panel {

/// Whose past is asked for.
struct AskedLabels {
    QString plc;
    QStringList labels;
    QStringList plcs; ///< Those that there are.
    /// What the PLC has; nothing: there is none of this name.
    std::optional<project::Symbols> program;
};

/// What a label was recorded as.
struct RecordedLabel {
    /// With the label as it was asked for.
    recorder::SeriesDescription description;
    /// Of the series that differ in nothing but the deadband; none: the PLC has this value, and it
    /// was never recorded.
    QVector<int> ids;
    /// What it was recorded as, too: with another type or unit its numbers are other numbers.
    QVector<recorder::SeriesDescription> others;
    /// Names that no PLC has any more, or that nobody gave one, by which this label was recorded:
    /// it may be this PLC's past.
    QStringList recordedOf;
};

struct RecordedLabels {
    QVector<RecordedLabel> labels; ///< In the order in which they were asked for.
    /// What is answered instead: neither program nor recording have some of them, which the member
    /// "labels" names; or the recording cannot be read.
    std::optional<Response> problem;
};

RecordedLabels recordedLabels(recorder::Reader* reader, const AskedLabels& asked);

/// What is told where the recording cannot be read.
Response historyFailure(const Error& error);

} // namespace plc::panel

#endif
