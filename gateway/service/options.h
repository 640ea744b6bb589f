#ifndef PLC_GATEWAY_SERVICE_OPTIONS_H
#define PLC_GATEWAY_SERVICE_OPTIONS_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "gateway/service/split_files.h"
#include "options/option.h"

namespace plc::gateway {

/// What the command line of the gateway may have.
struct Options {
    QString configuration;
    QString driverFile; ///< Empty: looked for beside the program and where it is installed.
    bool checksOnly = false;
    bool wantsStatus = false; ///< Of the gateway that runs with this configuration.
    bool isJson = false;
    bool wantsSplit = false; ///< Of a list of PLCs between processes.
    SplitFiles split;
    /// Help or version text: to be printed, and nothing else done.
    QString information;

    /// Each option; the readers write into this object.
    options::Table table();

private:
    bool m_wantsHelp = false;
    bool m_wantsVersion = false;
};

/// Reads the command line, whose first element is the program.
Expected<Options> readOptions(const QStringList& arguments);

} // namespace plc::gateway

#endif
