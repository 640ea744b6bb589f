#ifndef PLC_TESTS_SUPPORT_ROUTE_CHECK_H
#define PLC_TESTS_SUPPORT_ROUTE_CHECK_H

#include <gtest/gtest.h>

#include <QtCore/QVector>

#include <algorithm>
#include <atomic>
#include <memory>

#include "panel/access/access_guard.h"
#include "panel/http/server.h"
#include "tests/support/http_client.h"

namespace plc::test {

/// Asks a server for each of its routes as those do who may not, and sees that each is refused with
/// the right status and that nothing is carried out. The table is that of the server under test:
/// what it does is replaced by counting.
class RouteCheck {
public:
    /// `access` has users, so that nobody may do anything without a login.
    RouteCheck(const QVector<panel::Route>& routes, panel::Access* access)
        : m_access(access), m_routes(routes), m_calls(std::make_shared<std::atomic<int>>(0))
    {
        for (panel::Route& route : m_routes) {
            route.handler = [calls = m_calls](const panel::Request&,
                                              const panel::Responder& answer) {
                ++*calls;
                answer(panel::Response::text(QStringLiteral("carried out")));
            };
        }
    }

    /// `token(role)` is one of a user who has it.
    template <typename Token>
    void run(const Token& token)
    {
        const QByteArray highest = token(panel::Role::Engineer);
        for (const panel::Route& route : m_routes) {
            SCOPED_TRACE((methodName(route.method) + (' ' + route.pattern)).toStdString());
            const QByteArray engineer = bearer(highest);
            expect(200, route, "Host: localhost\r\n" + engineer);
            expect(200, route, "Host: panel.example:8443\r\n" + engineer);
            expect(421, route, "Host: evil.example\r\n" + engineer);
            expect(421, route, "Host: panel.example.evil.example\r\n" + engineer);
            expect(421, route, "Host: other.panel.example\r\n" + engineer);
            expect(421, route, "Host: localhost.evil.example\r\n" + engineer);
            expect(400, route, "Host: localhost\r\nHost: localhost\r\n" + engineer);
            checkRoles(route, token);
            checkOrigins(route, engineer);
            checkMethods(route, engineer);
            checkReadOnly(route, engineer);
        }
    }

private:
    static QByteArray bearer(const QByteArray& token)
    {
        return "Authorization: Bearer " + token + "\r\n";
    }
    /// With something in the place of each name.
    static QByteArray pathOf(const panel::Route& route)
    {
        QByteArray path = route.pattern;
        for (int open = int(path.indexOf('{')); open >= 0; open = int(path.indexOf('{')))
            path.replace(open, int(path.indexOf('}', open)) + 1 - open, "x");
        return path;
    }
    template <typename Token>
    void checkRoles(const panel::Route& route, const Token& token)
    {
        const bool isPublic = route.least == panel::Role::None;
        expect(isPublic ? 200 : 401, route, "Host: localhost\r\n");
        expect(isPublic ? 200 : 401, route, "Host: localhost\r\n" + bearer("AAAA"));
        expect(isPublic ? 200 : 401, route, "Host: localhost\r\nCookie: plc_panel=AAAA\r\n");
        for (const panel::Role role : {panel::Role::Viewer, panel::Role::Operator}) {
            const QByteArray own = token(role);
            const int status = role < route.least ? 403 : 200;
            expect(status, route, "Host: localhost\r\n" + bearer(own));
            expect(status, route, "Host: localhost\r\nCookie: plc_panel=" + own + "\r\n");
        }
    }
    void checkOrigins(const panel::Route& route, const QByteArray& engineer)
    {
        const bool isGet = route.method == panel::Method::Get;
        const bool isPage = isGet && route.least == panel::Role::None;
        const QByteArray head = "Host: localhost\r\n" + engineer;
        expect(200, route, head + "Origin: http://localhost\r\nSec-Fetch-Site: same-origin\r\n");
        for (const char* origin : {"http://evil.example", "null", "http://localhost:81",
                                   "http://localhost.evil.example", "ftp://localhost"})
            expect(isGet ? 200 : 403, route, head + "Origin: " + origin + "\r\n");
        // A name that is known is no reason to let its pages write by another one.
        const QByteArray named = "Host: panel.example\r\n" + engineer;
        expect(200, route, named + "Origin: http://panel.example\r\n");
        for (const char* origin : {"http://localhost", "http://evil.panel.example"})
            expect(isGet ? 200 : 403, route, named + "Origin: " + origin + "\r\n");
        for (const char* site : {"cross-site", "same-site", "other"})
            expect(isPage ? 200 : 403, route, head + "Sec-Fetch-Site: " + site + "\r\n");
        if (!isGet)
            expect(415, route, head + "Content-Type: text/plain\r\nContent-Length: 2\r\n", "{}");
    }
    /// Nothing is changed by GET, also not by one that says it is something else.
    void checkMethods(const panel::Route& route, const QByteArray& engineer)
    {
        const QByteArray head = "Host: localhost\r\nX-HTTP-Method-Override: POST\r\n" + engineer;
        for (const panel::Method method :
             {panel::Method::Get, panel::Method::Post, panel::Method::Put, panel::Method::Delete}) {
            const bool isThere =
                std::any_of(m_routes.begin(), m_routes.end(), [&](const panel::Route& other) {
                    return other.method == method && other.pattern == route.pattern;
                });
            if (!isThere)
                expectOf(405, methodName(method), pathOf(route), head);
        }
        for (const char* method : {"PATCH", "OPTIONS", "TRACE", "get"})
            expectOf(405, method, pathOf(route), head);
    }
    void checkReadOnly(const panel::Route& route, const QByteArray& engineer)
    {
        m_isReadOnly = true;
        m_server.reset();
        expect(route.kind == panel::Route::Changes ? 403 : 200, route,
               "Host: localhost\r\n" + engineer);
        m_isReadOnly = false;
        m_server.reset();
    }
    void expect(int status, const panel::Route& route, const QByteArray& headers,
                const QByteArray& body = {})
    {
        expectOf(status, methodName(route.method), pathOf(route), headers, body);
    }
    void expectOf(int status, const QByteArray& method, const QByteArray& path,
                  const QByteArray& headers, const QByteArray& body = {})
    {
        const int before = *m_calls;
        HttpConnection connection(port());
        const HttpAnswer answer =
            connection.ask(method + ' ' + path + " HTTP/1.1\r\n" + headers + "\r\n" + body);
        EXPECT_EQ(status, answer.status)
            << method.toStdString() << ' ' << path.toStdString() << '\n'
            << headers.toStdString();
        EXPECT_EQ(status == 200 ? 1 : 0, *m_calls - before)
            << method.toStdString() << ' ' << path.toStdString() << '\n'
            << headers.toStdString();
    }
    int port()
    {
        if (!m_server) {
            m_guard = std::make_unique<panel::AccessGuard>(
                m_access, QStringList{QStringLiteral("panel.example")}, "run", m_isReadOnly);
            panel::ServerSettings settings;
            settings.port = 0;
            Expected<std::unique_ptr<panel::Server>> started =
                panel::Server::start(settings, m_routes, m_guard.get());
            EXPECT_TRUE(started) << started.error().text.toStdString();
            m_server = std::move(*started);
        }
        return m_server->port();
    }

    panel::Access* const m_access;
    QVector<panel::Route> m_routes;
    const std::shared_ptr<std::atomic<int>> m_calls;
    bool m_isReadOnly = false;
    std::unique_ptr<panel::AccessGuard> m_guard;
    std::unique_ptr<panel::Server> m_server;
};

} // namespace plc::test

#endif
