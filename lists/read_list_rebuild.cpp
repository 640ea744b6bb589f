#include "lists/read_list_rebuild.h"

#include <QtCore/QVector>

#include <algorithm>

#include "base/wrapped_int.h"
#include "lists/length_conversion.h"
#include "lists/variable_lists.h"
#include "symbols/label_resolution.h"

namespace {

/// `maxLen` that folds equal addresses only and cuts nothing.
const int kNoMerging = 1;

/// How far the loading of symbols goes ahead of their use: some memory latencies.
const int kLabelsAhead = 16;

/// What the folding needs to know of an entry; `source` says where the rest of it stands.
struct Range {
    qint32 area;
    qint32 address;
    qint32 length;
    qint32 dataType;
    int source;
};

bool isBefore(const Range& a, const Range& b)
{
    return a.area != b.area ? a.area < b.area : a.address < b.address;
}

/// Folds the sorted ranges of one area; `folded` receives the entries to read.
class RangeFolder {
public:
    RangeFolder(int maxLen, QVector<Range>& folded)
        : m_maxLen(maxLen), m_first(int(folded.size())), m_folded(folded)
    {
    }

    void add(const Range& range)
    {
        if (!isWithinLimits(range))
            return;
        if (m_maxLen == kNoMerging)
            addWhole(range);
        else if (isEmpty() || range.address >= last().address + m_maxLen)
            append(range, range.length);
        else
            merge(range);
    }

private:
    bool isEmpty() const { return m_folded.size() == m_first; }

    /// Whether the variable may be read, wherever its neighbours stand.
    bool isWithinLimits(const Range& range) const
    {
        return plc::isWithinLimits(range.length,
                                   m_maxLen == kNoMerging ? PLC_LARGEST_VALUE : m_maxLen);
    }

    struct Span {
        qint64 address;
        qint64 length;
    };
    Span last() const
    {
        const Range& range = m_folded.last();
        const Span span = {range.address, range.length};
        return span;
    }

    void addWhole(const Range& range)
    {
        if (isEmpty() || range.address != m_folded.last().address)
            m_folded.append(range);
        else if (range.length > m_folded.last().length)
            m_folded.last().length = range.length;
    }

    /// Extends the last entry to the end of `range`. Further pieces are copies of that entry, so
    /// that its label and type go on.
    void merge(const Range& range)
    {
        const qint64 span = qint64(range.address) + range.length - last().address;
        if (span <= last().length)
            return;
        const Range extended = m_folded.last();
        m_folded.pop_back();
        append(extended, span);
    }

    /// Appends `length` bytes from the address of `range` on, in pieces.
    void append(Range range, qint64 length)
    {
        for (qint64 left = length; left > 0; left -= range.length) {
            range.length = qint32(qMin(left, qint64(m_maxLen)));
            m_folded.append(range);
            range.address = plc::advanced(range.address, range.length);
        }
    }

    const int m_maxLen;
    const int m_first;
    QVector<Range>& m_folded;
};

Range rangeOf(const RW_VAR& entry, int source)
{
    const Range range = {entry.areaIndex, entry.address, entry.length, entry.dataType, source};
    return range;
}

/// A cyclic read of `item` without its place.
RW_VAR cyclicRead(const HostVarItem& item, const ComInfo& settings)
{
    RW_VAR read;
    read.aux1 = PLC_NO_HOST_REQUEST;
    read.aux3 = settings.remoteMode;
    read.deviceNo = settings.localDeviceNo;
    read.label = item.label;
    read.subLabel = item.subLabel;
    read.station = settings.multiStation == 0 ? settings.defaultStation : item.station;
    return read;
}

/// The ranges of all items that can be read, by area and address; equal ones in the host's order.
QVector<Range> sortedRanges(const QList<HostVarItem>& items, const plc::LabelResolver& resolver)
{
    QVector<Range> ranges;
    ranges.reserve(int(items.size()));
    for (int i = 0; i < int(items.size()); ++i) {
        if (i + kLabelsAhead < int(items.size()))
            resolver.prefetch(items.at(i + kLabelsAhead).label);
        ControlInformationM place = ControlInformationM();
        plc::ReadRange read;
        if (resolver.resolve(items.at(i).label, place) != plc::kResolved ||
            !plc::toReadRange(place, items.at(i).count, plc::TextCount::Bytes, read))
            continue;
        const Range range = {place.areaIndex, read.address, read.length, read.dataType, i};
        ranges.append(range);
    }
    std::stable_sort(ranges.begin(), ranges.end(), isBefore);
    return ranges;
}

/// Folds the ranges area by area: entries of different areas are never merged.
QVector<Range> fold(const QVector<Range>& sorted, int maxLen)
{
    QVector<Range> folded;
    int i = 0;
    while (i < int(sorted.size())) {
        const qint32 area = sorted.at(i).area;
        RangeFolder folder(maxLen, folded);
        for (; i < int(sorted.size()) && sorted.at(i).area == area; ++i)
            folder.add(sorted.at(i));
    }
    return folded;
}

} // namespace

namespace plc {

QList<RW_VAR> cyclicReads(const QList<HostVarItem>& items, const ComInfo& settings,
                          const LabelResolver& resolver)
{
    QList<RW_VAR> reads;
    if (settings.maxReadBytes <= 0)
        return reads;
    const QVector<Range> folded = fold(sortedRanges(items, resolver), settings.maxReadBytes);
    reads.reserve(int(folded.size()));
    for (int i = 0; i < int(folded.size()); ++i) {
        const Range& range = folded.at(i);
        RW_VAR read = cyclicRead(items.at(range.source), settings);
        read.dataType = range.dataType;
        read.address = range.address;
        read.length = range.length;
        read.areaIndex = range.area;
        reads.append(read);
    }
    return reads;
}

QList<RW_VAR> foldedReads(const QList<RW_VAR>& sorted, int maxLen)
{
    QVector<Range> folded;
    RangeFolder folder(maxLen, folded);
    for (int i = 0; i < int(sorted.size()); ++i)
        folder.add(rangeOf(sorted.at(i), i));

    QList<RW_VAR> reads;
    reads.reserve(int(folded.size()));
    for (int i = 0; i < int(folded.size()); ++i) {
        RW_VAR read = sorted.at(folded.at(i).source);
        read.address = folded.at(i).address;
        read.length = folded.at(i).length;
        reads.append(read);
    }
    return reads;
}

} // namespace plc

void Bubble_Sort(QList<RW_VAR>* list)
{
    if (!list)
        return;
    QVector<Range> ranges;
    ranges.reserve(int(list->size()));
    for (int i = 0; i < int(list->size()); ++i) {
        Range range = rangeOf(list->at(i), i);
        range.area = 0; // one group, whatever its entries say
        ranges.append(range);
    }
    std::stable_sort(ranges.begin(), ranges.end(), isBefore);

    QList<RW_VAR> sorted;
    sorted.reserve(int(ranges.size()));
    for (int i = 0; i < int(ranges.size()); ++i)
        sorted.append(list->at(ranges.at(i).source));
    list->swap(sorted);
}
