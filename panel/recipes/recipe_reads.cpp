#include "panel/recipes/recipe_reads.h"

#include <utility>

namespace plc::panel {
namespace {

struct Reads {
    std::shared_ptr<RecipePlc> plc;
    std::function<void(const QVector<RecipePlc::Reading>&)> finished;
    QVector<RecipePlc::Reading> readings;
    int open = 0;

    void settle()
    {
        if (--open == 0)
            finished(readings);
    }
};

} // namespace

void readAll(const QStringList& labels, std::shared_ptr<RecipePlc> plc,
             std::function<void(const QVector<RecipePlc::Reading>&)> finished)
{
    const auto reads = std::make_shared<Reads>();
    reads->plc = std::move(plc);
    reads->finished = std::move(finished);
    reads->readings.resize(int(labels.size()));
    // One more, so that nothing is finished before all were asked for.
    reads->open = int(labels.size()) + 1;
    for (int i = 0; i < int(labels.size()); ++i) {
        reads->plc->read(labels[i], [reads, i](const RecipePlc::Reading& reading) {
            reads->readings[i] = reading;
            reads->settle();
        });
    }
    reads->settle();
}

} // namespace plc::panel
