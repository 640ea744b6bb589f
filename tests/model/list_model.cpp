#include <algorithm>
#include <map>

#include "model/driver_model.h"

namespace plc::model {

namespace {

constexpr std::size_t kListLimit = 1024;
constexpr int kBitWordCode = 16;

bool isSamePlace(const Variable& a, const Variable& b)
{
    return a.station == b.station && a.address == b.address && a.length == b.length;
}

bool isSameRead(const Variable& a, const Variable& b)
{
    return isSamePlace(a, b) && a.category == b.category && a.aux1 == b.aux1 &&
           a.deviceNo == b.deviceNo && a.dataType == b.dataType && a.areaIndex == b.areaIndex;
}

} // namespace

void DriverModel::setComInfo(Settings* record)
{
    if (record) {
        record->word[kComWord10] = 0;
        record->word[kComWord13] = 0;
    }
    settings = record;
}

void DriverModel::enableStation(int station, int enable)
{
    if (station < 0)
        stationsOff.clear();
    else if (enable == 0)
        stationsOff.insert(station);
    else if (enable == 1)
        stationsOff.erase(station);
}

int DriverModel::addRead(const Variable& var)
{
    readList.push_back(var);
    return int(readList.size());
}

int DriverModel::addWrite(const Variable& var, int append)
{
    if (append == 1 || writeList.size() < 2) {
        writeList.push_back(var);
        return int(writeList.size());
    }
    for (std::size_t i = 1; i < writeList.size(); ++i) {
        if (isSamePlace(writeList[i], var)) {
            writeList[i] = var;
            return int(writeList.size());
        }
    }
    if (writeList.size() < kListLimit)
        writeList.push_back(var);
    return int(writeList.size());
}

/// What a read of `count` asks for, in the host's units by the type code; false for types that
/// cannot be read. One-shot reads count texts in registers, cyclic reads in bytes.
bool DriverModel::readRange(const Place& place, int count, bool countsRegisters,
                            Variable& var) const
{
    const std::int64_t exact = count;
    var.dataType = place.dataType;
    var.address = place.address;
    var.areaIndex = place.areaIndex;
    switch (place.dataType) {
        case 1:
        case 2:
        case 14:
        case 15:
            var.length = count;
            return true;
        case 10:
        case 11:
            var.length = stored(countsRegisters ? exact * 2 : exact);
            return true;
        case 3:
        case 4:
        case 16:
            var.length = stored(exact * 2);
            return true;
        case 5:
        case 6:
        case 7:
        case 17:
            var.length = stored((exact + 1) / 2 * 4);
            return true;
        case 8:
        case 9:
            var.length = stored((exact + 3) / 4 * 8);
            return true;
        case 13:
            var.length = stored((place.address % 16 + exact + 15) / 16 * 2);
            var.dataType = kBitWordCode;
            var.address = place.address / 16;
            return true;
        default:
            return false;
    }
}

int DriverModel::addOnce(Variable& var, int append)
{
    if (!settings)
        return 0;
    if (append == 1) {
        onceList.push_back(var);
        return int(onceList.size());
    }
    Place place;
    if (labels.resolve(var.label, place) != 0)
        return 0;
    if (settings->word[kMultiStation] == 0)
        var.station = settings->word[kDefaultStation];
    const int maxReadBytes = settings->word[kMaxReadBytes];
    if (!readRange(place, var.length, true, var) || maxReadBytes <= 0)
        return 0;
    if (!isWithinLimits(var.length, maxReadBytes))
        return 0;
    std::int64_t remaining = var.length;
    while (remaining > 0) {
        const std::int64_t chunk = std::min<std::int64_t>(maxReadBytes, remaining);
        var.length = int(chunk);
        bool isThere = false;
        for (const Variable& entry : onceList)
            isThere = isThere || isSameRead(entry, var);
        if (!isThere && onceList.size() < kListLimit)
            onceList.push_back(var);
        if (onceList.size() >= kListLimit) {
            // The list takes nothing more; the record is left as its last piece.
            const std::int64_t rest = remaining % maxReadBytes;
            var.length = int(rest != 0 ? rest : maxReadBytes);
            var.address = stored(var.address + remaining);
            break;
        }
        var.address = stored(var.address + chunk);
        remaining -= chunk;
    }
    return int(onceList.size());
}

void DriverModel::sort(std::vector<Variable>& list)
{
    for (std::size_t pass = 1; pass < list.size(); ++pass) {
        for (std::size_t j = list.size() - 1; j >= pass; --j) {
            if (list[j].address < list[j - 1].address)
                std::swap(list[j], list[j - 1]);
        }
    }
}

void DriverModel::cut(int total, int maxLen, Variable& var, std::vector<Variable>& list)
{
    if (maxLen <= 0 || !isWithinLimits(total, maxLen))
        return;
    if (total <= maxLen) {
        list.push_back(var);
        return;
    }
    const int rest = total % maxLen;
    const int pieces = total / maxLen + (rest != 0 ? 1 : 0);
    const std::int64_t start = var.address;
    for (int k = 0; k < pieces; ++k) {
        var.address = stored(start + std::int64_t(k) * maxLen);
        var.length = k == pieces - 1 && rest != 0 ? rest : maxLen;
        list.push_back(var);
    }
}

int DriverModel::rebuildReadList(const std::vector<HostItem>& items)
{
    if (!settings)
        return 0;
    readList.clear();
    if (items.empty())
        return 0;
    cycleCount = 0;
    settings->word[kScanDone] = 0;
    const int maxReadBytes = settings->word[kMaxReadBytes];
    if (maxReadBytes <= 0)
        return 0;
    std::map<int, std::vector<Variable>> groups;
    for (const HostItem& item : items) {
        Place place;
        if (labels.resolve(item.label, place) != 0)
            continue;
        Variable entry;
        entry.aux1 = -1;
        entry.aux3 = settings->word[kRemoteMode];
        entry.deviceNo = settings->word[kLocalDeviceNo];
        entry.label = item.label;
        entry.subLabel = item.subLabel;
        entry.station =
            settings->word[kMultiStation] == 0 ? settings->word[kDefaultStation] : item.station;
        if (readRange(place, item.count, false, entry))
            groups[entry.areaIndex].push_back(entry);
    }
    for (auto& group : groups) {
        sort(group.second);
        foldInto(group.second, maxReadBytes);
    }
    return int(readList.size());
}

/// Folds a sorted group into the cyclic list.
void DriverModel::foldInto(const std::vector<Variable>& group, int maxLen)
{
    if (maxLen <= 0)
        return;
    std::vector<Variable> kept;
    for (const Variable& entry : group) {
        if (isWithinLimits(entry.length, maxLen == 1 ? kLargestValue : maxLen))
            kept.push_back(entry);
    }
    if (kept.empty())
        return;
    if (maxLen == 1)
        foldExact(kept);
    else
        fold(kept, maxLen);
}

/// Folds entries of equal address only and cuts none.
void DriverModel::foldExact(const std::vector<Variable>& group)
{
    readList.push_back(group[0]);
    int address = group[0].address;
    int length = group[0].length;
    for (std::size_t i = 1; i < group.size(); ++i) {
        const Variable& entry = group[i];
        if (entry.address != address) {
            readList.push_back(entry);
            length = entry.length;
        } else if (entry.length > length) {
            readList.back().length = entry.length;
            length = entry.length;
        }
        address = entry.address;
    }
}

void DriverModel::fold(const std::vector<Variable>& group, int maxLen)
{
    bool hasRange = false;
    for (const Variable& entry : group) {
        std::int64_t lastAddress = 0;
        std::int64_t lastEnd = 0;
        if (hasRange) {
            lastAddress = readList.back().address;
            lastEnd = lastAddress + readList.back().length;
        }
        Variable piece = entry;
        std::int64_t remaining = entry.length;
        if (hasRange && entry.address < lastAddress + maxLen) {
            const std::int64_t end = std::int64_t(entry.address) + entry.length;
            if (end <= lastEnd)
                continue;
            piece = readList.back();
            readList.pop_back();
            remaining = end - lastAddress;
        }
        while (remaining > 0) {
            piece.length = int(std::min<std::int64_t>(remaining, maxLen));
            readList.push_back(piece);
            hasRange = true;
            remaining -= piece.length;
            piece.address = stored(std::int64_t(piece.address) + piece.length);
        }
    }
}

} // namespace plc::model
