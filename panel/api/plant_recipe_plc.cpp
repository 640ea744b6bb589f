#include "panel/api/plant_recipe_plc.h"

#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"

namespace plc::panel {
namespace {

RecipePlc::Reading readingOf(const host::DataPoint& point, const host::TransferOutcome& outcome,
                             const QByteArray& bytes)
{
    RecipePlc::Reading reading;
    if (outcome.isDone()) {
        reading.content = RecipeContent{{point.type, point.stringLength, point.elements},
                                        host::decodeValues(point, bytes)};
        return reading;
    }
    reading.reason = host::readOutcomeText(outcome);
    reading.isLinkLost = outcome.kind != host::TransferOutcome::Refused;
    return reading;
}

RecipePlc::Outcome outcomeOf(WriteOutcome::Kind kind)
{
    switch (kind) {
        case WriteOutcome::Done:
            return RecipePlc::Outcome::Done;
        case WriteOutcome::Refused:
            return RecipePlc::Outcome::Refused;
        case WriteOutcome::Unknown:
            return RecipePlc::Outcome::Unknown;
        default:
            return RecipePlc::Outcome::NotSent;
    }
}

} // namespace

void PlantRecipePlc::read(const QString& label, ReadSettled settled)
{
    Plant* const plant = m_context.plants->find(m_plc);
    if (!plant)
        return settled({{}, QStringLiteral("the PLC is not there any more"), true});
    const Expected<host::DataPoint> point = plant->find(label);
    if (!point)
        return settled({{}, point.error().text, false});
    plant->readOnce(*point, [target = *point, settled](const host::TransferOutcome& outcome,
                                                       const QByteArray& bytes) {
        settled(readingOf(target, outcome, bytes));
    });
}

void PlantRecipePlc::write(const QString& label, const QVector<values::Value>& values,
                           WriteSettled settled)
{
    WriteRequest request;
    request.id = QStringLiteral("%1/%2").arg(m_writes).arg(++m_count);
    request.plc = m_plc;
    request.label = label;
    request.values = values;
    request.isList = values.size() > 1;
    if (request.isList && std::holds_alternative<QString>(values.first()))
        return settled({Outcome::NotSent, QStringLiteral("texts are written one by one"), false});
    request.areExact = true;
    request.user = m_caller.user;
    request.address = m_caller.address;
    const auto finish = [context = m_context, plc = m_plc, settled](const WriteRecord& record) {
        const Plant* const plant = context.plants->find(plc);
        const bool isUp = plant && plant->link().state == PlcLink::Up;
        const bool isUnknown = record.outcome.kind == WriteOutcome::Unknown;
        const bool wasNotSent = record.outcome.kind == WriteOutcome::NotSent;
        settled({outcomeOf(record.outcome.kind), record.outcome.reason,
                 isUnknown || (wasNotSent && !isUp)});
    };
    const WriteDesk::Taken taken = m_context.writes->take(request, finish);
    if (taken.refusal != WriteDesk::Refusal::None)
        settled({Outcome::NotSent, taken.reason, false});
}

} // namespace plc::panel
