#include "cli/label_column.h"

#include <QtCore/QHash>
#include <QtCore/QSet>

#include <optional>

#include "cli/text_cells.h"

namespace plc::cli {
namespace {

constexpr QChar kEllipsis(0x2026);
/// Characters that are shown before a difference, where there is room.
constexpr int kContexts[] = {8, 4, 2, 0};
/// Labels are not shortened to less than this: there is nothing left to tell them apart by.
constexpr int kLeastWidth = 4;

/// What is shown of labels: some places counted from their beginning, and their ends.
struct ShortForm {
    QSet<int> places;
    int context = 0; ///< Characters shown before each place.
    int tail = 0;

    bool shows(int place, int size) const
    {
        if (place >= size - tail)
            return true;
        for (int i = place; i <= place + context; ++i) {
            if (places.contains(i))
                return true;
        }
        return false;
    }
    QString of(const QString& label) const
    {
        QString text;
        const int size = int(label.size());
        for (int i = 0; i < size; ++i) {
            // An ellipsis for a single character saves nothing.
            const bool standsAlone = (i == 0 || shows(i - 1, size)) && shows(i + 1, size);
            if (standsAlone || shows(i, size))
                text += label[i];
            else if (!text.endsWith(kEllipsis))
                text += kEllipsis;
        }
        return text;
    }
};

int firstDifference(const QString& left, const QString& right)
{
    int place = 0;
    while (place < int(left.size()) && place < int(right.size()) && left[place] == right[place])
        ++place;
    return place;
}

/// Places of the first two different labels that `texts` shows alike: nothing if there are none.
std::optional<int> nextDifference(const QStringList& labels, const QStringList& texts)
{
    QHash<QString, int> seen;
    for (int i = 0; i < int(labels.size()); ++i) {
        const int first = seen.value(texts[i], i);
        if (labels[first] != labels[i])
            return firstDifference(labels[first], labels[i]);
        seen.insert(texts[i], first);
    }
    return {};
}

int widest(const QStringList& texts)
{
    int cells = 0;
    for (const QString& text : texts)
        cells = qMax(cells, cellsOf(text));
    return cells;
}

QStringList shortened(const QStringList& labels, const ShortForm& form)
{
    QStringList texts;
    for (const QString& label : labels)
        texts.append(form.of(label));
    return texts;
}

/// The labels in at most `width` cells with their differences in sight; nothing if they need more.
QStringList distinct(const QStringList& labels, int width)
{
    for (const int context : kContexts) {
        ShortForm form;
        form.context = context;
        form.tail = width - 1;
        const int leastTail = context == 0 ? 0 : width / 3;
        while (form.tail >= leastTail) {
            QStringList texts = shortened(labels, form);
            const std::optional<int> difference = nextDifference(labels, texts);
            if (!difference && widest(texts) <= width)
                return texts;
            if (difference && !form.places.contains(*difference))
                form.places.insert(*difference);
            else
                --form.tail;
        }
    }
    return {};
}

/// Numbers of those texts that stand for different labels and look alike.
QSet<int> alike(const QStringList& labels, const QStringList& texts)
{
    QHash<QString, int> seen;
    QSet<int> found;
    for (int i = 0; i < int(labels.size()); ++i) {
        const int first = seen.value(texts[i], i);
        seen.insert(texts[i], first);
        if (labels[first] != labels[i])
            found << first << i;
    }
    return found;
}

} // namespace

QStringList labelColumn(const QStringList& labels, int width)
{
    QStringList texts;
    for (const QString& label : labels)
        texts.append(fittedTail(label, width));
    QSet<int> unclear = alike(labels, texts);
    // Shortened in another way, a label may look like one that was clear before.
    for (int count = 0; width >= kLeastWidth && int(unclear.size()) > count;) {
        count = int(unclear.size());
        QStringList group;
        for (int i = 0; i < int(labels.size()); ++i) {
            if (unclear.contains(i))
                group.append(labels[i]);
        }
        QStringList shown = distinct(group, width);
        if (shown.isEmpty())
            return texts;
        for (int i = 0; i < int(labels.size()); ++i) {
            if (unclear.contains(i))
                texts[i] = fitted(shown.takeFirst(), width);
        }
        unclear.unite(alike(labels, texts));
    }
    return texts;
}

} // namespace plc::cli
