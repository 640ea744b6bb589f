#include "panel/api/history_queries.h"

#include <algorithm>

namespace plc::panel {

HistoryQueries::HistoryQueries(const QString& file, const HistoryLimits& limits)
    : m_file(file), m_limits(limits), m_threads(kReaders)
{
}

HistoryQueries::~HistoryQueries()
{
    stop();
}

void HistoryQueries::readSeries(const HistoryQuestion& question, const Responder& respond)
{
    read(respond, [question, this](recorder::Reader* reader) {
        return seriesAnswer(reader, question, m_limits);
    });
}

void HistoryQueries::readCsv(const HistoryQuestion& question, const Responder& respond)
{
    read(respond, [question, this](recorder::Reader* reader) {
        return csvAnswer(reader, question, m_limits);
    });
}

void HistoryQueries::read(const Responder& respond, Work work)
{
    submit(respond, [this, work = std::move(work)] { return answer(work); });
}

void HistoryQueries::stop()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isStopping = true;
    for (const std::unique_ptr<recorder::Reader>& reader : m_busy)
        reader->interrupt();
}

void HistoryQueries::submit(const Responder& respond, std::function<Response()> work)
{
    if (++m_waiting > kMostWaiting) {
        --m_waiting;
        respond(Response::error(503, QStringLiteral("too many questions wait; ask again later")));
        return;
    }
    m_threads.submit([this, respond, work = std::move(work)] {
        respond(work());
        --m_waiting;
    });
}

Response HistoryQueries::answer(const Work& work)
{
    Response ending = Response::error(503, QStringLiteral("the program ends"));
    if (m_isStopping)
        return ending;
    const Expected<recorder::Reader*> reader = takeReader();
    if (!reader)
        return historyFailure(reader.error());
    const Response response = m_isStopping ? ending : work(*reader);
    giveBack(*reader);
    // Else it was answered before it could be interrupted.
    return m_isStopping && response.status == ending.status ? ending : response;
}

Expected<recorder::Reader*> HistoryQueries::takeReader()
{
    std::unique_ptr<recorder::Reader> reader;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        while (!m_idle.empty() && !reader) {
            if (m_idle.back()->isAtItsPath())
                reader = std::move(m_idle.back());
            m_idle.pop_back();
        }
    }
    if (!reader) {
        Expected<std::unique_ptr<recorder::Reader>> opened = recorder::Reader::open(m_file);
        if (!opened)
            return opened.error();
        reader = std::move(*opened);
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_busy.push_back(std::move(reader));
    return m_busy.back().get();
}

void HistoryQueries::giveBack(recorder::Reader* reader)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto isThis = [reader](const auto& one) { return one.get() == reader; };
    const auto found = std::find_if(m_busy.begin(), m_busy.end(), isThis);
    m_idle.push_back(std::move(*found));
    m_busy.erase(found);
}

} // namespace plc::panel
