#include "cli/watch_state.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "project/label_pattern.h"

namespace plc::cli {
namespace {

constexpr const char* kOrderTexts[] = {"as named", "by label", "by value", "by age", "by change"};
constexpr int kOrders = int(sizeof(kOrderTexts) / sizeof(kOrderTexts[0]));

/// Digits that begin at `*position`, as a number; moves behind them.
QString digitsAt(const QString& text, int* position)
{
    const int start = *position;
    while (*position < int(text.size()) && text[*position].isDigit())
        ++*position;
    QString digits = text.mid(start, *position - start);
    while (digits.size() > 1 && digits.startsWith(QLatin1Char('0')))
        digits.remove(0, 1);
    return digits;
}

/// tank[2] stands before tank[10].
bool isBefore(const QString& left, const QString& right)
{
    int i = 0;
    int j = 0;
    while (i < int(left.size()) && j < int(right.size())) {
        if (left[i].isDigit() && right[j].isDigit()) {
            const QString a = digitsAt(left, &i);
            const QString b = digitsAt(right, &j);
            if (a != b)
                return std::pair(a.size(), a) < std::pair(b.size(), b);
            continue;
        }
        const QChar a = left[i++].toLower();
        const QChar b = right[j++].toLower();
        if (a != b)
            return a < b;
    }
    return left.size() - i < right.size() - j;
}

/// Numbers ascending, behind them texts.
bool hasLowerValue(const WatchRow& left, const WatchRow& right)
{
    if (left.number && right.number)
        return *left.number < *right.number;
    if (left.number || right.number)
        return left.number.has_value();
    return isBefore(left.value, right.value);
}

/// The oldest first, before them those never read.
bool isOlder(const WatchRow& left, const WatchRow& right)
{
    if (left.age && right.age)
        return *left.age > *right.age;
    return !left.age && right.age;
}

/// The last changed first, behind them those that have not changed.
bool hasChangedLater(const WatchRow& left, const WatchRow& right)
{
    if (left.sinceChange && right.sinceChange)
        return *left.sinceChange < *right.sinceChange;
    return left.sinceChange && !right.sinceChange;
}

bool precedes(WatchState::Order order, const WatchRow& left, const WatchRow& right)
{
    switch (order) {
        case WatchState::Order::AsNamed:
            break;
        case WatchState::Order::ByLabel:
            return isBefore(left.label, right.label);
        case WatchState::Order::ByValue:
            return hasLowerValue(left, right);
        case WatchState::Order::ByAge:
            return isOlder(left, right);
        case WatchState::Order::ByChange:
            return hasChangedLater(left, right);
    }
    return false;
}

/// Where `label` stands in the rows, there first; -1 if it does not.
int rowOf(const QString& label, int likely, const QVector<WatchRow>& rows)
{
    if (likely >= 0 && likely < int(rows.size()) && rows[likely].label == label)
        return likely;
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [&label](const WatchRow& row) { return row.label == label; });
    return found == rows.end() ? -1 : int(found - rows.begin());
}

bool haveSameLabels(const QVector<WatchRow>& left, const QVector<WatchRow>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const WatchRow& a, const WatchRow& b) { return a.label == b.label; });
}

constexpr char kNothingWritten[] = "nothing was written";

} // namespace

QStringList watchHelp()
{
    return {
        QStringLiteral("Up, Down, k, j      select a value, which stays selected where it moves"),
        QStringLiteral("PgUp, PgDn          a page up or down"),
        QStringLiteral("Home, End           the first or the last value"),
        QStringLiteral("w, Enter            write a value to the selected label"),
        QStringLiteral("p, Space            hold the table still, and go on"),
        QStringLiteral("s                   next order: as named, by label, value, age, change"),
        QStringLiteral("S                   the same order the other way round"),
        QStringLiteral("/                   show the labels that hold a text; * and ? as in files"),
        QStringLiteral("Esc                 show all labels again"),
        QStringLiteral("r                   let MIN and MAX begin anew"),
        QStringLiteral("?, h                this help; any other key leaves it"),
        QStringLiteral("q                   end"),
        QString(),
        QStringLiteral("> selected    * changed within the last second    ! stale"),
        QStringLiteral("TREND: one sign for each second, scaled to what is in sight"),
    };
}

void WatchState::update(const QVector<WatchRow>& rows)
{
    m_latest = rows;
    if (!m_isPaused)
        takeRows();
}

void WatchState::setPage(int lines)
{
    m_page = qMax(1, lines);
    keepInSight();
}

void WatchState::takeRows()
{
    const bool areSame = haveSameLabels(m_rows, m_latest);
    m_rows = m_latest;
    if (!areSame) {
        if (m_selectedLabel.isEmpty() && !m_rows.isEmpty())
            m_selectedLabel = m_rows.first().label;
        m_selectedRow = rowOf(m_selectedLabel, m_selectedRow, m_rows);
        applyFilter();
    } else if (m_order != Order::AsNamed && m_order != Order::ByLabel) {
        arrange();
    }
}

void WatchState::applyFilter()
{
    const project::LabelPattern pattern(m_filter, project::LabelPattern::Place::Inside);
    m_passing.clear();
    for (int i = 0; i < int(m_rows.size()); ++i) {
        if (m_filter.isEmpty() || (++m_comparisons, pattern.matches(m_rows[i].label)))
            m_passing.append(i);
    }
    arrange();
}

/// Sorts what passes the filter. The selected label stays selected wherever it goes: what is
/// written next is what the user has chosen.
void WatchState::arrange()
{
    m_shown = m_passing;
    const auto isFirst = [this](int left, int right) {
        return precedes(m_order, m_rows[m_isReversed ? right : left],
                        m_rows[m_isReversed ? left : right]);
    };
    if (m_order == Order::AsNamed && m_isReversed)
        std::reverse(m_shown.begin(), m_shown.end());
    else
        std::stable_sort(m_shown.begin(), m_shown.end(), isFirst);
    m_selected = int(m_shown.indexOf(m_selectedRow));
    keepInSight();
}

void WatchState::keepInSight()
{
    if (m_selected >= 0)
        m_firstLine = qBound(m_selected - m_page + 1, m_firstLine, m_selected);
    m_firstLine = qBound(0, m_firstLine, qMax(0, count() - m_page));
}

void WatchState::select(int position)
{
    if (m_shown.isEmpty())
        return;
    m_selected = qBound(0, position, count() - 1);
    m_selectedRow = m_shown[m_selected];
    m_selectedLabel = m_rows[m_selectedRow].label;
    keepInSight();
}

/// Where nothing is selected, the first value in sight is.
void WatchState::move(int lines)
{
    select(m_selected < 0 ? m_firstLine : m_selected + lines);
}

WatchState::Action WatchState::press(const Key& key)
{
    switch (m_mode) {
        case Mode::InTable:
            return pressInTable(key);
        case Mode::InHelp:
            pressInHelp(key);
            break;
        case Mode::TypingFilter:
            pressInFilter(key);
            break;
        case Mode::TypingValue:
            pressInValue(key);
            break;
        case Mode::Confirming:
            return pressInConfirmation(key);
    }
    return {};
}

WatchState::Action WatchState::pressInTable(const Key& key)
{
    switch (key.name) {
        case Key::Up:
            move(-1);
            break;
        case Key::Down:
            move(1);
            break;
        case Key::PageUp:
            move(-m_page);
            break;
        case Key::PageDown:
            move(m_page);
            break;
        case Key::Home:
            select(0);
            break;
        case Key::End:
            select(count() - 1);
            break;
        case Key::Enter:
            beginValue();
            break;
        case Key::Escape:
            m_filter.clear();
            applyFilter();
            break;
        case Key::Character:
            return pressCharacter(key.text[0]);
        default:
            break;
    }
    return {};
}

WatchState::Action WatchState::pressCharacter(QChar character)
{
    switch (character.unicode()) {
        case 'q':
            return {Action::Quit, QString()};
        case 'r':
            return {Action::ForgetRanges, QString()};
        case 'k':
            move(-1);
            break;
        case 'j':
            move(1);
            break;
        case 'w':
            beginValue();
            break;
        case 'p':
        case ' ':
            togglePause();
            break;
        case 's':
            sortBy(Order((int(m_order) + 1) % kOrders), false);
            break;
        case 'S':
            sortBy(m_order, !m_isReversed);
            break;
        case '/':
            m_mode = Mode::TypingFilter;
            m_typed = m_filter;
            break;
        case '?':
        case 'h':
            m_mode = Mode::InHelp;
            m_firstHelpLine = 0;
            break;
        default:
            m_message = QStringLiteral("%1 means nothing here; ? shows the keys").arg(character);
            break;
    }
    return {};
}

void WatchState::togglePause()
{
    m_isPaused = !m_isPaused;
    if (!m_isPaused)
        takeRows();
}

void WatchState::sortBy(Order order, bool isReversed)
{
    m_order = order;
    m_isReversed = isReversed;
    arrange();
}

void WatchState::pressInHelp(const Key& key)
{
    const int last = qMax(0, int(watchHelp().size()) - m_page);
    if (key.name == Key::Up)
        m_firstHelpLine = qMax(0, m_firstHelpLine - 1);
    else if (key.name == Key::Down)
        m_firstHelpLine = qMin(last, m_firstHelpLine + 1);
    else
        m_mode = Mode::InTable;
}

void WatchState::pressInFilter(const Key& key)
{
    if (typeKey(key, &m_typed))
        m_mode = Mode::InTable;
    const QString filter = key.name == Key::Escape ? QString() : m_typed;
    if (filter == m_filter)
        return;
    m_filter = filter;
    applyFilter();
}

void WatchState::beginValue()
{
    if (!m_writeRefusal.isEmpty()) {
        m_message = m_writeRefusal;
        return;
    }
    if (m_selected < 0) {
        m_message = QStringLiteral("nothing is selected: %1")
                        .arg(m_shown.isEmpty()
                                 ? QStringLiteral("no label passes the filter")
                                 : QStringLiteral("%1 does not pass the filter; Up and Down select "
                                                  "another label")
                                       .arg(m_selectedLabel));
        return;
    }
    m_mode = Mode::TypingValue;
    m_label = m_selectedLabel;
    m_row = m_selectedRow;
    m_typed.clear();
}

/// A value that cannot be written stays in the prompt, to be mended there.
void WatchState::pressInValue(const Key& key)
{
    if (!typeKey(key, &m_typed))
        return;
    if (key.name == Key::Escape || m_typed.trimmed().isEmpty()) {
        m_mode = Mode::InTable;
        m_message = QLatin1String(kNothingWritten);
        return;
    }
    m_checked = m_check(m_label + QLatin1Char('=') + m_typed);
    m_message = m_checked.obstacle;
    if (m_message.isEmpty())
        confirm();
}

/// Nobody confirms what is not all in sight.
void WatchState::confirm()
{
    if (m_fits(question())) {
        m_mode = Mode::Confirming;
        return;
    }
    m_mode = Mode::TypingValue;
    m_message = QStringLiteral(
        "nothing was written: the terminal is too small for the label, its value "
        "and the new one; make it larger and press Enter, or use plc write");
}

WatchState::Action WatchState::pressInConfirmation(const Key& key)
{
    const bool isYes = key.name == Key::Character && key.text.toLower() == QLatin1String("y");
    if (!isYes) {
        m_mode = Mode::InTable;
        m_message = QLatin1String(kNothingWritten);
        return {};
    }
    // The terminal may have become smaller, or the value longer, since it was asked.
    confirm();
    if (m_mode != Mode::Confirming)
        return {};
    m_mode = Mode::InTable;
    // What was confirmed, and not what was typed: blanks around it may mean something or nothing.
    return {Action::Write, m_label + QLatin1Char('=') + m_checked.value};
}

/// What the PLC has at the place that is to be written, as far as it is known.
QString WatchState::lastValue() const
{
    const int row = rowOf(m_label, m_row, m_latest);
    if (row < 0 || !m_latest[row].age)
        return QStringLiteral("never read");
    return m_latest[row].isStale ? QStringLiteral("last %1, stale").arg(m_latest[row].value)
                                 : QStringLiteral("now %1").arg(m_latest[row].value);
}

QString WatchState::question() const
{
    return QStringLiteral("write %1 = %2 (%3)? y: yes, any other key: no")
        .arg(m_label, m_checked.value + m_checked.unit, lastValue());
}

QString WatchState::orderText() const
{
    const QString text = QString::fromLatin1(kOrderTexts[int(m_order)]);
    return m_isReversed ? text + QStringLiteral(" reversed") : text;
}

QString WatchState::prompt() const
{
    switch (m_mode) {
        case Mode::InTable:
        case Mode::InHelp:
            break;
        case Mode::TypingFilter:
            return QStringLiteral("/%1_").arg(m_typed);
        case Mode::TypingValue:
            return QStringLiteral("write %1 (%2) = %3_").arg(m_label, lastValue(), m_typed);
        case Mode::Confirming:
            return question();
    }
    return QString();
}

} // namespace plc::cli
