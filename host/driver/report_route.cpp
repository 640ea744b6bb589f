#include "host/driver/report_route.h"

#include <map>
#include <mutex>
#include <utility>

namespace plc::host {
namespace {

/// The routes of the process by their tags.
class Routes {
public:
    int add(std::vector<DriverReport>* reports)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        // The lowest that is free: numbers do not run out in a process that lives for years.
        int tag = 1;
        for (const auto& route : m_routes) {
            if (route.first != tag)
                break;
            ++tag;
        }
        m_routes.emplace(tag, reports);
        return tag;
    }
    void remove(int tag)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_routes.erase(tag);
    }
    std::vector<DriverReport>* find(int tag)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_routes.find(tag);
        return found == m_routes.end() ? nullptr : found->second;
    }

private:
    std::mutex m_mutex;
    std::map<int, std::vector<DriverReport>*> m_routes;
};

Routes& routes()
{
    // Runtimes may end after all statics: it is never destroyed.
    static Routes& all = *new Routes;
    return all;
}

} // namespace

ReportRoute::ReportRoute() : m_hostTag(routes().add(&m_reports)) {}

ReportRoute::~ReportRoute()
{
    routes().remove(m_hostTag);
}

std::vector<DriverReport> ReportRoute::take()
{
    return std::exchange(m_reports, {});
}

void ReportRoute::deliver(int hostTag, int category, int tag, int status)
{
    if (std::vector<DriverReport>* reports = routes().find(hostTag))
        reports->push_back({category, tag, status});
}

} // namespace plc::host
