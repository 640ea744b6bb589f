#include "host/transfers/read_tracker.h"

#include <algorithm>
#include <iterator>

#include "host/driver/request_records.h"
#include "host/points/value_memory.h"
#include "host/wire/read_limits.h"

namespace plc::host {
namespace {

RW_VAR entryRecord(const OneShotRead& read, const FrameEntry& piece, int category, int deviceNo)
{
    RW_VAR var;
    var.category = category;
    var.aux1 = read.tag;
    var.deviceNo = deviceNo;
    var.label = read.point.label;
    var.station = read.point.station;
    var.areaIndex = piece.area;
    var.address = int(piece.address);
    var.length = int(piece.length);
    return var;
}

} // namespace

ReadTracker::ReadTracker(int category, int maxReadBytes, int mostRefusals)
    : m_category(category), m_maxReadBytes(maxReadBytes), m_mostRefusals(mostRefusals)
{
}

ReadTracker::Job ReadTracker::jobOf(const OneShotRead& read) const
{
    const QVector<FrameEntry> pieces = oneShotPieces(read.point, m_maxReadBytes);
    return {read, pieces, 0, ValueAssembly(valueBytes(read.point).size)};
}

void ReadTracker::add(const OneShotRead& read)
{
    m_waiting.push_back(jobOf(read));
}

void ReadTracker::addSuspects(const std::vector<OneShotRead>& reads)
{
    Group group;
    for (const OneShotRead& read : reads)
        group.push_back(jobOf(read));
    split(std::move(group));
}

void ReadTracker::renumber(const QVector<int>& tags)
{
    const auto change = [&tags](Group* group) {
        for (Job& job : *group)
            job.read.tag = tags.value(job.read.tag, -1);
    };
    change(&m_waiting);
    for (Group& group : m_suspects)
        change(&group);
    change(&m_batch);
}

bool ReadTracker::isEmpty() const
{
    return m_waiting.empty() && m_suspects.empty() && m_batch.empty();
}

bool ReadTracker::hasUnderWay(int station) const
{
    const auto isOfStation = [station](const Job& job) {
        return job.read.point.station == station;
    };
    const auto hasAny = [&isOfStation](const Group& group) {
        return std::any_of(group.begin(), group.end(), isOfStation);
    };
    return hasAny(m_batch) || std::any_of(m_suspects.begin(), m_suspects.end(), hasAny);
}

void ReadTracker::handOver(const DriverFunctions& driver, int localDeviceNo)
{
    if (m_isClosed)
        return;
    const size_t first = m_batch.size();
    if (m_batch.empty())
        m_budget = ReadRequestBudget();
    if (!m_suspects.empty() && m_batch.empty()) {
        fillBatch(&m_suspects.back());
        if (m_suspects.back().empty())
            m_suspects.pop_back();
        m_isClosed = true;
    } else {
        fillBatch(&m_waiting);
    }
    for (size_t i = first; i < m_batch.size(); ++i)
        handPieces(m_batch[i], driver, localDeviceNo);
}

/// As many pieces of one read as the request has room for.
void ReadTracker::handPieces(const Job& job, const DriverFunctions& driver, int localDeviceNo)
{
    for (int i = job.piecesDone; i < int(job.pieces.size()); ++i) {
        if (!m_budget.hasRoomFor(job.pieces[i].length))
            return;
        m_budget.add(job.pieces[i].length);
        RW_VAR var = entryRecord(job.read, job.pieces[i], m_category, localDeviceNo);
        driver.addListOnceReadVar(&var, PLC_APPEND_ALWAYS);
        ++m_piecesHanded;
    }
}

/// Moves the reads that fit into one request to the batch; of a longer one at least a part does.
void ReadTracker::fillBatch(Group* source)
{
    ReadRequestBudget budget = m_budget;
    while (!source->empty() && !m_isClosed) {
        const bool isWhole = fits(source->front(), &budget);
        if (!isWhole && !m_batch.empty())
            return;
        m_isClosed = !isWhole;
        m_batch.push_back(std::move(source->front()));
        source->pop_front();
    }
}

/// Whether all that is left of a read has room; it is taken then.
bool ReadTracker::fits(const Job& job, ReadRequestBudget* budget)
{
    for (int i = job.piecesDone; i < int(job.pieces.size()); ++i) {
        if (!budget->hasRoomFor(job.pieces[i].length))
            return false;
        budget->add(job.pieces[i].length);
    }
    return true;
}

void ReadTracker::requestSent(int entries)
{
    m_isClosed = true;
    for (Job& job : m_batch) {
        if (entries <= 0)
            return;
        job.read.wasSent = true;
        entries -= int(job.pieces.size()) - job.piecesDone;
    }
}

std::vector<SettledRead> ReadTracker::requestAccepted(const QVector<QByteArray>& blocks,
                                                      qint64 sentAt)
{
    std::vector<SettledRead> settled;
    for (const QByteArray& block : blocks) {
        // Behind them another read may have gone along.
        if (m_piecesHanded == 0)
            break;
        --m_piecesHanded;
        Job& job = m_batch.front();
        const FrameEntry& piece = job.pieces[job.piecesDone++];
        job.value.add(qint64(piece.address) - job.pieces.first().address, block, sentAt);
        if (job.piecesDone < int(job.pieces.size()))
            continue;
        settled.push_back({job.read, valueOfMemory(job.read.point, job.value.bytes())});
        m_batch.pop_front();
    }
    endBatchIfDone();
    return settled;
}

std::vector<SettledRead> ReadTracker::requestRefused(int entries, bool isLoginDoubted)
{
    Group refused = takeJobs(entries);
    endBatchIfDone();
    for (Job& job : refused)
        job.read.refusals += isLoginDoubted ? 0 : 1;
    if (!isLoginDoubted && refused.size() == 1 && refused.front().read.refusals > m_mostRefusals)
        return {{refused.front().read, QByteArray()}};
    split(std::move(refused));
    return {};
}

void ReadTracker::endBatchIfDone()
{
    if (m_piecesHanded > 0)
        return;
    // What is left of a long one goes on before all others, in the next request.
    if (!m_batch.empty())
        m_suspects.push_back(std::move(m_batch));
    m_batch.clear();
    m_isClosed = false;
}

/// Takes out of the batch the jobs of which so many entries were on the wire, to be begun anew.
ReadTracker::Group ReadTracker::takeJobs(int entries)
{
    Group jobs;
    m_piecesHanded = qMax(0, m_piecesHanded - entries);
    while (!m_batch.empty() && entries > 0) {
        Job& job = m_batch.front();
        entries -= int(job.pieces.size()) - job.piecesDone;
        jobs.push_back(jobOf(job.read));
        m_batch.pop_front();
    }
    return jobs;
}

/// Has a group asked for in halves; what stands alone once more as it is.
void ReadTracker::split(Group group)
{
    if (group.empty())
        return;
    if (group.size() > 1) {
        const auto middle = group.begin() + std::ptrdiff_t(group.size() / 2);
        m_suspects.emplace_back(std::make_move_iterator(middle),
                                std::make_move_iterator(group.end()));
        group.erase(middle, group.end());
    }
    m_suspects.push_back(std::move(group));
}

std::vector<OneShotRead> ReadTracker::takeAll()
{
    std::vector<OneShotRead> reads;
    const auto take = [&reads](Group* group) {
        for (Job& job : *group)
            reads.push_back(std::move(job.read));
        group->clear();
    };
    take(&m_batch);
    for (auto group = m_suspects.rbegin(); group != m_suspects.rend(); ++group)
        take(&*group);
    take(&m_waiting);
    m_suspects.clear();
    m_piecesHanded = 0;
    m_isClosed = false;
    return reads;
}

std::vector<OneShotRead> ReadTracker::takeWaiting(int station)
{
    std::vector<OneShotRead> reads;
    const auto take = [&reads, station](Group* group) {
        Group others;
        for (Job& job : *group) {
            if (job.read.point.station == station)
                reads.push_back(std::move(job.read));
            else
                others.push_back(std::move(job));
        }
        group->swap(others);
    };
    for (Group& group : m_suspects)
        take(&group);
    m_suspects.erase(std::remove_if(m_suspects.begin(), m_suspects.end(),
                                    [](const Group& group) { return group.empty(); }),
                     m_suspects.end());
    take(&m_waiting);
    return reads;
}

} // namespace plc::host
