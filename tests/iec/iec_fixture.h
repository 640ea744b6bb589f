#ifndef PLC_TESTS_IEC_IEC_FIXTURE_H
#define PLC_TESTS_IEC_IEC_FIXTURE_H

#include <gmock/gmock.h>

#include "iec/importer.h"
#include "project/memory_layout.h"
#include "values/iec_types.h"

namespace plc::iec {
namespace test {

/// What a source gave. `notes` are the diagnostics without the lines of the source:
/// "3:5: error: TEXT".
struct Imported {
    ImportResult result;
    int errors = 0;
    std::vector<std::string> notes;

    /// The notes, one a line.
    std::string text() const
    {
        std::string text;
        for (const std::string& note : notes)
            text += note + "\n";
        return text;
    }
    const project::Variable* find(const QString& scope, const QString& name) const
    {
        for (const project::ScopeDefinition& each : result.project.scopes) {
            for (const project::Variable& variable : each.variables) {
                if (each.name == scope && variable.name == name)
                    return &variable;
            }
        }
        return nullptr;
    }
    /// A variable of the scope of the global ones, which must be there.
    project::Variable global(const char* name) const
    {
        const project::Variable* variable = find(QString(), QLatin1String(name));
        EXPECT_NE(nullptr, variable) << name << text();
        return variable ? *variable : project::Variable();
    }
    /// "TYPE area:offset", a structure with its size, then dimensions.
    std::string place(const char* name) const
    {
        const project::Variable variable = global(name);
        return typeText(variable) + " " + std::to_string(variable.area) + ":" +
               std::to_string(variable.offset);
    }
    /// "member TYPE offset" for each member of the structure of this name.
    std::vector<std::string> members(const char* structure) const
    {
        std::vector<std::string> lines;
        for (const auto& each : result.project.structures) {
            if (each->name != QLatin1String(structure))
                continue;
            for (const project::Variable& member : each->members)
                lines.push_back(member.name.toStdString() + " " + typeText(member) + " " +
                                std::to_string(member.offset));
            lines.push_back("size " + std::to_string(each->size));
        }
        return lines;
    }

    static std::string typeText(const project::Variable& variable)
    {
        std::string text = variable.structure ? variable.structure->name.toStdString()
                           : variable.type    ? variable.type->name
                                              : "?";
        if (variable.stringLength > 0)
            text += "(" + std::to_string(variable.stringLength) + ")";
        for (const project::ArrayDimension& dimension : variable.dimensions)
            text += "[" + std::to_string(dimension.lower) + ".." + std::to_string(dimension.upper) +
                    "]";
        return text;
    }
};

inline Imported importText(const QString& source, const ImportOptions& options = {})
{
    const QVector<SourceFile> files{{QStringLiteral("test.st"), source}};
    Diagnostics diagnostics;
    Imported imported;
    imported.result = importDeclarations(files, options, &diagnostics);
    imported.errors = diagnostics.errorCount();
    for (const Diagnostic& each : diagnostics.list()) {
        const bool isError = each.severity == Diagnostic::Error;
        imported.notes.push_back(std::to_string(each.position.line) + ":" +
                                 std::to_string(each.position.column) +
                                 (isError ? ": error: " : ": warning: ") + each.text.toStdString());
    }
    return imported;
}

/// Global variables with these declarations, which stand in line 1.
inline Imported importVariables(const char* declarations, const char* types = "")
{
    return importText(QStringLiteral("VAR_GLOBAL %1 END_VAR %2")
                          .arg(QString::fromUtf8(declarations), QString::fromUtf8(types)));
}

/// Of a source that must be good.
inline Imported importGood(const char* source, const ImportOptions& options = {})
{
    const Imported imported = importText(QString::fromUtf8(source), options);
    EXPECT_EQ(0, imported.errors) << imported.text();
    return imported;
}

} // namespace test
} // namespace plc::iec

#endif
