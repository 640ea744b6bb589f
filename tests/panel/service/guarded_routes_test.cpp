#include <gtest/gtest.h>

#include "panel/api/api_routes.h"
#include "panel/service/page_routes.h"
#include "tests/panel/access/access_fixture.h"
#include "tests/support/route_check.h"

namespace plc::panel {
namespace {

/// All that the program serves.
QVector<Route> served()
{
    return apiRoutes({}) + pageRoutes();
}

using ServedRoutes = AccessTest;

TEST_F(ServedRoutes, AreRefusedToWhoeverMayNot)
{
    settings.loginsOfAddress = {100000, 1};
    settings.loginsOfUser = {100000, 1};
    settings.changesOfAddress = {100000, 1};
    open();
    test::RouteCheck check(served(), access.get());
    check.run([this](Role role) { return token(role); });
}

TEST_F(ServedRoutes, ShowNothingOfAPlcToWhoeverComes)
{
    for (const Route& route : served()) {
        const bool isOpen = route.least == Role::None;
        const bool isPage = route.pattern == "/" || route.pattern.startsWith("/assets/");
        EXPECT_EQ(isPage || (route.pattern == "/api/v1/session" && route.method != Method::Delete),
                  isOpen)
            << methodName(route.method) << ' ' << route.pattern.toStdString();
    }
}

} // namespace
} // namespace plc::panel
