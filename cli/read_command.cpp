#include "cli/read_command.h"

#include "host/points/value_codec.h"
#include "host/points/value_layout.h"
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
    for (const host::DataPoint& point : points) {
        const auto pieces = host::oneShotPieces(point, project().settings.maxReadBytes);
        m_reads.append({point, host::TransferOutcome(), QByteArray(), pieces.size() > 1});
    }
    return !m_reads.isEmpty();
}

void ReadCommand::begin()
{
    m_open = int(m_reads.size());
    for (int i = 0; i < int(m_reads.size()); ++i) {
        runtime().readOnce(m_reads[i].point, link().now(),
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
    m_reads[index].outcome = outcome;
    m_reads[index].bytes = bytes;
    if (--m_open == 0)
        report();
}

QStringList ReadCommand::csvFields(const ReadValue& read)
{
    const host::DataPoint& point = read.point;
    return {point.text, QString::fromLatin1(point.type->name),
            read.outcome.isDone() ? host::pointText(point, host::decodeValues(point, read.bytes))
                                  : QString(),
            point.unit, host::readOutcomeText(read.outcome)};
}

void ReadCommand::report()
{
    bool allDone = true;
    if (m_options.csv)
        printRow({QStringLiteral("label"), QStringLiteral("type"), QStringLiteral("value"),
                  QStringLiteral("unit"), QStringLiteral("outcome")});
    for (const ReadValue& read : m_reads) {
        if (m_options.csv)
            printRow(csvFields(read));
        else
            printRead(read, m_options.json);
        allDone = allDone && read.outcome.isDone();
    }
    finish(allDone ? kExitDone : kExitRefused);
}

} // namespace plc::cli
