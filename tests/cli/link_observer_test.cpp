#include "cli/link_observer.h"

#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

/// Notes what it hears behind its name.
class Noting : public host::RuntimeListener {
public:
    Noting(const char* name, QStringList* heard) : m_name(QLatin1String(name)), m_heard(heard) {}

    void linkChanged(host::LinkState, const QString& reason, int) override { note(reason); }
    void requestSent(const host::SentRequest&) override { note(QStringLiteral("sent")); }
    void requestAnswered(const host::SentRequest&, const host::Answer&,
                         const QByteArray& reply) override
    {
        note(QString::fromLatin1(reply));
    }
    void requestSettled() override { note(QStringLiteral("settled")); }
    void valueRefused(int row) override { note(QStringLiteral("refused %1").arg(row)); }
    void valueGivenAgain(int row) override { note(QStringLiteral("given %1").arg(row)); }

private:
    void note(const QString& what) { m_heard->append(m_name + QLatin1Char(' ') + what); }

    const QString m_name;
    QStringList* const m_heard;
};

TEST(LinkObservers, AllHearAllInTheirOrder)
{
    QStringList heard;
    Noting first("1", &heard);
    Noting second("2", &heard);
    LinkObservers observers;
    observers.add(&first);
    observers.add(&second);
    observers.linkChanged(host::LinkState::Down, QStringLiteral("closed"), 0);
    observers.requestSent(host::SentRequest());
    observers.requestAnswered(host::SentRequest(), host::Answer(), "reply");
    observers.requestSettled();
    observers.valueRefused(3);
    observers.valueGivenAgain(4);
    EXPECT_EQ(
        (QStringList{"1 closed", "2 closed", "1 sent", "2 sent", "1 reply", "2 reply", "1 settled",
                     "2 settled", "1 refused 3", "2 refused 3", "1 given 4", "2 given 4"}),
        heard);
    observers.clear();
    heard.clear();
    observers.requestSettled();
    EXPECT_TRUE(heard.isEmpty());
}

} // namespace
} // namespace test
} // namespace plc::cli
