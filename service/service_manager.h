#ifndef PLC_SERVICE_SERVICE_MANAGER_H
#define PLC_SERVICE_SERVICE_MANAGER_H

#include <QtCore/QString>

#include <optional>

namespace plc::service {

/// What started this process, if it wants to be told how it does (systemd's notification). Without
/// one, nothing happens.
class ServiceManager {
public:
    /// It may take so many seconds from now until ready(): to be called before work that is long.
    void readyWithin(qint64 seconds);
    /// Work has begun, or goes on after reloading().
    void ready();
    /// One line for those who ask how the service is.
    void status(const QString& line);
    /// The process does its work. To be called each watchdogInterval(), by what does the work.
    void alive();
    /// The configuration is being read again; ends with ready().
    void reloading();
    void stopping();

    /// Milliseconds from one alive() to the next, half of what the service manager waits for one;
    /// nothing: it does not watch.
    static std::optional<int> watchdogInterval();

private:
    QString m_status;
};

} // namespace plc::service

#endif
