#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "panel/api/api_routes.h"
#include "panel/recipes/recipe_desk.h"
#include "tests/panel/access/access_fixture.h"
#include "tests/support/gate.h"

namespace plc::panel {
namespace {

/// Recipes as the routes use them; a disk has answered when the test takes its answer. There is one
/// recipe, of a PLC that the panel lacks: who gets as far is told that.
class RecipeRoutes : public AccessTest {
protected:
    RecipeRoutes()
    {
        open();
        const Recipe recipe{QStringLiteral("Summer"), QStringLiteral("press"), 1, {}, {}};
        EXPECT_TRUE(succeeds(RecipeFolder(path("recipes")).save(recipe))) << error.toStdString();
    }
    /// Answered once the disk has.
    void ask(const char* what, const Caller& caller)
    {
        ApiContext context;
        context.access = access.get();
        context.plants = &plants;
        context.recipes = &recipes;
        context.time = [] { return qint64(1000); };
        context.post = [](const std::function<void()>& work) { work(); };
        Request request;
        request.body = R"({"id":"r1"})";
        request.caller = caller;
        request.parameters.insert(QStringLiteral("name"), QStringLiteral("Summer"));
        for (const Route& route : recipeRoutes(context)) {
            if (route.pattern.endsWith(what))
                route.handler(request, [this](const Response& response) { answer = response; });
        }
    }
    void takeAnswer()
    {
        while (answer.status == 0) {
            bell.await();
            recipes.deliver();
        }
    }

    Plants plants;
    test::Bell bell;
    RecipeDesk recipes{path("recipes"), [this] { bell.ring(); }};
    Response answer{0, {}, {}, {}, {}};
};

TEST_F(RecipeRoutes, AskNoPlcForWhomTheDiskMadeWaitUntilTheSessionWasOver)
{
    for (const char* what : {"/comparison", "/restore"}) {
        const Caller caller = identify(token(Role::Operator));
        answer.status = 0;
        ask(what, caller);
        takeAnswer();
        EXPECT_EQ(404, answer.status) << what;
        EXPECT_THAT(answer.body.toStdString(), testing::HasSubstr("there is no PLC press"));
        answer.status = 0;
        ask(what, caller);
        ASSERT_TRUE(access->logout(caller));
        takeAnswer();
        EXPECT_EQ(401, answer.status) << what;
    }
}

} // namespace
} // namespace plc::panel
