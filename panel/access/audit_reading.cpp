#include "panel/access/audit_reading.h"

#include <QtCore/QFile>

#include <algorithm>
#include <deque>
#include <functional>

#include "panel/access/audit_chain.h"
#include "panel/access/secrets.h"

namespace plc::panel {
namespace {

constexpr char kAltered[] = "was altered: the hashes do not fit it";

/// A line, and what it says of its place in the chain.
struct Line {
    qint64 place = 0; ///< In the file, from 1.
    QByteArray bytes;
    std::optional<AuditLink> link;
};

/// Takes the lines of a file one after the other. One is judged when the next one is there, which
/// tells whether a line was altered or the one before it.
class Verifier {
public:
    void add(const Line& line)
    {
        ++m_result.lines;
        if (m_isSearching) {
            search(line);
            return;
        }
        if (!line.link) {
            m_rest += (m_rest.isEmpty() ? "" : "\n") + line.bytes;
            m_firstOfRest = m_firstOfRest > 0 ? m_firstOfRest : line.place;
            return;
        }
        judge(line);
    }
    AuditVerification finish(bool endsWithinLine)
    {
        const bool isCutNow = endsWithinLine && m_firstOfRest > 1 && isCutPart(m_rest);
        if (m_result.flaw == AuditVerification::None && !m_rest.isEmpty() && !isCutNow)
            report(AuditVerification::Altered, m_firstOfRest,
                   QStringLiteral("is no line of an audit"));
        m_result.endsWithinLine = endsWithinLine;
        return m_result;
    }

private:
    void judge(const Line& line)
    {
        if (m_result.firstNumber < 0)
            first(line);
        else
            compare(line);
        accept(line);
    }
    void first(const Line& line)
    {
        if (m_firstOfRest > 0)
            report(AuditVerification::Altered, m_firstOfRest,
                   QStringLiteral("is no line of an audit"));
        else if (!line.link->isBeginning)
            report(
                AuditVerification::Missing, line.place,
                QStringLiteral("is not the first line of an audit; what stood before is missing"));
        m_result.previous = line.link->previous;
        m_result.isContinued = line.link->isContinued;
        m_result.firstNumber = line.link->number;
    }
    void accept(const Line& line)
    {
        m_before = m_last;
        m_last = *line.link;
        m_result.head = line.link->hash;
        m_result.lastNumber = line.link->number;
        m_rest.clear();
        m_firstOfRest = 0;
    }
    void compare(const Line& line)
    {
        const AuditLink& link = *line.link;
        if (!link.cut.isEmpty() && isCut(link))
            return;
        const bool isNext = link.number == m_last.number + 1;
        const bool fits = link.previous == m_last.hash;
        if (!m_rest.isEmpty())
            report(AuditVerification::Altered, m_firstOfRest,
                   QStringLiteral("was altered: it is no line of an audit"));
        else if (!isNext && fits)
            report(AuditVerification::Altered, line.place, QLatin1String(kAltered));
        else if (!isNext)
            outOfOrder(line);
        else if (!fits)
            altered(line);
    }
    /// Or the one before: the next line tells.
    void altered(const Line& line)
    {
        report(AuditVerification::Altered, line.place - 1, QLatin1String(kAltered));
        m_suspect = line;
    }
    /// A part of a line stands before; it may look whole but for its end.
    bool isCut(const AuditLink& link)
    {
        const bool isRest = !m_rest.isEmpty() && isCutPart(m_rest) && link.cut == sha256(m_rest) &&
                            link.previous == m_last.hash && link.number == m_last.number + 1;
        const bool isLast = m_rest.isEmpty() && link.cut == m_last.hash &&
                            link.previous == m_before.hash && link.number == m_before.number + 1;
        m_result.cuts += isRest || isLast ? 1 : 0;
        return isRest || isLast;
    }
    void outOfOrder(const Line& line)
    {
        const qint64 number = line.link->number;
        m_expected = m_last.number + 1;
        report(
            number > m_expected ? AuditVerification::Missing : AuditVerification::Reordered,
            line.place,
            number > m_expected
                ? QStringLiteral("has number %1 where %2 is expected: what stood before is missing")
                      .arg(number)
                      .arg(m_expected)
                : QStringLiteral("has number %1 where %2 is expected: it stands in another place "
                                 "than it was written at")
                      .arg(number)
                      .arg(m_expected));
    }
    void search(const Line& line)
    {
        if (m_suspect.link && line.link && line.link->previous != m_suspect.link->hash)
            report(AuditVerification::Altered, m_suspect.place, QLatin1String(kAltered));
        m_suspect.link.reset();
        searchMissing(line);
    }
    /// Whether what is missing at the first flaw stands further down.
    void searchMissing(const Line& line)
    {
        if (m_result.flaw != AuditVerification::Missing || !line.link ||
            line.link->number != m_expected)
            return;
        m_result.flaw = AuditVerification::Reordered;
        m_result.sentence =
            QStringLiteral("line %1 stands where number %2 is expected, which is line %3")
                .arg(m_result.flawedLine)
                .arg(m_expected)
                .arg(line.place);
    }
    void report(AuditVerification::Flaw flaw, qint64 place, const QString& what)
    {
        m_isSearching = true;
        m_result.flaw = flaw;
        m_result.flawedLine = place;
        m_result.sentence = QStringLiteral("line %1 %2").arg(place).arg(what);
    }

    AuditVerification m_result;
    AuditLink m_last;
    AuditLink m_before;
    QByteArray m_rest; ///< Lines that are none, since the last one that is.
    qint64 m_firstOfRest = 0;
    Line m_suspect;
    qint64 m_expected = -1;
    bool m_isSearching = false;
};

/// Calls for each line, without its end; returns whether the file ends within one.
Expected<bool> forEachLine(const QString& path, const std::function<void(const QByteArray&)>& take)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString())};
    for (;;) {
        QByteArray line = file.readLine(kLongestAuditLine + 2);
        if (line.isEmpty())
            return false;
        if (!line.endsWith('\n') && file.atEnd()) {
            take(line);
            return true;
        }
        if (line.endsWith('\n'))
            line.chop(1);
        take(line);
    }
}

} // namespace

Expected<AuditPage> readAudit(const QString& path, qint64 from, int limit)
{
    const int most = std::min(std::max(limit, 0), kMostAuditLines);
    AuditPage page;
    Verifier verifier;
    qint64 place = 0;
    std::deque<QByteArray> last; // where `from` counts from the end
    const Expected<bool> endsWithinLine = forEachLine(path, [&](const QByteArray& bytes) {
        if (from >= 0 && place >= from && page.lines.size() < most)
            page.lines.append(bytes);
        ++place;
        verifier.add({place, bytes, parseAuditLine(bytes)});
        if (from >= 0)
            return;
        last.push_back(bytes);
        if (qint64(last.size()) > -std::max<qint64>(from, -kMostAuditLines))
            last.pop_front();
    });
    if (!endsWithinLine)
        return endsWithinLine.error();
    for (const QByteArray& line : last) {
        if (page.lines.size() < most)
            page.lines.append(line);
    }
    page.verification = verifier.finish(*endsWithinLine);
    if (page.verification.lines == 0)
        return Error{QStringLiteral("%1: is empty").arg(path)};
    return page;
}

Expected<AuditVerification> verifyAudit(const QString& path)
{
    const Expected<AuditPage> page = readAudit(path, 0, 0);
    if (!page)
        return page.error();
    return page->verification;
}

} // namespace plc::panel
