#include "project/symbol_selection.h"

#include <QtCore/QHash>
#include <QtCore/QSet>

#include "project/label_syntax.h"

namespace plc::project {
namespace {

using Structures = QSet<const StructureType*>;

void addStructures(const QVector<Variable>& variables, Structures* needed)
{
    std::vector<const QVector<Variable>*> waiting{&variables};
    while (!waiting.empty()) {
        const QVector<Variable>* members = waiting.back();
        waiting.pop_back();
        for (const Variable& member : *members) {
            const StructureType* structure = member.structure.get();
            if (!structure || needed->contains(structure))
                continue;
            needed->insert(structure);
            waiting.push_back(&structure->members);
        }
    }
}

} // namespace

Symbols symbolsFor(const QStringList& labels, const Symbols& symbols)
{
    QHash<QString, QSet<QString>> wanted;
    for (const QString& label : labels) {
        if (const Expected<QVector<LabelPart>> parts = parseLabel(label))
            wanted[parts->at(0).name].insert(parts->at(1).name);
    }
    Symbols selection;
    Structures needed;
    for (const ScopeDefinition& scope : symbols.scopes) {
        const auto names = wanted.constFind(scope.name);
        if (names == wanted.constEnd())
            continue;
        ScopeDefinition selected;
        selected.name = scope.name;
        for (const Variable& variable : scope.variables) {
            if (names->contains(variable.name))
                selected.variables.append(variable);
        }
        addStructures(selected.variables, &needed);
        selection.scopes.append(selected);
    }
    for (const std::shared_ptr<const StructureType>& structure : symbols.structures) {
        if (needed.contains(structure.get()))
            selection.structures.append(structure);
    }
    return selection;
}

} // namespace plc::project
