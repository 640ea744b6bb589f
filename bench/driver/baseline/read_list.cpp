#include <QtCore/QMap>

#include <utility>

#include "baseline/straightforward_driver.h"
#include "support/symbols.h"

namespace plc::bench {
namespace baseline {

namespace {

constexpr int kRegisterBytes = 2;
constexpr int kListLimit = 1024;

void bubbleSort(QList<RW_VAR>& list)
{
    for (int pass = 1; pass < int(list.size()); ++pass) {
        for (int j = int(list.size()) - 1; j >= pass; --j) {
            if (list.at(j).address < list.at(j - 1).address)
                std::swap(list[j - 1], list[j]);
        }
    }
}

} // namespace

int StraightforwardDriver::rebuildReadList(const QList<HostVarItem>& items, int maxReadBytes)
{
    QMutexLocker lock(&m_listMutex);
    m_readList.clear();
    QMap<int, QList<RW_VAR>> groups;
    for (const HostVarItem& item : items) {
        Place place;
        if (!resolve(item.label, place))
            continue;
        RW_VAR read;
        read.aux1 = -1;
        read.station = item.station;
        read.label = item.label;
        read.subLabel = item.subLabel;
        read.dataType = place.dataType;
        read.address = place.address;
        read.length = item.count * kRegisterBytes;
        read.areaIndex = place.areaIndex;
        groups[place.areaIndex].append(read);
    }
    for (QList<RW_VAR>& group : groups) {
        bubbleSort(group);
        for (const RW_VAR& read : group)
            mergeRange(read, maxReadBytes);
    }
    return int(m_readList.size());
}

void StraightforwardDriver::mergeRange(RW_VAR read, int maxReadBytes)
{
    int left = read.length;
    if (!m_readList.isEmpty() && m_readList.last().areaIndex == read.areaIndex &&
        read.address < m_readList.last().address + maxReadBytes) {
        const RW_VAR last = m_readList.last();
        left = read.address + read.length - last.address;
        if (left <= last.length)
            return;
        m_readList.removeLast();
        read = last;
    }
    while (left > 0) {
        read.length = qMin(left, maxReadBytes);
        m_readList.append(read);
        read.address += read.length;
        left -= read.length;
    }
}

int StraightforwardDriver::addOnceRead(const RW_VAR& wanted)
{
    Place place;
    if (!resolve(wanted.label, place))
        return 0;
    RW_VAR read = wanted;
    read.dataType = place.dataType;
    read.address = place.address;
    read.areaIndex = place.areaIndex;
    read.length = wanted.length * kRegisterBytes;
    QMutexLocker lock(&m_listMutex);
    for (const RW_VAR& queued : std::as_const(m_onceReadList)) {
        if (queued.category == read.category && queued.aux1 == read.aux1 &&
            queued.station == read.station && queued.address == read.address &&
            queued.length == read.length && queued.areaIndex == read.areaIndex)
            return int(m_onceReadList.size());
    }
    if (m_onceReadList.size() < kListLimit)
        m_onceReadList.append(read);
    return int(m_onceReadList.size());
}

} // namespace baseline
} // namespace plc::bench
