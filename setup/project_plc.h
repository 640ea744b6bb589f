#ifndef PLC_SETUP_PROJECT_PLC_H
#define PLC_SETUP_PROJECT_PLC_H

#include <QtCore/QString>

#include <memory>
#include <optional>

#include "host/driver/driver_library.h"
#include "host/runtime/runtime.h"
#include "host/tcp/tcp_link.h"
#include "project/project.h"
#include "values/expected.h"

namespace plc::setup {

/// How a program that connects to several PLCs wants one of them.
struct ProjectPlcSettings {
    QString project;                ///< Path of the project file.
    std::optional<QString> address; ///< In place of the project's.
    std::optional<quint16> port;
    int cycleTime = 0;       ///< SessionTimes::cycleTime.
    bool isReadOnly = false; ///< Whatever the project says.
};

/// One PLC with all that it needs: its project, its own copy of the driver, its runtime and its
/// link over TCP. Belongs to the thread that opens it.
class ProjectPlc {
public:
    /// Reads the project and loads the driver, without connecting. `listener` stays the caller's.
    static Expected<std::unique_ptr<ProjectPlc>> open(const ProjectPlcSettings& settings,
                                                      const QString& driver,
                                                      host::RuntimeListener* listener);

    const project::Project& project() const { return m_project; }
    bool isReadOnly() const { return m_isReadOnly; }
    /// "192.168.0.12:1200"
    QString address() const;
    host::Runtime& runtime() { return *m_runtime; }
    const host::Runtime& runtime() const { return *m_runtime; }
    host::TcpLink& link() { return *m_link; }
    /// Milliseconds of the clock of the runtime.
    qint64 now() const { return m_link->now(); }

private:
    ProjectPlc() = default;

    // What stands first ends last.
    project::Project m_project;
    bool m_isReadOnly = false;
    std::unique_ptr<host::Runtime> m_runtime;
    std::unique_ptr<host::TcpLink> m_link;
};

} // namespace plc::setup

#endif
