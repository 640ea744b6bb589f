#include "values/csv.h"

#include <QtCore/QRegularExpression>

#include <algorithm>

namespace plc::values {
namespace csv {
namespace {

const QLatin1Char kComma(',');
const QLatin1Char kQuote('"');
const QLatin1Char kLineFeed('\n');
const QLatin1Char kCarriageReturn('\r');
const QChar kByteOrderMark(0xFEFF);
/// Before a field that a spreadsheet would take for a formula.
const QLatin1Char kTextMark('\'');
const QString kFormulaStarts = QStringLiteral("=+-@\t\r\n");

bool needsQuotes(QChar character)
{
    return character == kComma || character == kQuote || character == kLineFeed ||
           character == kCarriageReturn;
}

/// Digits with a sign, a point and an exponent as values have them; infinite ones and NaN, too.
bool isNumber(const QString& field)
{
    static const QRegularExpression number(QRegularExpression::anchoredPattern(
        QStringLiteral("[+-]?([0-9]+(\\.[0-9]+)?([eE][+-]?[0-9]+)?|inf|nan)")));
    return number.match(field).hasMatch();
}

/// Position of the first character that is no mark.
int behindMarks(const QString& field)
{
    int position = 0;
    while (position < int(field.size()) && field[position] == kTextMark)
        ++position;
    return position;
}

/// Whether a spreadsheet would compute the field, were it not for marks before it.
bool isFormula(const QString& field)
{
    const int start = behindMarks(field);
    return start < int(field.size()) && kFormulaStarts.contains(field[start]);
}

/// A text that has such a mark itself gets one more, so that withoutMark() gives it back.
QString withMark(const QString& field)
{
    return isFormula(field) && !isNumber(field) ? kTextMark + field : field;
}

QString withoutMark(const QString& field)
{
    return field.startsWith(kTextMark) && isFormula(field) ? field.mid(1) : field;
}

/// Goes through the text once, from the left to the right.
class Parser {
public:
    explicit Parser(const QString& text) : m_text(text)
    {
        if (m_text.startsWith(kByteOrderMark))
            ++m_position;
    }

    Expected<QVector<Record>> parse()
    {
        QVector<Record> records;
        while (!atEnd()) {
            if (skipLineEnd())
                continue;
            Record record;
            record.line = m_line;
            do {
                record.fields.append(withoutMark(field()));
            } while (m_error.isEmpty() && skip(kComma));
            if (m_error.isEmpty() && !atEnd() && !skipLineEnd())
                fail(m_line, QStringLiteral("found more behind a closing quote, expected a comma "
                                            "or the end of the line; quotes inside of a quoted "
                                            "field are written twice"));
            if (!m_error.isEmpty()) {
                return Error{m_error};
            }
            records.append(record);
        }
        return records;
    }

private:
    bool atEnd() const { return m_position == int(m_text.size()); }
    bool skip(QChar character)
    {
        const bool isThere = !atEnd() && m_text[m_position] == character;
        m_position += isThere ? 1 : 0;
        return isThere;
    }
    bool skipLineEnd()
    {
        const bool returned = skip(kCarriageReturn);
        const bool isThere = skip(kLineFeed) || returned;
        m_line += isThere ? 1 : 0;
        return isThere;
    }
    void fail(int line, const QString& text)
    {
        m_error = QStringLiteral("line %1: %2").arg(line).arg(text);
    }

    QString field() { return skip(kQuote) ? quoted() : plain(); }
    QString plain()
    {
        const int start = m_position;
        while (!atEnd() && !needsQuotes(m_text[m_position]))
            ++m_position;
        if (!atEnd() && m_text[m_position] == kQuote) {
            fail(m_line, QStringLiteral("found a quote inside of a field without quotes; put the "
                                        "whole field in quotes and write those inside twice"));
        }
        return m_text.mid(start, m_position - start);
    }
    /// The rest of a field whose opening quote was read.
    QString quoted()
    {
        const int firstLine = m_line;
        QString field;
        while (!atEnd()) {
            const int quote = int(m_text.indexOf(kQuote, m_position));
            if (quote < 0)
                break;
            const QString part = m_text.mid(m_position, quote - m_position);
            m_line += int(part.count(kLineFeed));
            field += part;
            m_position = quote + 1;
            if (!skip(kQuote))
                return field;
            field += kQuote;
        }
        fail(firstLine, QStringLiteral("found the end of the file in a field in quotes, expected "
                                       "its closing quote"));
        return {};
    }

    const QString m_text;
    int m_position = 0;
    int m_line = 1;
    QString m_error;
};

} // namespace

QString quotedField(const QString& field)
{
    if (std::none_of(field.begin(), field.end(), needsQuotes))
        return field;
    QString inside = field;
    inside.replace(kQuote, QStringLiteral("\"\""));
    return kQuote + inside + kQuote;
}

QString row(const QStringList& fields)
{
    QStringList texts;
    for (const QString& field : fields)
        texts.append(quotedField(withMark(field)));
    // A single empty field would be an empty line.
    return fields == QStringList{QString()} ? QStringLiteral("\"\"") : texts.join(kComma);
}

Expected<QVector<Record>> parse(const QString& text)
{
    return Parser(text).parse();
}

} // namespace csv
} // namespace plc::values
