#include "gateway/sparkplug/publisher_fixture.h"

namespace plc::gateway {
namespace {

class Commands : public PublisherFixture {
protected:
    Received receive(const char* topic, const wire::Command& command)
    {
        const std::string bytes = command.SerializeAsString();
        return m_publisher.received(
            Message{QString::fromUtf8(topic), QByteArray::fromStdString(bytes), 1, false}, 2000);
    }

    Received toPump(const wire::Command& command)
    {
        return receive("spBv1.0/works/DCMD/hall/pump", command);
    }

    static wire::CommandMetric* add(const char* name, wire::Command* command)
    {
        wire::CommandMetric* metric = command->add_metrics();
        metric->set_name(name);
        return metric;
    }
};

TEST_F(Commands, ByAliasNameTheMetric)
{
    begin();
    wire::Command command;
    command.add_metrics()->set_alias(m_speed);
    command.mutable_metrics(0)->set_int_value(quint32(-5));
    const Received received = toPump(command);
    EXPECT_EQ("", received.complaint);
    ASSERT_EQ(1, received.writes.size());
    const WriteRequest& write = received.writes.first();
    EXPECT_EQ(1, write.device);
    EXPECT_EQ(0, write.metric);
    EXPECT_EQ("P/speed", write.name);
    EXPECT_EQ("", write.id);
    EXPECT_EQ("", write.error);
    EXPECT_EQ(QVector<values::Value>{qint64(-5)}, write.values);
}

TEST_F(Commands, ByNameWithAnId)
{
    begin();
    wire::Command command;
    command.set_uuid("order 66");
    add("P/flow", &command)->set_float_value(2.5f);
    const Received received = toPump(command);
    ASSERT_EQ(1, received.writes.size());
    EXPECT_EQ(1, received.writes.first().metric);
    EXPECT_EQ("order 66", received.writes.first().id);
    EXPECT_EQ(QVector<values::Value>{2.5f}, received.writes.first().values);
}

TEST_F(Commands, EachMetricIsAWriteInItsOrder)
{
    begin();
    wire::Command command;
    add("P/flow", &command)->set_float_value(2.5f);
    add("P/speed", &command)->set_int_value(70000);
    add("P/speed", &command)->set_int_value(7);
    const Received received = toPump(command);
    ASSERT_EQ(3, received.writes.size());
    EXPECT_EQ(1, received.writes[0].metric);
    EXPECT_EQ("", received.writes[0].error);
    EXPECT_EQ(0, received.writes[1].metric);
    EXPECT_EQ("70000 is outside the range of INT, -32768 to 32767", received.writes[1].error);
    EXPECT_TRUE(received.writes[1].values.isEmpty());
    EXPECT_EQ(QVector<values::Value>{qint64(7)}, received.writes[2].values);
}

TEST_F(Commands, ToAnUnknownMetricAreAnswered)
{
    begin();
    wire::Command command;
    add("P/speeds", &command)->set_int_value(1);
    command.add_metrics()->set_alias(4711);
    command.add_metrics()->set_int_value(1);
    add("p/speed", &command)->set_int_value(1);
    add("Gateway/Write Outcome", &command)->set_string_value("done");
    const Received received = toPump(command);
    ASSERT_EQ(5, received.writes.size());
    for (const WriteRequest& write : received.writes) {
        EXPECT_EQ(1, write.device);
        EXPECT_EQ(-1, write.metric);
        EXPECT_TRUE(write.values.isEmpty());
    }
    EXPECT_EQ("P/speeds", received.writes[0].name);
    EXPECT_EQ("the device has no metric \"P/speeds\" that can be written",
              received.writes[0].error);
    EXPECT_EQ("alias 4711", received.writes[1].name);
    EXPECT_EQ("it has neither a name nor an alias", received.writes[2].error);
}

TEST_F(Commands, ToAnotherDevicesAliasAreRefused)
{
    begin();
    wire::Command command;
    command.add_metrics()->set_alias(m_speed);
    command.mutable_metrics(0)->set_int_value(1);
    const Received received = receive("spBv1.0/works/DCMD/hall/oven", command);
    ASSERT_EQ(1, received.writes.size());
    EXPECT_EQ(2, received.writes.first().device);
    EXPECT_EQ(-1, received.writes.first().metric);
    EXPECT_NE("", received.writes.first().error);
}

TEST_F(Commands, WhoseNameAndAliasDifferAreRefused)
{
    begin();
    wire::Command command;
    add("P/speed", &command)->set_alias(m_flow);
    command.mutable_metrics(0)->set_int_value(1);
    add("P/speed", &command)->set_alias(m_speed);
    command.mutable_metrics(1)->set_int_value(1);
    const Received received = toPump(command);
    ASSERT_EQ(2, received.writes.size());
    EXPECT_EQ("name and alias are those of different metrics", received.writes[0].error);
    EXPECT_EQ("", received.writes[1].error);
}

TEST_F(Commands, ToAnUnknownDeviceAreAnswered)
{
    begin();
    wire::Command command;
    add("P/speed", &command)->set_int_value(1);
    const Received received = receive("spBv1.0/works/DCMD/hall/Pump", command);
    ASSERT_EQ(1, received.writes.size());
    EXPECT_EQ(-1, received.writes.first().device);
    EXPECT_EQ("P/speed", received.writes.first().name);
    EXPECT_EQ("there is no device \"Pump\"", received.writes.first().error);
}

TEST_F(Commands, ToADeviceThatWentAreRefused)
{
    begin();
    m_publisher.removeDevice(1);
    wire::Command command;
    command.add_metrics()->set_alias(m_speed);
    const Received received = toPump(command);
    ASSERT_EQ(1, received.writes.size());
    EXPECT_EQ(-1, received.writes.first().device);
}

TEST_F(Commands, ThatAreRetainedAreNotCarriedOut)
{
    begin();
    wire::Command command;
    add("P/speed", &command)->set_int_value(1);
    const QByteArray bytes = QByteArray::fromStdString(command.SerializeAsString());
    const Received device = m_publisher.received(
        Message{QStringLiteral("spBv1.0/works/DCMD/hall/pump"), bytes, 1, true}, 2000);
    EXPECT_TRUE(device.writes.isEmpty());
    EXPECT_EQ(
        "a retained command is not carried out, since it "
        "would be at every connection",
        device.complaint);
    wire::Command rebirth;
    add("Node Control/Rebirth", &rebirth)->set_boolean_value(true);
    const Received node = m_publisher.received(
        Message{QStringLiteral("spBv1.0/works/NCMD/hall"),
                QByteArray::fromStdString(rebirth.SerializeAsString()), 1, true},
        2000);
    EXPECT_FALSE(node.isRebirthWanted);
    EXPECT_NE("", node.complaint);
}

TEST_F(Commands, OnOtherTopicsAreComplainedOf)
{
    begin();
    wire::Command command;
    add("P/speed", &command)->set_int_value(1);
    const char* topics[] = {"", "spBv1.0/works/DCMD/other/pump", "spBv1.0/works/DDATA/hall/pump",
                            "spBv1.0/STATE/scada", "spBv1.0/works/DCMD/hall/pump/x"};
    for (const char* topic : topics) {
        const Received received = receive(topic, command);
        EXPECT_TRUE(received.writes.isEmpty()) << topic;
        EXPECT_NE("", received.complaint) << topic;
    }
}

TEST_F(Commands, WithNamesOfAnyBytesAreAnsweredByTexts)
{
    begin();
    wire::Command command;
    add("\xFF\xFE", &command);
    add("", &command)->mutable_name()->assign(5000, 'x');
    add("\x1b[2J\n", &command);
    const Received received = toPump(command);
    ASSERT_EQ(3, received.writes.size());
    EXPECT_EQ("its name is too long or no UTF-8", received.writes[0].error);
    EXPECT_EQ("its name is too long or no UTF-8", received.writes[1].error);
    EXPECT_FALSE(received.writes[2].error.contains(QChar(0x1b)));
    EXPECT_FALSE(received.writes[2].error.contains(QLatin1Char('\n')));
}

TEST_F(Commands, WithAnIdThatNobodyCanShowAreNotCarriedOut)
{
    begin();
    wire::Command command;
    add("P/speed", &command)->set_int_value(1);
    command.set_uuid("\xFF");
    EXPECT_TRUE(toPump(command).writes.isEmpty());
    EXPECT_NE("", toPump(command).complaint);
    command.set_uuid(std::string(101, 'x'));
    EXPECT_TRUE(toPump(command).writes.isEmpty());
    command.set_uuid(std::string(100, 'x'));
    EXPECT_EQ(1, toPump(command).writes.size());
}

TEST_F(Commands, ThatAreNoPayloadAreComplainedOf)
{
    begin();
    const Received received = m_publisher.received(
        Message{QStringLiteral("spBv1.0/works/DCMD/hall/pump"), "on", 1, false}, 2000);
    EXPECT_TRUE(received.writes.isEmpty());
    EXPECT_EQ("its bytes are no Sparkplug payload", received.complaint);
}

class NodeCommands : public Commands {
protected:
    Received toNode(const wire::Command& command)
    {
        return receive("spBv1.0/works/NCMD/hall", command);
    }
};

TEST_F(NodeCommands, AskForARebirth)
{
    begin();
    wire::Command command;
    add("Node Control/Rebirth", &command)->set_boolean_value(true);
    const Received received = toNode(command);
    EXPECT_TRUE(received.isRebirthWanted);
    EXPECT_EQ("", received.complaint);
    EXPECT_TRUE(received.writes.isEmpty());
}

TEST_F(NodeCommands, OfFalseAskForNothing)
{
    begin();
    wire::Command command;
    add("Node Control/Rebirth", &command)->set_boolean_value(false);
    EXPECT_FALSE(toNode(command).isRebirthWanted);
    EXPECT_EQ("", toNode(command).complaint);
}

TEST_F(NodeCommands, OfAnotherKindAreComplainedOf)
{
    begin();
    wire::Command number;
    add("Node Control/Rebirth", &number)->set_int_value(1);
    EXPECT_FALSE(toNode(number).isRebirthWanted);
    EXPECT_EQ("a rebirth is asked for by true", toNode(number).complaint);
    wire::Command other;
    add("Node Control/Reboot", &other)->set_boolean_value(true);
    EXPECT_FALSE(toNode(other).isRebirthWanted);
    EXPECT_EQ("\"Node Control/Reboot\" cannot be written", toNode(other).complaint);
    wire::Command alias;
    alias.add_metrics()->set_alias(2);
    EXPECT_EQ("\"alias 2\" cannot be written", toNode(alias).complaint);
    EXPECT_NE("", toNode(wire::Command()).complaint);
}

} // namespace
} // namespace plc::gateway
