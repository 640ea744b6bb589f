#include "panel/api/history_queries.h"

namespace plc::panel {

HistoryQueries::HistoryQueries(const QString& file, const HistoryLimits& limits)
    : m_file(file), m_limits(limits)
{
    m_pool.setMaxThreadCount(kReaders);
    m_pool.setExpiryTimeout(-1);
}

HistoryQueries::~HistoryQueries()
{
    stop();
    m_pool.waitForDone();
}

void HistoryQueries::readSeries(const HistoryQuestion& question, const Responder& respond)
{
    submit(respond, [this, question] { return answer(&seriesAnswer, question); });
}

void HistoryQueries::readCsv(const HistoryQuestion& question, const Responder& respond)
{
    submit(respond, [this, question] { return answer(&csvAnswer, question); });
}

void HistoryQueries::submit(const Responder& respond, std::function<Response()> work)
{
    if (++m_waiting > kMostWaiting) {
        --m_waiting;
        respond(Response::error(503, QStringLiteral("too many questions wait; ask again later")));
        return;
    }
    m_pool.start([this, respond, work = std::move(work)] {
        respond(work());
        --m_waiting;
    });
}

Response HistoryQueries::answer(Answer answerOf, const HistoryQuestion& question)
{
    if (m_isStopping)
        return Response::error(503, QStringLiteral("the program ends"));
    Expected<std::unique_ptr<recorder::Reader>> reader = takeReader();
    if (!reader)
        return historyFailure(reader.error());
    Response response = answerOf(reader->get(), question, m_limits);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_idle.push_back(std::move(*reader));
    return response;
}

Expected<std::unique_ptr<recorder::Reader>> HistoryQueries::takeReader()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_idle.empty()) {
            std::unique_ptr<recorder::Reader> reader = std::move(m_idle.back());
            m_idle.pop_back();
            return reader;
        }
    }
    return recorder::Reader::open(m_file);
}

} // namespace plc::panel
