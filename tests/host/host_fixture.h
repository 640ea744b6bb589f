#ifndef PLC_TESTS_HOST_HOST_FIXTURE_H
#define PLC_TESTS_HOST_HOST_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <vector>

#include "host/points/value_codec.h"
#include "host/runtime/runtime.h"
#include "project/project.h"
#include "setup/runtime_settings.h"
#include "tests/project/test_project.h"
#include "tests/support/built_driver.h"
#include "tests/support/qt_printers.h"

namespace plc::host {
namespace test {

using plc::test::builtDriver;
using plc::test::takenDriver;
using project::test::testProject;

/// Bytes from hexadecimal pairs; blanks do not count.
inline QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

/// A frame around this payload.
inline QByteArray frameOf(const QByteArray& payload)
{
    QByteArray frame = hex("BB BB 00 00");
    frame += char(uchar(payload.size() >> 8));
    frame += char(uchar(payload.size() & 0xFF));
    return frame + payload;
}

inline QByteArray identificationReply()
{
    return frameOf(QByteArray(200, '\0'));
}

inline QByteArray fileReply()
{
    return frameOf(QByteArray(30, '\0'));
}

/// A reply to a login frame that is too short to be accepted.
inline QByteArray loginRefusal()
{
    return frameOf(QByteArray(2, '\0'));
}

/// A good reply to a read whose entries have these data.
inline QByteArray readReply(std::initializer_list<QByteArray> blocks)
{
    QByteArray payload(6, '\0');
    for (const QByteArray& block : blocks)
        payload += hex("EE") + block;
    return frameOf(payload);
}

inline QByteArray writeReply()
{
    return hex("BB BB 00 00 00 02 00 00");
}

/// A whole reply whose status is 5.
inline QByteArray refusal()
{
    return hex("BB BB 00 00 00 02 00 05");
}

/// A runtime with the real driver, a clock that the test moves, and a PLC that the test plays.
class HostTest : public ::testing::Test, public RuntimeListener {
protected:
    explicit HostTest(int cycleTime = 0)
        : project(testProject()),
          runtime(std::make_unique<Runtime>(takenDriver(), settings(cycleTime), project, this))
    {
    }

    ~HostTest() override { runtime.reset(); } // It settles what is open.

    RuntimeSettings settings(int cycleTime = 0) const
    {
        return setup::runtimeSettings(project.settings, cycleTime);
    }

    struct LinkEvent {
        LinkState state;
        QString reason;
        int retryDelay;
    };
    struct Settled {
        QString label;
        TransferOutcome outcome;
        QByteArray bytes;
    };

    Session& session() { return runtime->session(); }

    DataPoint point(const char* label)
    {
        const Expected<DataPoint> found = runtime->points().find(QString::fromUtf8(label));
        EXPECT_TRUE(found) << found.error().text.toStdString();
        return found.valueOr(DataPoint());
    }

    void cycle(std::initializer_list<const char*> labels)
    {
        QVector<DataPoint> points;
        for (const char* label : labels)
            points.append(point(label));
        runtime->readCyclically(points, now);
    }

    void write(const char* label, const char* value)
    {
        const DataPoint target = point(label);
        const Expected<QVector<values::Value>> values =
            parsePoint(target, QString::fromUtf8(value));
        ASSERT_TRUE(values) << values.error().text.toStdString();
        runtime->write(target, *values, now, [this, target](const TransferOutcome& outcome) {
            writes.push_back({target.text, outcome, QByteArray()});
        });
    }

    void readOnce(const char* label)
    {
        const DataPoint target = point(label);
        runtime->readOnce(target, now,
                          [this, target](const TransferOutcome& outcome, const QByteArray& bytes) {
                              reads.push_back({target.text, outcome, bytes});
                          });
    }

    /// What the session did since the last call: 'C' connect, 'S' send, 'X' close. Keeps the bytes
    /// of the last request in `sent`.
    std::string actions()
    {
        std::string text;
        for (const SessionAction& action : session().takeActions()) {
            switch (action.kind) {
                case SessionAction::Connect:
                    text += 'C';
                    break;
                case SessionAction::Send:
                    text += 'S';
                    sent = action.bytes;
                    break;
                case SessionAction::Close:
                    text += 'X';
                    break;
            }
        }
        return text;
    }

    /// The request that went out, which must be all that happened.
    QByteArray request()
    {
        EXPECT_EQ("S", actions());
        return sent;
    }

    void answer(const QByteArray& reply) { session().received(reply, now); }
    /// Gives zeros to the read that has just gone out.
    void answerWithZeros()
    {
        const RequestContent content = parseRequest(request());
        ASSERT_EQ(Service::Read, content.service);
        QByteArray payload(6, '\0');
        for (const FrameEntry& entry : content.entries)
            payload += QByteArray(1 + int(entry.length), '\0');
        answer(frameOf(payload));
    }
    /// Acknowledges a write as an earlier one was: a read then shows that it was no second copy.
    void acknowledgeAgain()
    {
        answer(writeReply());
        answerWithZeros();
    }
    void passTime(qint64 milliseconds)
    {
        now += milliseconds;
        session().tick(now);
    }

    void connect()
    {
        session().start(now);
        ASSERT_EQ("C", actions());
        session().connected(now);
    }
    /// Answers the login, whose first frame has just gone out.
    void logIn()
    {
        ASSERT_EQ(0x01, int(uchar(request()[6])));
        answer(identificationReply());
        ASSERT_EQ(0x31, int(uchar(request()[6])));
        answer(fileReply());
    }
    /// From the end of a waiting time to the first request behind the login.
    void reconnect(qint64 delay)
    {
        passTime(delay);
        ASSERT_EQ("C", actions());
        session().connected(now);
        logIn();
    }

    QString shown(const char* label)
    {
        const ValueTable& values = runtime->values();
        for (int row = 0; row < values.size(); ++row) {
            if (values.point(row).text == QString::fromUtf8(label)) {
                return values.wasRead(row)
                           ? pointText(values.point(row),
                                       decodeValues(values.point(row), values.bytes(row)))
                           : QStringLiteral("unread");
            }
        }
        return QStringLiteral("not in the table");
    }

    void linkChanged(LinkState state, const QString& reason, int retryDelay) override
    {
        linkEvents.push_back({state, reason, retryDelay});
    }
    void valueRefused(int row) override
    {
        refusedValues.push_back(runtime->values().point(row).text.toStdString());
    }
    void valueGivenAgain(int row) override
    {
        valuesGivenAgain.push_back(runtime->values().point(row).text.toStdString());
    }
    void requestSent(const SentRequest&) override {}
    void requestAnswered(const SentRequest&, const Answer& judgement, const QByteArray&) override
    {
        answers.push_back(judgement);
    }

    project::Project project;
    qint64 now = 1000;
    std::unique_ptr<Runtime> runtime;
    QByteArray sent;
    std::vector<LinkEvent> linkEvents;
    std::vector<Answer> answers;
    std::vector<std::string> refusedValues;
    std::vector<std::string> valuesGivenAgain;
    std::vector<Settled> writes;
    std::vector<Settled> reads;
};

} // namespace test
} // namespace plc::host

#endif
