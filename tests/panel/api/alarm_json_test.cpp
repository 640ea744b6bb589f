#include "panel/api/alarm_json.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

AlarmSettings example()
{
    AlarmSettings alarm;
    alarm.plc = QStringLiteral("press");
    alarm.label = QStringLiteral("P.count");
    alarm.text = QStringLiteral("Too \"many\"");
    alarm.condition = AlarmSettings::Above;
    alarm.limit = 7;
    return alarm;
}

const values::IecType& typeOf(const char* name)
{
    return *values::findIecType(std::string_view(name));
}

AlarmOccurrence occurrence()
{
    AlarmOccurrence made;
    made.alarm = QStringLiteral("a1");
    made.plc = QStringLiteral("press");
    made.label = QStringLiteral("P.count");
    made.condition = QStringLiteral("above 7");
    made.begin = 1000;
    made.value = values::Value(qint64(8));
    return made;
}

TEST(AlarmJson, AnAlarmWithoutAnOccurrenceHasNulls)
{
    AlarmStatus status;
    status.state = AlarmState::Normal;
    EXPECT_EQ(R"({"id":"a1","plc":"press","label":"P.count","text":"Too \"many\"",)"
              R"("condition":"above 7","state":"normal","unknownSince":null,"since":null,)"
              R"("ended":null,"value":null,"acknowledgedBy":null,"acknowledgedAt":null,)"
              R"("beginUnseen":false,"endUnseen":false,"gap":false,"restart":false,)"
              R"("unacknowledgedBefore":0})",
              alarmText(example(), QStringLiteral("a1"), status, typeOf("INT")).toStdString());
}

TEST(AlarmJson, AnOccurrenceTellsAllThatIsKnownOfIt)
{
    AlarmStatus status;
    status.unknownSince = 3000;
    status.unacknowledgedBefore = 2;
    status.occurrence = occurrence();
    status.occurrence->end = 2000;
    status.occurrence->acknowledgedBy = QStringLiteral("anna");
    status.occurrence->acknowledgedAt = 1500;
    status.occurrence->isEndUnseen = true;
    status.occurrence->hasRestart = true;
    EXPECT_EQ(R"({"id":"a1","plc":"press","label":"P.count","text":"Too \"many\"",)"
              R"("condition":"above 7","state":"unknown","unknownSince":3000,"since":1000,)"
              R"("ended":2000,"value":"8","acknowledgedBy":"anna","acknowledgedAt":1500,)"
              R"("beginUnseen":false,"endUnseen":true,"gap":false,"restart":true,)"
              R"("unacknowledgedBefore":2})",
              alarmText(example(), QStringLiteral("a1"), status, typeOf("LINT")).toStdString())
        << "a LINT is a text of digits";
}

TEST(AlarmJson, APastOneOfAnUnknownTypeLosesNoDigits)
{
    AlarmOccurrence past = occurrence();
    past.value = values::Value(qint64(9007199254740993));
    past.isWatchLost = true;
    EXPECT_EQ(R"({"id":"a1","plc":"press","label":"P.count","text":"","condition":"above 7",)"
              R"("state":"ended","since":1000,"ended":null,"value":"9007199254740993",)"
              R"("acknowledgedBy":null,"acknowledgedAt":null,"beginUnseen":false,)"
              R"("endUnseen":false,"gap":false,"restart":false,"watchLost":true})",
              pastAlarmText(past, AlarmState::Ended, nullptr).toStdString());
}

} // namespace
} // namespace plc::panel
