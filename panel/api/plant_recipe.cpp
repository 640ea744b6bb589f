#include "panel/api/plant_recipe.h"

#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"

namespace plc::panel {
namespace {

RecipePlc::Outcome recipeOutcome(WriteOutcome::Kind kind)
{
    switch (kind) {
        case WriteOutcome::Done:
            return RecipePlc::Outcome::Done;
        case WriteOutcome::Refused:
            return RecipePlc::Outcome::Refused;
        case WriteOutcome::Unknown:
            return RecipePlc::Outcome::Unknown;
        case WriteOutcome::NotSent:
            break;
    }
    return RecipePlc::Outcome::NotSent;
}

} // namespace

void PlantRecipe::read(const QString& label, ReadSettled settled)
{
    const Expected<host::DataPoint> point = m_plant->find(label);
    if (!point) {
        Reading failed;
        failed.reason = point.error().text;
        settled(failed);
        return;
    }
    m_plant->readOnce(*point, [target = *point, settled](const host::TransferOutcome& outcome,
                                                         const QByteArray& bytes) {
        Reading reading;
        if (outcome.isDone()) {
            reading.content = RecipeContent{{target.type, target.stringLength, target.elements},
                                            host::decodeValues(target, bytes)};
        } else {
            reading.reason = host::readOutcomeText(outcome);
            reading.isLinkLost = outcome.kind != host::TransferOutcome::Refused;
        }
        settled(reading);
    });
}

void PlantRecipe::write(const QString& label, const QVector<values::Value>& values,
                        WriteSettled settled)
{
    WriteRequest request = m_pattern;
    request.id = QStringLiteral("%1/%2").arg(m_pattern.id).arg(++m_written);
    request.plc = m_plant->name();
    request.label = label;
    request.values = values;
    request.areExact = true;
    const WriteDesk::Taken taken =
        m_writes->take(request, [this, settled](const WriteRecord& record) {
            Writing writing;
            writing.outcome = recipeOutcome(record.outcome.kind);
            writing.reason = record.outcome.reason;
            writing.isLinkLost = record.outcome.kind == WriteOutcome::Unknown ||
                                 (record.outcome.kind == WriteOutcome::NotSent &&
                                  m_plant->link().state != PlcLink::Up);
            settled(writing);
        });
    if (taken.refusal == WriteDesk::Refusal::None)
        return;
    Writing refused;
    refused.reason = taken.reason;
    settled(refused);
}

} // namespace plc::panel
