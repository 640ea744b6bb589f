// That the comparison sees a driver which is not as the model says.

#include "model/side_by_side.h"

#include <gmock/gmock.h>

namespace plc::model {
namespace {

using ::testing::HasSubstr;

/// Takes a step that changes nothing and tells what differs.
std::string differenceOf(SideBySide& sides)
{
    return sides.take(AskAddress{u"MAIN.nosuch"});
}

TEST(SideBySide, NewDriverAndNewModelAreEqual)
{
    SideBySide sides;
    EXPECT_EQ("", differenceOf(sides));
    EXPECT_EQ("", sides.compareWholeImage());
}

TEST(SideBySide, ImageByteTooMuchIsSeen)
{
    SideBySide sides;
    PLC_driver.localImage.insert(5, 0);
    EXPECT_THAT(differenceOf(sides), HasSubstr("bytes in the image: model 0, driver 1"));
}

TEST(SideBySide, OtherImageByteIsSeen)
{
    SideBySide sides;
    Symbol variable;
    variable.name = u"v";
    variable.typeFlags = 2;
    variable.areaInfo = {3};
    Symbol type;
    type.memberCount = 1;
    type.members = {variable};
    Symbol scope;
    scope.name = u"MAIN";
    scope.typeDef = {type};
    EXPECT_EQ("", sides.take(PassSymbols{std::vector<Symbol>{scope}}));
    EXPECT_EQ("", sides.take(ReadValue{u"MAIN.v", 1, true}));
    PLC_driver.localImage.insert(quint64(3) << 32, 7);
    EXPECT_THAT(differenceOf(sides), HasSubstr("image byte 300000000: model 0, driver 7"));
}

TEST(SideBySide, OtherListsAreSeen)
{
    SideBySide sides;
    PLC_driver.readList.append(RW_VAR());
    PLC_driver.writeList.append(RW_VAR());
    PLC_driver.onceReadList.append(RW_VAR());
    PLC_driver.requestQueue.append(Protocol());
    const std::string difference = differenceOf(sides);
    EXPECT_THAT(difference, HasSubstr("cyclic list: model 0, driver 1"));
    EXPECT_THAT(difference, HasSubstr("write list: model 0, driver 1"));
    EXPECT_THAT(difference, HasSubstr("one-shot list: model 0, driver 1"));
    EXPECT_THAT(difference, HasSubstr("requests in the queue: model 0, driver 1"));
}

TEST(SideBySide, OtherEntryOfAListIsSeen)
{
    SideBySide sides;
    EXPECT_EQ("", sides.take(AddRead{Variable()}));
    PLC_driver.readList.first().data.append('x');
    EXPECT_THAT(differenceOf(sides), HasSubstr("entry 0 of the cyclic list"));
}

TEST(SideBySide, OtherCountersAreSeen)
{
    SideBySide sides;
    PLC_driver.writeTries = 1;
    PLC_driver.onceTries = 2;
    PLC_driver.cycleCount = 3;
    PLC_driver.failed = 1;
    PLC_driver.loggedIn = 1;
    PLC_driver.lastKind = 0;
    const std::string difference = differenceOf(sides);
    EXPECT_THAT(difference, HasSubstr("writeTries: model 0, driver 1"));
    EXPECT_THAT(difference, HasSubstr("onceTries: model 0, driver 2"));
    EXPECT_THAT(difference, HasSubstr("cycleCount: model 0, driver 3"));
    EXPECT_THAT(difference, HasSubstr("failed: model 0, driver 1"));
    EXPECT_THAT(difference, HasSubstr("loggedIn: model 0, driver 1"));
    EXPECT_THAT(difference, HasSubstr("lastKind: model 100, driver 0"));
}

TEST(SideBySide, OtherReplyRecordAndStationsAreSeen)
{
    SideBySide sides;
    PLC_driver.reply.address = 9;
    PLC_driver.disabledStations.insert(4, 0);
    const std::string difference = differenceOf(sides);
    EXPECT_THAT(difference, HasSubstr("reply record"));
    EXPECT_THAT(difference, HasSubstr("stations switched off: model 0, driver 1"));
}

TEST(SideBySide, CallbackTooMuchIsSeen)
{
    SideBySide sides;
    EXPECT_EQ("", sides.take(SetCallbacks{true, true}));
    PLC_driver.resultCallback(1, 2, 3, 1);
    EXPECT_THAT(differenceOf(sides), HasSubstr("callbacks called: model 0, driver 1"));
}

} // namespace
} // namespace plc::model
