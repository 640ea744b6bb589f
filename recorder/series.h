#ifndef PLC_RECORDER_SERIES_H
#define PLC_RECORDER_SERIES_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "host/points/data_point.h"
#include "recorder/exact_number.h"
#include "values/iec_types.h"
#include "values/value_text.h"

namespace plc::recorder {

/// What is recorded as one series. Whatever differs in one of these is another series: a value
/// whose type or unit changes goes on in a new one.
struct SeriesDescription {
    QString source; ///< Name of the PLC; may be empty.
    QString label;  ///< As users write it, with "*N" behind it for N elements.
    /// Null: the bytes are a text in UTF-8, the value as somebody wrote it.
    const values::IecType* type = nullptr;
    int elements = 1;
    int stringLength = 0; ///< Capacity in characters of a STRING or WSTRING.
    QString unit;
    /// Of a single number: it is recorded when it is at least so far from the one recorded before.
    /// 0: every change.
    double deadband = 0;
};

bool operator==(const SeriesDescription& a, const SeriesDescription& b);

/// The series of a value that a host reads.
SeriesDescription describe(const host::DataPoint& point, const QString& source);

struct Series {
    int id = 0;
    SeriesDescription description;
};

/// One series, or several of one value that take turns: each run has samples of one of them.
struct SeriesIds {
    SeriesIds(int id) : ids{id} {}
    SeriesIds(const QVector<int>& all) : ids(all) {}

    QVector<int> ids;
};

/// The elements of a value; of a series without a type its text.
QVector<values::Value> seriesValues(const SeriesDescription& series, const QByteArray& bytes);

/// The value as `plc read` shows it.
QString seriesText(const SeriesDescription& series, const QByteArray& bytes);

/// Whether the values are single numbers, which can be compared and averaged. Of a series without a
/// type some may be.
bool isNumeric(const SeriesDescription& series);

/// Values of a series as numbers, TRUE as 1, TIME in ms, large integers as near as a double comes.
class SeriesNumbers {
public:
    explicit SeriesNumbers(const SeriesDescription& series);

    /// Nothing of texts, lists, infinities and NaN.
    std::optional<double> number(const QByteArray& bytes) const;
    /// The same with all digits of large integers.
    std::optional<ExactNumber> exactNumber(const QByteArray& bytes) const;

private:
    host::DataPoint m_point;
};

} // namespace plc::recorder

#endif
