#include "panel/api/value_reads.h"

#include <memory>

namespace plc::panel {
namespace {

/// What readings that are under way have in common.
struct Gathering {
    QVector<FoundValue> found;
    int open = 1; ///< The one that begins them is one.
    std::function<void(const QVector<FoundValue>&)> finished;

    void settleOne()
    {
        if (--open == 0)
            finished(found);
    }
};

/// `askedAt`: before the request went out, so that no value looks younger than it is.
LiveValue valueOf(const host::TransferOutcome& outcome, const QByteArray& bytes, qint64 askedAt)
{
    LiveValue value;
    if (outcome.isDone()) {
        value.bytes = bytes;
        value.quality = Quality::Good;
        value.time = askedAt;
    } else if (outcome.kind == host::TransferOutcome::Refused) {
        value.quality = Quality::Bad;
    }
    return value;
}

} // namespace

void readValues(Plant* plant, const QStringList& labels, const std::function<qint64()>& time,
                std::function<void(const QVector<FoundValue>&)> finished)
{
    auto gathering = std::make_shared<Gathering>();
    gathering->finished = std::move(finished);
    gathering->found.resize(int(labels.size()));
    for (int i = 0; i < int(labels.size()); ++i) {
        FoundValue& found = gathering->found[i];
        found.label = labels[i];
        const Expected<host::DataPoint> point = plant->find(labels[i]);
        if (!point) {
            found.error = point.error().text;
            continue;
        }
        found.point = *point;
        const int slot = plant->findSlot(point->text);
        const LiveValue known = slot < 0 ? LiveValue() : plant->value(slot);
        if (known.wasRead() || known.quality == Quality::Bad) {
            found.value = known;
            continue;
        }
        ++gathering->open;
        plant->readOnce(*point, [gathering, i, askedAt = time()](
                                    const host::TransferOutcome& outcome, const QByteArray& bytes) {
            gathering->found[i].value = valueOf(outcome, bytes, askedAt);
            gathering->settleOne();
        });
    }
    gathering->settleOne();
}

} // namespace plc::panel
