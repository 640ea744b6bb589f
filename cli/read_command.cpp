#include "cli/read_command.h"

#include "cli/value_lines.h"
#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"

namespace plc::cli {
namespace {

int read(const ReadOptions& options)
{
    return withDriver(options, [&](const CommandContext& context, host::DriverClaim driver) {
        return ReadCommand(options, context, std::move(driver)).execute();
    });
}

} // namespace

const Command kReadCommand = {"read",
                              {"LABEL...", 1, kAnyNumber, "at least one label", kCompleteLabel},
                              "read these labels once",
                              {kLabelNote, kPatternNote, kDurationNote},
                              makeOptions<ReadOptions>,
                              execute<ReadOptions, read>};

options::Table ReadOptions::table()
{
    return options::Table{labelFileOption(&labelFile), csvOption(&csv)} + LinkOptions::table();
}

Expected<void> ReadOptions::check()
{
    return csv && json ? csvAndJson() : LinkOptions::check();
}

bool ReadCommand::prepare()
{
    const QVector<host::DataPoint> points = findPoints();
    for (const host::DataPoint& point : points)
        m_items.append({point, host::TransferOutcome(), QByteArray()});
    return !m_items.isEmpty();
}

void ReadCommand::begin()
{
    m_open = int(m_items.size());
    for (int i = 0; i < int(m_items.size()); ++i) {
        runtime().readOnce(m_items[i].point, link().now(),
                           [this, i](const host::TransferOutcome& outcome,
                                     const QByteArray& bytes) { settled(i, outcome, bytes); });
    }
    LinkCommand::begin();
}

void ReadCommand::interrupted()
{
    complain(QStringLiteral("interrupted; nothing was read"));
    finish(kExitRefused);
}

void ReadCommand::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    complainOfLoss(state, reason, retryDelay);
}

void ReadCommand::settled(int index, const host::TransferOutcome& outcome, const QByteArray& bytes)
{
    if (isFinished())
        return;
    Item& item = m_items[index];
    item.outcome = outcome;
    item.bytes = bytes;
    if (--m_open == 0)
        report();
}

QStringList ReadCommand::csvFields(const Item& item)
{
    const host::DataPoint& point = item.point;
    return {point.text, QString::fromLatin1(point.type->name),
            item.outcome.isDone() ? host::pointText(point, host::decodeValues(point, item.bytes))
                                  : QString(),
            point.unit, host::readOutcomeText(item.outcome)};
}

void ReadCommand::report()
{
    bool allDone = true;
    if (m_options.csv)
        printRow({QStringLiteral("label"), QStringLiteral("type"), QStringLiteral("value"),
                  QStringLiteral("unit"), QStringLiteral("outcome")});
    for (const Item& item : m_items) {
        if (m_options.csv)
            printRow(csvFields(item));
        else
            printRead(item.point, item.bytes, item.outcome, m_options.json);
        allDone = allDone && item.outcome.isDone();
    }
    finish(allDone ? kExitDone : kExitRefused);
}

} // namespace plc::cli
