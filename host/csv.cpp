#include "host/csv.h"

#include <algorithm>

namespace plc {
namespace csv {
namespace {

const QLatin1Char kComma(',');
const QLatin1Char kQuote('"');
const QLatin1Char kLineFeed('\n');
const QLatin1Char kCarriageReturn('\r');
const QChar kByteOrderMark(0xFEFF);

bool needsQuotes(QChar character)
{
    return character == kComma || character == kQuote || character == kLineFeed ||
           character == kCarriageReturn;
}

/// Goes through the text once, from the left to the right.
class Parser {
public:
    explicit Parser(const QString& text) : m_text(text)
    {
        if (m_text.startsWith(kByteOrderMark))
            ++m_position;
    }

    std::optional<QVector<Record>> parse(QString* error)
    {
        QVector<Record> records;
        while (!atEnd()) {
            if (skipLineEnd())
                continue;
            Record record;
            record.line = m_line;
            do {
                record.fields.append(field());
            } while (m_error.isEmpty() && skip(kComma));
            if (m_error.isEmpty() && !atEnd() && !skipLineEnd())
                fail(m_line, QStringLiteral("found more behind a closing quote, expected a comma "
                                            "or the end of the line; quotes inside of a quoted "
                                            "field are written twice"));
            if (!m_error.isEmpty()) {
                *error = m_error;
                return {};
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
        texts.append(quotedField(field));
    // A single empty field would be an empty line.
    return fields == QStringList{QString()} ? QStringLiteral("\"\"") : texts.join(kComma);
}

std::optional<QVector<Record>> parse(const QString& text, QString* error)
{
    return Parser(text).parse(error);
}

} // namespace csv
} // namespace plc
