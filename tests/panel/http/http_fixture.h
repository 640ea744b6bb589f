#ifndef PLC_TESTS_PANEL_HTTP_HTTP_FIXTURE_H
#define PLC_TESTS_PANEL_HTTP_HTTP_FIXTURE_H

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "panel/http/server.h"
#include "tests/support/http_client.h"

namespace plc::panel {

/// Lets everybody do everything.
class OpenGuard : public Guard {
public:
    Decision decide(const RequestHead& head) override
    {
        Decision decision;
        decision.caller = {QStringLiteral("local"), Role::Engineer, head.address, {}};
        return decision;
    }
};

using Handler = std::function<void(const Request&, Responder)>;

inline Route route(Method method, const char* pattern, Handler handler)
{
    return {method,       pattern,
            Role::Viewer, method == Method::Get ? Route::Reads : Route::Changes,
            "a test",     std::move(handler)};
}

inline Route greeting()
{
    return route(Method::Get, "/greeting", [](const Request&, const Responder& answer) {
        answer(Response::text(QStringLiteral("hello")));
    });
}

/// Answers with the number of bytes of the body.
inline Route count()
{
    return route(Method::Post, "/count", [](const Request& request, const Responder& answer) {
        answer(Response::text(QString::number(request.body.size())));
    });
}

class WebServer : public ::testing::Test {
protected:
    void start(const QVector<Route>& routes)
    {
        settings.port = 0;
        Expected<std::unique_ptr<Server>> started = Server::start(settings, routes, &guard);
        ASSERT_TRUE(started) << started.error().text.toStdString();
        server = std::move(*started);
    }
    std::string errorOf(const QVector<Route>& routes)
    {
        const Expected<std::unique_ptr<Server>> started = Server::start(settings, routes, &guard);
        return started ? std::string() : started.error().text.toStdString();
    }
    void expectServing(const char* from = "127.0.0.1")
    {
        test::HttpConnection connection(server->port(), from);
        EXPECT_EQ(200, connection.get("/greeting").status);
    }

    /// Whether the numbers of connections and streams become so.
    template <typename Condition>
    bool awaitStatistics(const Condition& isSo)
    {
        constexpr int kPause = 10; // ms
        for (int i = 0; i < test::HttpConnection::kPatience / kPause; ++i) {
            if (isSo(server->statistics()))
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(kPause));
        }
        return false;
    }

    ServerSettings settings;
    OpenGuard guard;
    std::unique_ptr<Server> server;
};

} // namespace plc::panel

#endif
