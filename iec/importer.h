#ifndef PLC_IEC_IMPORTER_H
#define PLC_IEC_IMPORTER_H

#include <functional>
#include <optional>

#include "iec/diagnostics.h"
#include "iec/type_resolver.h"
#include "project/project.h"

namespace plc::iec {

/// A byte of a memory area.
struct MemoryPlace {
    int area = 0;
    qint32 offset = 0;
};

struct ImportOptions {
    int defaultArea = 0;             ///< Of addresses that name none.
    std::optional<MemoryPlace> base; ///< From where variables without an address are placed.
    int alignment = kUsualAlignment; ///< See TypeResolver.
    QString globalScope;             ///< Name of the scope of the global variables.
};

struct ImportResult {
    project::Project project; ///< Areas, structures and scopes.
    int variables = 0;
    int leftOut = 0; ///< Variables whose place is not known.
};

/// Builds the symbols of a project from the declarations of these files. Errors are reported; what
/// is returned then is not whole. `progressed` is told how many characters of all are read.
ImportResult importDeclarations(const QVector<SourceFile>& files, const ImportOptions& options,
                                Diagnostics* diagnostics,
                                const std::function<void(qint64 characters)>& progressed = {});

} // namespace plc::iec

#endif
