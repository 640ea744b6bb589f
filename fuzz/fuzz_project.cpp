// Project files: any bytes are read or refused in one line, and what is read is sound.

#include <QtCore/QSet>

#include "fuzz_host.h"
#include "host/points/symbol_list.h"
#include "project/label_lookup.h"
#include "project/memory_layout.h"
#include "project/project.h"
#include "values/iec_types.h"

namespace {

using plc::fuzz::FuzzHost;
using plc::fuzz::GuardedMemory;
using plc::fuzz::require;
using plc::project::ArrayDimension;
using plc::project::Project;
using plc::project::Variable;

/// Labels tried of one project; structures within structures have many.
constexpr int kMostLabels = 200;

class ProjectCheck {
public:
    explicit ProjectCheck(const Project& project) : m_project(project), m_finder(project) {}

    void run()
    {
        QList<Label_Type_Info> symbols = plc::host::symbolList(m_project);
        require(symbols.size() == m_project.scopes.size(), "each scope has a symbol");
        PassVarName_2(&symbols);
        for (const plc::project::ScopeDefinition& scope : m_project.scopes) {
            for (const Variable& variable : scope.variables)
                checkVariable(scope.name + QLatin1Char('.') + variable.name, variable);
        }
        for (const plc::project::CyclicLabel& cyclic : m_project.cyclic)
            checkCyclic(cyclic);
    }

private:
    /// The first and the last element of the variable or member.
    void checkVariable(const QString& label, const Variable& variable)
    {
        checkElement(label + subscripts(variable, &plc::project::ArrayDimension::lower), variable);
        if (!variable.dimensions.isEmpty())
            checkElement(label + subscripts(variable, &plc::project::ArrayDimension::upper),
                         variable);
    }

    void checkElement(const QString& label, const Variable& variable)
    {
        if (variable.structure) {
            for (const Variable& member : variable.structure->members)
                checkVariable(label + QLatin1Char('.') + member.name, member);
            return;
        }
        if (++m_labels > kMostLabels)
            return;
        const plc::Expected<plc::project::LabelTarget> target = find(label);
        require(target.hasValue(), "what is declared is found");
        require(PLCAddressChangeIntef(0, label) == int(target->address),
                "the driver finds a value where the project puts it");
    }

    void checkCyclic(const plc::project::CyclicLabel& cyclic)
    {
        const plc::Expected<plc::project::LabelTarget> target = find(cyclic.label);
        require(target.hasValue(), "a cyclic label is found");
        require(cyclic.elements >= 1 && cyclic.elements <= target->elements,
                "a cyclic slice lies within its array");
    }

    plc::Expected<plc::project::LabelTarget> find(const QString& label)
    {
        const plc::Expected<plc::project::LabelTarget> target = m_finder.find(label);
        if (target)
            require(isWithinArea(*target), "what is found lies within its area");
        return target;
    }

    bool isWithinArea(const plc::project::LabelTarget& target) const
    {
        const qint64 address = target.variable->type->code == plc::values::kBitTypeCode
                                   ? plc::project::bitPlace(target.address).byte
                                   : target.address;
        for (const plc::project::MemoryArea& area : m_project.areas) {
            if (area.index == target.area)
                return address >= 0 && address < area.size;
        }
        return m_project.areas.isEmpty();
    }

    static QString subscripts(const Variable& variable, int ArrayDimension::*bound)
    {
        QStringList numbers;
        for (const ArrayDimension& dimension : variable.dimensions)
            numbers.append(QString::number(dimension.*bound));
        return numbers.isEmpty()
                   ? QString()
                   : QLatin1Char('[') + numbers.join(QLatin1Char(',')) + QLatin1Char(']');
    }

    const Project& m_project;
    const plc::project::LabelFinder m_finder;
    int m_labels = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static GuardedMemory memory;
    const QByteArray json =
        memory.bytes(QByteArray::fromRawData(reinterpret_cast<const char*>(data), int(size)));
    const plc::Expected<plc::project::Project> project =
        plc::project::parseProject(json, QStringLiteral("fuzz.json"));
    if (project) {
        FuzzHost host;
        ProjectCheck(*project).run();
    } else {
        const QString& error = project.error().text;
        require(error.startsWith(QLatin1String("fuzz.json: ")), "an error names the file");
        require(!error.contains(QLatin1Char('\n')), "an error is one line");
    }
    return 0;
}
