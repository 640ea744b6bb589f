#include "setup/project_plc.h"

#include "setup/runtime_settings.h"

namespace plc::setup {

Expected<std::unique_ptr<ProjectPlc>> ProjectPlc::open(const ProjectPlcSettings& settings,
                                                       const QString& driver,
                                                       host::RuntimeListener* listener)
{
    Expected<project::Project> project = project::loadProject(settings.project);
    if (!project)
        return project.error();
    const Expected<host::DriverLibrary> library = host::DriverLibrary::loadCopy(driver);
    if (!library)
        return library.error();
    Expected<host::DriverClaim> claim = library->take();
    if (!claim)
        return claim.error();

    std::unique_ptr<ProjectPlc> plc(new ProjectPlc);
    plc->m_project = std::move(*project);
    plc->m_project.address = settings.address.value_or(plc->m_project.address);
    plc->m_project.port = settings.port.value_or(plc->m_project.port);
    plc->m_isReadOnly = settings.isReadOnly || plc->m_project.settings.readOnly;

    host::RuntimeSettings runtime = runtimeSettings(plc->m_project.settings, settings.cycleTime);
    runtime.readOnly = plc->m_isReadOnly;
    plc->m_runtime =
        std::make_unique<host::Runtime>(std::move(*claim), runtime, plc->m_project, listener);
    plc->m_link = std::make_unique<host::TcpLink>(&plc->m_runtime->session(),
                                                  plc->m_project.address, plc->m_project.port);
    return plc;
}

QString ProjectPlc::address() const
{
    return QStringLiteral("%1:%2").arg(m_project.address).arg(m_project.port);
}

} // namespace plc::setup
