#ifndef PLC_TESTS_PANEL_E2E_PANEL_SITE_H
#define PLC_TESTS_PANEL_E2E_PANEL_SITE_H

#include <gtest/gtest.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

#include "support/plc_process.h"
#include "tests/support/http_client.h"

namespace plc::test {

constexpr char kTank[] = R"json({
  "name": "A tank",
  "plc": {"address": "127.0.0.1", "port": 1200},
  "settings": {"staleAfter": 20000, "replyTimeout": 20000, "reconnectDelay": 100,
               "reconnectDelayLimit": 200},
  "areas": [{"index": 1, "size": 64}, {"index": 2, "size": 64}],
  "scopes": [{"name": "T", "variables": [
    {"name": "level", "type": "UINT", "area": 1, "offset": 10, "unit": "mm", "description": "Of the tank"},
    {"name": "total", "type": "ULINT", "area": 1, "offset": 16},
    {"name": "temperature", "type": "REAL", "area": 1, "offset": 24},
    {"name": "set", "type": "INT", "area": 1, "offset": 28},
    {"name": "aside", "type": "INT", "area": 2, "offset": 0},
    {"name": "name", "type": "STRING", "length": 7, "area": 1, "offset": 32}]}],
  "cyclic": ["T.level", "T.total", "T.temperature", "T.set"]})json";

/// A PLC "tank", and a panel that shows it.
class PanelSite : public ::testing::Test {
protected:
    PanelSite()
    {
        writeFile(path("tank.json"), kTank);
        writePanelProject(kTank);
        plc = std::make_unique<PlcProcess>(path("tank.json"));
        settings = {{QStringLiteral("listen"), QStringLiteral("127.0.0.1:0")},
                    {QStringLiteral("audit"), QStringLiteral("audit")},
                    {QStringLiteral("record"),
                     QJsonObject{{QStringLiteral("file"), QStringLiteral("record")}}}};
        device = {{QStringLiteral("name"), QStringLiteral("tank")},
                  {QStringLiteral("project"), QStringLiteral("panel_tank.json")},
                  {QStringLiteral("port"), plc->port()},
                  {QStringLiteral("cycle"), 50}};
    }

    QString path(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }

    /// For tests that wait for it. A machine that stands still for so long is taken for a loss,
    /// too.
    void noticeLossesSoon()
    {
        writePanelProject(QByteArray(kTank)
                              .replace("\"staleAfter\": 20000", "\"staleAfter\": 1500")
                              .replace("\"replyTimeout\": 20000", "\"replyTimeout\": 1000"));
    }

    /// Until the values are there. What does not start ends the test program: each test waits for
    /// what does not come.
    void start()
    {
        settings[QStringLiteral("plcs")] = QJsonArray{device};
        writeFile(path("panel.json"), QJsonDocument(settings).toJson());
        m_panel = std::make_unique<LineProcess>(
            QStringLiteral(PLC_PANEL),
            QStringList{QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY),
                        QStringLiteral("--config"), path("panel.json")});
        const QString line = m_panel->nextLine();
        port = line.section(QLatin1Char(':'), -1).remove(QLatin1Char('/')).toInt();
        if (port <= 0)
            qFatal("the panel does not start: %s", qPrintable(m_panel->errors()));
        ASSERT_TRUE(comesTrue([this] { return quality("T.level") == "good"; }));
    }
    void stop() { m_panel.reset(); }
    LineProcess& panel() { return *m_panel; }

    QJsonObject get(const QByteArray& target)
    {
        return QJsonDocument::fromJson(HttpConnection(port).get("/api/v1/" + target).body).object();
    }
    /// `instance`: the run of the panel that is meant; empty: any.
    HttpAnswer postTo(const QByteArray& instance, const QByteArray& target, const QByteArray& body)
    {
        return HttpConnection(port).ask(
            "POST /api/v1/" + target + " HTTP/1.1\r\nHost: localhost\r\n" +
            (instance.isEmpty() ? QByteArray() : "Panel-Instance: " + instance + "\r\n") +
            "Content-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
            "\r\n\r\n" + body);
    }
    HttpAnswer post(const QByteArray& target, const QByteArray& body)
    {
        return postTo(QByteArray(), target, body);
    }
    QJsonObject value(const char* label)
    {
        return get(QByteArray("values?plc=tank&label=") + label)
            .value(QLatin1String("values"))
            .toArray()
            .at(0)
            .toObject();
    }
    std::string quality(const char* label)
    {
        return value(label).value(QLatin1String("quality")).toString().toStdString();
    }
    /// As JSON.
    std::string text(const QJsonValue& json)
    {
        const QByteArray list = QJsonDocument(QJsonArray{json}).toJson(QJsonDocument::Compact);
        return list.mid(1, list.size() - 2).toStdString();
    }
    std::string shown(const char* label)
    {
        return text(value(label).value(QLatin1String("value")));
    }
    bool comesToShow(const char* label, const std::string& expected)
    {
        return comesTrue([&] { return shown(label) == expected; });
    }

    /// The id of a subscription to these labels, one behind the other with commas.
    QByteArray subscribe(const QByteArray& labels)
    {
        QByteArray body = "{\"values\":[";
        for (const QByteArray& label : labels.split(','))
            body += (body.endsWith('[') ? "" : ",") + QByteArray("{\"plc\":\"tank\",\"label\":\"") +
                    label + "\"}";
        const HttpAnswer answer = post("subscriptions", body + "]}");
        EXPECT_EQ(201, answer.status) << answer.body.toStdString();
        return QJsonDocument::fromJson(answer.body)
            .object()
            .value(QLatin1String("id"))
            .toString()
            .toUtf8();
    }
    std::unique_ptr<HttpConnection> stream(const QByteArray& id)
    {
        auto connection = std::make_unique<HttpConnection>(port);
        connection->send("GET /api/v1/events?subscription=" + id +
                         " HTTP/1.1\r\nHost: localhost\r\n\r\n");
        EXPECT_TRUE(connection->waitFor("event: hello"));
        return connection;
    }

    std::unique_ptr<PlcProcess> plc;
    QJsonObject settings;
    QJsonObject device;
    int port = 0;

private:
    /// What the panel takes for the program has a value that the PLC lacks.
    void writePanelProject(QByteArray project)
    {
        writeFile(path("panel_tank.json"),
                  project.replace("\"size\": 64}]", "\"size\": 64}, {\"index\": 3, \"size\": 8}]")
                      .replace("\"variables\": [",
                               "\"variables\": [{\"name\": \"missing\", \"type\": \"INT\", "
                               "\"area\": 3, \"offset\": 0},"));
    }

    QTemporaryDir m_folder;
    std::unique_ptr<LineProcess> m_panel;
};

} // namespace plc::test

#endif
