#ifndef PLC_PANEL_SERVICE_OPTIONS_H
#define PLC_PANEL_SERVICE_OPTIONS_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "options/option.h"
#include "panel/config/settings.h"

namespace plc::panel {

/// What the command line of the panel may have.
struct Options {
    enum Task { Run, Check, Users, Audit };

    Task task = Run;
    QStringList projects;
    QStringList arguments; ///< Of the tasks Users and Audit.
    QString configuration; ///< Empty: there is none.
    QString driverFile;    ///< Empty: looked for beside the program and where it is installed.
    QString listen;
    QString socket;
    QString record;
    QString certificate;
    QString key;
    QString users;
    QString audit;
    int auditLines = 0; ///< Of the task Audit: the last ones are shown.
    bool isReadOnly = false;
    /// Help or version text: to be printed, and nothing else done.
    QString information;

    /// Each option; the readers write into this object.
    options::Table table();

private:
    bool m_checksOnly = false;
    bool m_wantsHelp = false;
    bool m_wantsVersion = false;

    friend Expected<Options> readOptions(const QStringList& words);
};

/// Reads the command line, whose first element is the program.
Expected<Options> readOptions(const QStringList& words);

/// The configuration with what the command line says in its place.
Expected<PanelSettings> settingsOf(const Options& options);

} // namespace plc::panel

#endif
