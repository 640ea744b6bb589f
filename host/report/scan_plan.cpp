#include "host/report/scan_plan.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "host/points/value_layout.h"
#include "host/runtime/cyclic_reads.h"
#include "host/wire/read_limits.h"
#include "project/setting_limits.h"
#include "project/value_limits.h"

namespace plc::host {
namespace {

constexpr double kBitsPerByte = 8;
constexpr double kBitsPerMillisecond = 1000; // in one Mbit/s

/// A PLC accepts both frames of the login with so many bytes.
constexpr int kLoginReplySize = kFrameHeaderSize + 200;

/// The driver merges nothing.
constexpr int kSmallestEntry = 1;
/// Beyond those that share a request, sizes are tried in such steps.
constexpr double kStep = 1.1;

/// Scans count as equally fast when they differ by less.
constexpr double kTolerance = 0.01;

/// A good reply of this size that holds zeros only.
QByteArray zeroReply(int size)
{
    const int payload = size - kFrameHeaderSize;
    QByteArray reply(size, '\0');
    reply[0] = char(0xBB);
    reply[1] = char(0xBB);
    reply[4] = char(payload >> 8);
    reply[5] = char(payload);
    return reply;
}

/// A piece of an area.
struct Span {
    int area;
    qint64 start;
    qint64 end;
    qint64 size() const { return end - start; }
};

/// What the values cover: in pieces without gaps, or one piece for each area.
QVector<Span> coverage(const QVector<DataPoint>& points, bool acrossGaps)
{
    QVector<Span> parts;
    for (const DataPoint& point : points) {
        const ByteRange range = valueBytes(point);
        parts.append({range.area, range.start, qint64(range.start) + range.size});
    }
    std::sort(parts.begin(), parts.end(), [](const Span& a, const Span& b) {
        return std::tie(a.area, a.start) < std::tie(b.area, b.start);
    });
    QVector<Span> spans;
    for (const Span& part : parts) {
        const bool isNew = spans.isEmpty() || spans.last().area != part.area ||
                           (!acrossGaps && spans.last().end < part.start);
        if (isNew)
            spans.append(part);
        else
            spans.last().end = qMax(spans.last().end, part.end);
    }
    return spans;
}

ComInfo planningSettings(const RuntimeSettings& settings)
{
    ComInfo info;
    info.defaultStation = settings.defaultStation;
    info.multiStation = settings.multiStation ? 1 : 0;
    return info;
}

} // namespace

double scanTime(const ScanPlan& plan, const NetworkModel& network)
{
    const double bits = double(plan.bytesSent + plan.bytesReceived) * kBitsPerByte;
    return plan.requests * network.roundTrip + bits / (network.bandwidth * kBitsPerMillisecond);
}

double gapShare(const ScanPlan& plan)
{
    return plan.memoryBytes == 0 ? 0 : double(plan.gapBytes) / double(plan.memoryBytes);
}

ScanPlanner::ScanPlanner(DriverClaim driver, const RuntimeSettings& settings,
                         const QVector<DataPoint>& points)
    : m_claim(std::move(driver)),
      m_driver(m_claim.functions()),
      m_points(points),
      m_settings(planningSettings(settings))
{
    for (const Span& span : coverage(points, false))
        m_valueBytes += span.size();
    m_driver.setComInfo(&m_settings);
}

ScanPlanner::~ScanPlanner()
{
    clearList();
    m_driver.setComInfo(nullptr);
}

void ScanPlanner::clearList()
{
    QList<HostVarItem> nothing;
    m_driver.reCreatReadVarList(&nothing);
}

ScanPlan ScanPlanner::plan(int maxReadBytes)
{
    ScanPlan plan;
    plan.maxReadBytes = maxReadBytes;
    m_settings.maxReadBytes = maxReadBytes;
    clearList();
    QVector<ScanValue> values;
    for (const DataPoint& point : m_points)
        values.append(scanValue(int(values.size()), point, maxReadBytes));
    for (const ScanEntry& entry : layOutScan(values, maxReadBytes)) {
        RW_VAR record = cyclicRecord(entry, m_points[entry.rows.first()].label, m_settings);
        plan.entries = m_driver.addListReadVar(&record);
    }
    for (int entries = 0; entries < plan.entries;) {
        const Protocol* next = m_driver.comCommunication();
        const RequestContent request = parseRequest(next->frame);
        const int requestSize = int(next->frame.size());
        const int replySize = request.isLogin() ? kLoginReplySize : readReplySize(request.entries);
        answer(replySize);
        if (request.isLogin())
            continue;
        ++plan.requests;
        plan.bytesSent += requestSize;
        plan.bytesReceived += replySize;
        for (const FrameEntry& entry : request.entries) {
            plan.memoryBytes += entries < plan.entries ? entry.length : 0;
            ++entries;
        }
    }
    plan.gapBytes = plan.memoryBytes - m_valueBytes;
    forgetLogin();
    return plan;
}

/// Nobody was logged in to. The driver forgets a login with a request that is given up, by empty
/// replies.
void ScanPlanner::forgetLogin()
{
    QByteArray nothing;
    while (m_driver.comCommunication() &&
           m_driver.dataCom(&nothing, 0)->result == PLC_RESULT_NOT_FINISHED) {
    }
}

/// Two calls: the first one tells the driver the size of the reply.
void ScanPlanner::answer(int replySize)
{
    QByteArray reply = zeroReply(replySize);
    m_driver.dataCom(&reply, replySize);
    m_driver.dataCom(&reply, replySize);
}

ScanPlan ScanPlanner::best(const NetworkModel& network, const ScanPlan& asItIs,
                           const std::function<void(int done, int total)>& planned)
{
    const QVector<int> sizes = candidates();
    QVector<ScanPlan> plans{asItIs};
    for (int maxReadBytes : sizes) {
        plans.append(plan(maxReadBytes));
        if (planned)
            planned(int(plans.size()) - 1, int(sizes.size()));
    }
    double shortest = scanTime(asItIs, network);
    for (const ScanPlan& plan : plans)
        shortest = qMin(shortest, scanTime(plan, network));
    const auto isTooSlow = [&](const ScanPlan& plan) {
        return scanTime(plan, network) > shortest * (1 + kTolerance);
    };
    plans.erase(std::remove_if(plans.begin(), plans.end(), isTooSlow), plans.end());
    // Of equal ones the first.
    return *std::min_element(plans.begin(), plans.end(), [](const ScanPlan& a, const ScanPlan& b) {
        return a.bytesSent + a.bytesReceived < b.bytesSent + b.bytesReceived;
    });
}

/// Sizes of which some fill a request, sizes that reach over whole areas, and steps in between.
QVector<int> ScanPlanner::candidates() const
{
    QVector<int> sizes;
    for (int entries = 1; entries <= PLC_MOST_READ_ENTRIES; ++entries)
        sizes.append(PLC_REQUEST_BUDGET / entries - PLC_READ_ENTRY_OVERHEAD);
    for (int size = kSmallestEntry; size < sizes.last(); size *= 2)
        sizes.append(size);
    double longSize = kLongestSharedEntry;
    while (longSize < project::kMostReadBytes) {
        sizes.append(int(longSize));
        longSize *= kStep;
    }
    for (const Span& span : coverage(m_points, true)) {
        if (span.size() <= project::kMostReadBytes)
            sizes.append(int(span.size()));
    }
    sizes.append(project::kMostReadBytes);
    std::sort(sizes.begin(), sizes.end());
    sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
    sizes.erase(std::remove_if(sizes.begin(), sizes.end(),
                               [this](int size) { return !hasFewPieces(size); }),
                sizes.end());
    return sizes;
}

/// Whether a project may have this setting: of a value that falls into too many pieces the driver
/// reads nothing, which takes no time and is no plan.
bool ScanPlanner::hasFewPieces(int maxReadBytes) const
{
    qint64 all = 0;
    for (const DataPoint& point : m_points) {
        const qint64 size = plc::host::valueBytes(point).size;
        const qint64 pieces = (size + maxReadBytes - 1) / maxReadBytes;
        all += pieces;
        if (pieces > project::kMostPiecesOfValue || all > project::kMostCyclicPieces)
            return false;
    }
    return true;
}

} // namespace plc::host
