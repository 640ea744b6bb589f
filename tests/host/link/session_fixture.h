#ifndef PLC_TESTS_HOST_LINK_SESSION_FIXTURE_H
#define PLC_TESTS_HOST_LINK_SESSION_FIXTURE_H

#include "host/link/session.h"

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {

/// The request that reads Main.speed alone.
constexpr char kReadSpeed[] =
    "BB BB 00 00 00 14 2E 00 00 00 00 01 00 01 00 00 00 04 00 00 00 02 00 01 00 00";

/// Main.speed is read cyclically, without a cycle time.
class SessionTest : public HostTest {
protected:
    SessionTest() { cycle({"Main.speed"}); }

    void connectAndLogIn()
    {
        connect();
        logIn();
        ASSERT_EQ(hex(kReadSpeed), request());
    }
    LinkEvent lastLinkEvent() const
    {
        return linkEvents.empty() ? LinkEvent{LinkState::Up, QString(), 0} : linkEvents.back();
    }
};

} // namespace test
} // namespace plc::host

#endif
