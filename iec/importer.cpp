#include "iec/importer.h"

#include <QtCore/QMap>

#include <algorithm>
#include <limits>
#include <tuple>

#include "iec/description.h"
#include "iec/direct_address.h"
#include "iec/parser.h"
#include "project/memory_layout.h"
#include "values/iec_types.h"
#include "values/nearest_name.h"

namespace plc::iec {
namespace {

/// Puts declared variables into memory.
class Importer {
public:
    Importer(const QVector<SourceFile>& files, const Declarations& declarations,
             const ImportOptions& options, Diagnostics* diagnostics)
        : m_files(files),
          m_options(options),
          m_diagnostics(diagnostics),
          m_constants(declarations, diagnostics),
          m_types(declarations, &m_constants, options.alignment, diagnostics),
          m_nextFree(options.base ? options.base->offset : 0)
    {
    }

    void addScope(const Scope& scope, const QString& name)
    {
        const int index = scopeIndex(name);
        for (const Declaration& declaration : scope.variables) {
            if (m_diagnostics->isFull())
                return;
            project::Variable variable;
            if (!isNew(name, declaration) || !place(declaration, scope.name, &variable))
                continue;
            m_places.append({declaration.position, index,
                             int(m_result.project.scopes[index].variables.size()),
                             declaration.address.kind == Token::End});
            m_result.project.scopes[index].variables.append(variable);
            ++m_result.variables;
        }
    }

    ImportResult finished()
    {
        markOverlays();
        addAreas();
        m_result.project.structures = m_types.structures();
        QVector<project::ScopeDefinition>& scopes = m_result.project.scopes;
        scopes.erase(std::remove_if(scopes.begin(), scopes.end(),
                                    [](const project::ScopeDefinition& scope) {
                                        return scope.variables.isEmpty();
                                    }),
                     scopes.end());
        return m_result;
    }

private:
    /// Where a variable was declared, and where it stands in the project.
    struct Place {
        Position position;
        int scope;
        int variable;
        bool isFromBase;
    };

    int scopeIndex(const QString& name)
    {
        QVector<project::ScopeDefinition>& scopes = m_result.project.scopes;
        for (int i = 0; i < int(scopes.size()); ++i) {
            if (scopes[i].name == name)
                return i;
        }
        scopes.append(project::ScopeDefinition{name, {}});
        return int(scopes.size()) - 1;
    }

    bool isNew(const QString& scope, const Declaration& declaration)
    {
        const QString key = (scope + QLatin1Char('.') + declaration.name).toLower();
        const auto known = m_names.constFind(key);
        if (known != m_names.constEnd()) {
            m_diagnostics->error(
                declaration.position,
                QStringLiteral("%1 is declared already, at %2")
                    .arg(values::quoted(declaration.name), placeText(m_files, *known)));
            return false;
        }
        m_names.insert(key, declaration.position);
        return true;
    }

    void leaveOut(const Declaration& declaration, WarningKind kind, const QString& why)
    {
        ++m_result.leftOut;
        m_diagnostics->warning(
            declaration.position, kind,
            QStringLiteral("%1 is left out: %2").arg(values::quoted(declaration.name), why));
    }

    /// Instances of function blocks, mostly.
    void leaveOutUnknown(const Declaration& declaration)
    {
        const QString why = m_types.unknownText(*declaration.type);
        if (m_options.base) {
            leaveOut(declaration, WarningKind::UnknownSize,
                     why + QStringLiteral(". Its size is not known, and what is placed behind it "
                                          "may lie elsewhere in the controller"));
        } else {
            leaveOut(declaration, WarningKind::FunctionBlock, why);
        }
    }

    bool fail(const Position& position, const QString& text)
    {
        m_diagnostics->error(position, text);
        return false;
    }

    /// Fills `variable` in. Returns false when it is left out or wrong.
    bool place(const Declaration& declaration, const QString& scope, project::Variable* variable)
    {
        variable->name = declaration.name;
        variable->description = declaration.description;
        if (declaration.address.kind != Token::End)
            return placeAtAddress(declaration, scope, variable);
        // Constants are for the compiler; they need no memory.
        if (declaration.isConstant)
            return false;
        if (!m_types.isKnown(*declaration.type)) {
            leaveOutUnknown(declaration);
            return false;
        }
        if (!m_options.base) {
            leaveOut(declaration, WarningKind::NoAddress,
                     QStringLiteral("it has no address; give it one with AT, or let --base "
                                    "AREA:OFFSET place it"));
            return false;
        }
        return placeNext(declaration, scope, variable);
    }

    bool resolve(const Declaration& declaration, const QString& scope, project::Variable* variable)
    {
        if (!m_types.resolve(*declaration.type, scope, declaration.name, variable))
            return false;
        if (hasUnit(*variable))
            variable->unit = takeUnit(&variable->description);
        return true;
    }

    bool placeAtAddress(const Declaration& declaration, const QString& scope,
                        project::Variable* variable)
    {
        const Token& token = declaration.address;
        QString expected;
        const std::optional<DirectAddress> address = parseDirectAddress(token.text, &expected);
        if (!address) {
            return fail(token.position, QStringLiteral("found the address %1, expected %2")
                                            .arg(values::quoted(token.text), expected));
        }
        if (address->place == DirectAddress::Process) {
            leaveOut(declaration, WarningKind::ProcessAddress,
                     QStringLiteral("inputs and outputs lie in no memory area; copy "
                                    "it to a variable at a %M address"));
            return false;
        }
        if (address->place == DirectAddress::Open) {
            leaveOut(declaration, WarningKind::OpenAddress,
                     QStringLiteral("its address is left to the controller"));
            return false;
        }
        if (!resolve(declaration, scope, variable))
            return false;
        variable->area = address->area.value_or(m_options.defaultArea);
        return address->bit ? placeAtBit(token, *address, variable)
                            : placeAtByte(token, *address, variable);
    }

    bool placeAtByte(const Token& token, const DirectAddress& address, project::Variable* variable)
    {
        if (!variable->type || !values::isBit(*variable->type))
            return putAt(address.byte, token.position, variable);
        if (token.text.size() < 3 || token.text[2].toUpper() != QLatin1Char('W') ||
            project::elementCount(*variable) > project::kBitsPerWord) {
            return fail(token.position,
                        QStringLiteral("found %1 for a BIT, expected an address with a bit, such "
                                       "as %MX12.3, or for up to %2 bits one of a word")
                            .arg(values::quoted(token.text))
                            .arg(project::kBitsPerWord));
        }
        // From the least significant bit of the word on.
        return putAt(address.byte * project::kBitsPerWord, token.position, variable);
    }

    /// A BOOL with a bit address is that one bit; everything else begins with a byte.
    bool placeAtBit(const Token& token, const DirectAddress& address, project::Variable* variable)
    {
        const bool isBitVariable = variable->type && values::isBit(*variable->type);
        const bool isOneBool = variable->type &&
                               variable->type->format == values::ValueFormat::Boolean &&
                               variable->dimensions.isEmpty();
        if (!isBitVariable && !isOneBool) {
            if (*address.bit == 0)
                return putAt(address.byte, token.position, variable);
            return fail(token.position,
                        QStringLiteral("found bit %1 in %2, expected bit 0: only a single BOOL or "
                                       "BIT begins inside of a byte")
                            .arg(*address.bit)
                            .arg(values::quoted(token.text)));
        }
        if (*address.bit + project::elementCount(*variable) > project::kBitsPerByte) {
            return fail(token.position, QStringLiteral("found %1 bits from bit %2 on, expected "
                                                       "bits of one byte")
                                            .arg(project::elementCount(*variable))
                                            .arg(*address.bit));
        }
        variable->type = values::findIecType(QStringLiteral("BIT"));
        return putAt(bitOffset(address.byte, *address.bit), token.position, variable);
    }

    bool putAt(qint64 offset, const Position& position, project::Variable* variable)
    {
        variable->offset = qint32(qMin(offset, project::kHighestOffset));
        const qint64 past = offset - variable->offset;
        if (past > 0 || project::transferEnd(*variable) > project::kHighestOffset) {
            return fail(position, QStringLiteral("%1 reaches beyond byte %2 of its area")
                                      .arg(values::quoted(variable->name))
                                      .arg(project::kHighestOffset));
        }
        return true;
    }

    bool placeNext(const Declaration& declaration, const QString& scope,
                   project::Variable* variable)
    {
        if (!resolve(declaration, scope, variable))
            return false;
        if (variable->type && values::isBit(*variable->type))
            return fail(declaration.position,
                        QStringLiteral("a BIT needs an address such as %MX12.3; use BOOL"));
        variable->area = m_options.base->area;
        const int alignment = m_types.alignmentOf(*variable);
        const qint64 offset = (m_nextFree + alignment - 1) / alignment * alignment;
        if (!putAt(offset, declaration.position, variable))
            return false;
        m_nextFree = project::transferEnd(*variable);
        return true;
    }

    const project::Variable& variableAt(const Place& place) const
    {
        return m_result.project.scopes[place.scope].variables[place.variable];
    }

    /// Declared addresses may overlap on purpose, as a word and its bits do; a project file wants
    /// to be told so.
    void markOverlays()
    {
        QVector<project::Variable> variables;
        for (const Place& place : m_places)
            variables.append(variableAt(place));
        for (const project::SharedMemory& shared : project::coveredVariables(variables)) {
            const Place& covering = m_places[shared.first];
            const Place& covered = m_places[shared.second];
            const QString where = QStringLiteral("%1 shares byte %2 of area %3 with %4 (%5)")
                                      .arg(values::quoted(variables[shared.second].name))
                                      .arg(shared.byte)
                                      .arg(variables[shared.second].area)
                                      .arg(values::quoted(variables[shared.first].name),
                                           placeText(m_files, covering.position));
            if (covering.isFromBase || covered.isFromBase) {
                m_diagnostics->error(covered.position,
                                     where + QStringLiteral("; choose another --base"));
                continue;
            }
            m_diagnostics->warning(covered.position, WarningKind::Overlay,
                                   where + QStringLiteral("; it is marked as an overlay"));
            m_result.project.scopes[covered.scope].variables[covered.variable].overlay = true;
        }
    }

    void addAreas()
    {
        QMap<int, qint64> sizes;
        for (const Place& place : m_places) {
            const project::Variable& variable = variableAt(place);
            qint64& size = sizes[variable.area];
            size = qMax(size, project::transferEnd(variable));
        }
        for (auto it = sizes.constBegin(); it != sizes.constEnd(); ++it)
            m_result.project.areas.append({it.key(), qint32(it.value())});
    }

    const QVector<SourceFile>& m_files;
    const ImportOptions& m_options;
    Diagnostics* m_diagnostics;
    Constants m_constants;
    TypeResolver m_types;
    qint64 m_nextFree; ///< In the area of the base.
    QHash<QString, Position> m_names;
    QVector<Place> m_places;
    ImportResult m_result;
};

} // namespace

ImportResult importDeclarations(const QVector<SourceFile>& files, const ImportOptions& options,
                                Diagnostics* diagnostics,
                                const std::function<void(qint64 characters)>& progressed)
{
    Declarations declarations;
    qint64 before = 0;
    for (int file = 0; file < int(files.size()); ++file) {
        Parser parser(files[file], file, &declarations, diagnostics);
        parser.parse([&](int characters) {
            if (progressed)
                progressed(before + characters);
        });
        before += files[file].text.size();
    }
    Importer importer(files, declarations, options, diagnostics);
    importer.addScope(declarations.globals, options.globalScope);
    for (const Scope& program : declarations.programs)
        importer.addScope(program, program.name);
    return importer.finished();
}

} // namespace plc::iec
