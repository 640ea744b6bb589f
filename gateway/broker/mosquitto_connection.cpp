#include "gateway/broker/mosquitto_connection.h"

#include <QtCore/QFile>

#include <mosquitto.h>
#include <mqtt_protocol.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "values/steady_time.h"

namespace plc::gateway {
namespace {

constexpr int kConnectTimeout = 10000; // ms, until the subscriptions are taken
constexpr int kCloseTimeout = 3000;    // ms, for what is still to be sent
constexpr int kLoopTime = 100;         // ms, after which the end of a connection is noticed
constexpr int kMostWaitingMessages = 1000;
constexpr qint64 kMostWaitingBytes = qint64(8) * 1024 * 1024;
/// Where the system's authorities are, unless the environment tells otherwise, as for OpenSSL.
constexpr char kSystemAuthorities[] = "/etc/ssl/certs";
constexpr int kMostVitalMessages = 100;
constexpr int kLongestVitalMessage = 4096; // bytes
constexpr int kRefusedSubscription = 0x80;
// Each takes longer, the more are not acknowledged, and packet numbers have 16 bits.
constexpr std::size_t kMostInFlight = 1000;

void initialiseOnce()
{
    static const int kResult = mosquitto_lib_init();
    Q_UNUSED(kResult)
}

QString errorText(int code)
{
    if (code == MOSQ_ERR_ERRNO)
        return QString::fromLocal8Bit(std::strerror(errno));
    // libmosquitto has no words for it.
    if (code == MOSQ_ERR_KEEPALIVE)
        return QStringLiteral("the broker has fallen silent");
    QString text = QString::fromLatin1(mosquitto_strerror(code));
    while (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text;
}

/// Of "OpenSSL Error[0]: error:0A000086:SSL routines::certificate verify failed" the last part.
QString tlsText(const char* line)
{
    QString text = QString::fromLocal8Bit(line).section(QLatin1Char(':'), -1).trimmed();
    while (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text;
}

/// Null where nothing is given, as libmosquitto takes it.
class OptionalText {
public:
    explicit OptionalText(const QString& text) : m_bytes(text.toUtf8()) {}
    const char* get() const { return m_bytes.isEmpty() ? nullptr : m_bytes.constData(); }

private:
    QByteArray m_bytes;
};

} // namespace

MosquittoConnection::MosquittoConnection(const QString& clientId, int keepAlive,
                                         const BrokerSettings& settings,
                                         const std::optional<Message>& will,
                                         const QVector<Subscription>& subscriptions,
                                         std::function<void()> wake)
    : m_clientId(clientId.toUtf8()),
      m_keepAlive(keepAlive),
      m_settings(settings),
      m_will(will),
      m_subscriptions(subscriptions),
      m_wake(std::move(wake))
{
    initialiseOnce();
    m_handle = mosquitto_new(m_clientId.constData(), true, this);
}

MosquittoConnection::~MosquittoConnection()
{
    mosquitto_destroy(m_handle);
}

void MosquittoConnection::start()
{
    std::thread([self = shared_from_this()] { self->run(); }).detach();
}

void MosquittoConnection::run()
{
    const Expected<void> prepared = prepare();
    const QString reason = prepared ? converse() : prepared.error().text;
    {
        // Without a DISCONNECT, unless one was sent: the broker publishes the will.
        const std::lock_guard<std::mutex> lock(m_handleMutex);
        mosquitto_destroy(m_handle);
        m_handle = nullptr;
    }
    post({BrokerEvent::Lost, reason, {}, 0});
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_hasEnded = true;
    m_ended.notify_all();
}

/// Sets everything up.
Expected<void> MosquittoConnection::prepare()
{
    if (!m_handle)
        return Error{QStringLiteral("out of memory")};
    mosquitto_threaded_set(m_handle, true);
    mosquitto_int_option(m_handle, MOSQ_OPT_PROTOCOL_VERSION,
                         m_settings.isVersion5 ? MQTT_PROTOCOL_V5 : MQTT_PROTOCOL_V311);
    mosquitto_int_option(m_handle, MOSQ_OPT_TCP_NODELAY, 1);
    // How much is on its way is decided here: libmosquitto would have other packets overtake what
    // it keeps back.
    mosquitto_max_inflight_messages_set(m_handle, 0);
    setCallbacks();
    if (m_will) {
        const int code = mosquitto_will_set(
            m_handle, m_will->topic.toUtf8().constData(), int(m_will->payload.size()),
            m_will->payload.constData(), m_will->qos, m_will->isRetained);
        if (code != MOSQ_ERR_SUCCESS)
            return Error{errorText(code)};
    }
    if (const Expected<void> isKnown = setUser(); !isKnown)
        return isKnown.error();
    return m_settings.tls ? prepareTls() : Expected<void>();
}

void MosquittoConnection::setCallbacks()
{
    mosquitto_log_callback_set(m_handle, [](mosquitto*, void* self, int level, const char* text) {
        if (level == MOSQ_LOG_ERR)
            static_cast<MosquittoConnection*>(self)->m_loggedErrors += tlsText(text);
    });
    mosquitto_connect_callback_set(m_handle, [](mosquitto*, void* self, int code) {
        static_cast<MosquittoConnection*>(self)->handleConnected(code);
    });
    mosquitto_subscribe_callback_set(
        m_handle, [](mosquitto*, void* self, int packet, int count, const int* granted) {
            bool isGranted = count > 0;
            for (int i = 0; i < count; ++i)
                isGranted = isGranted && granted[i] < kRefusedSubscription;
            static_cast<MosquittoConnection*>(self)->handleSubscribed(packet, isGranted);
        });
    mosquitto_unsubscribe_callback_set(m_handle, [](mosquitto*, void* self, int packet) {
        static_cast<MosquittoConnection*>(self)->handleUnsubscribed(packet);
    });
    mosquitto_publish_callback_set(m_handle, [](mosquitto*, void* self, int packet) {
        static_cast<MosquittoConnection*>(self)->handleAcknowledged(packet);
    });
    mosquitto_message_callback_set(
        m_handle, [](mosquitto*, void* self, const mosquitto_message* message) {
            static_cast<MosquittoConnection*>(self)->handleArrived(
                {QString::fromUtf8(message->topic),
                 QByteArray(static_cast<const char*>(message->payload), message->payloadlen),
                 message->qos, message->retain});
        });
}

Expected<void> MosquittoConnection::setUser()
{
    if (m_settings.user.isEmpty())
        return {};
    const QByteArray user = m_settings.user.toUtf8();
    if (m_settings.passwordFile.isEmpty()) {
        mosquitto_username_pw_set(m_handle, user.constData(), nullptr);
        return {};
    }
    QFile file(m_settings.passwordFile);
    if (!file.open(QIODevice::ReadOnly))
        return Error{QStringLiteral("%1: %2").arg(m_settings.passwordFile, file.errorString())};
    QByteArray password = file.readLine();
    while (password.endsWith('\n') || password.endsWith('\r'))
        password.chop(1);
    mosquitto_username_pw_set(m_handle, user.constData(), password.constData());
    return {};
}

Expected<void> MosquittoConnection::prepareTls()
{
    const TlsSettings& tls = *m_settings.tls;
    for (const QString& path : {tls.authorities, tls.certificate, tls.key}) {
        QFile file(path);
        if (!path.isEmpty() && !file.open(QIODevice::ReadOnly))
            return Error{QStringLiteral("%1: %2").arg(path, file.errorString())};
    }
    int code = MOSQ_ERR_SUCCESS;
    if (tls.authorities.isEmpty())
        code = mosquitto_int_option(m_handle, MOSQ_OPT_TLS_USE_OS_CERTS, 1);
    if (code == MOSQ_ERR_SUCCESS && !(tls.authorities.isEmpty() && tls.certificate.isEmpty())) {
        // It wants authorities by name beside a certificate, also where those of the system count.
        const QByteArray folder = qEnvironmentVariableIsSet("SSL_CERT_DIR")
                                      ? qgetenv("SSL_CERT_DIR")
                                      : QByteArray(kSystemAuthorities);
        code = mosquitto_tls_set(m_handle, OptionalText(tls.authorities).get(),
                                 tls.authorities.isEmpty() ? folder.constData() : nullptr,
                                 OptionalText(tls.certificate).get(), OptionalText(tls.key).get(),
                                 nullptr);
    }
    if (code != MOSQ_ERR_SUCCESS)
        return Error{QStringLiteral("the certificates cannot be used: %1").arg(errorText(code))};
    mosquitto_tls_insecure_set(m_handle, false);
    return {};
}

/// Serves the connection until it ends. Returns why it did.
QString MosquittoConnection::converse()
{
    m_startedAt = values::steadyTime();
    int code = mosquitto_connect_async(m_handle, m_settings.host.toUtf8().constData(),
                                       m_settings.port, m_keepAlive);
    while (code == MOSQ_ERR_SUCCESS && m_lostReason.isEmpty()) {
        code = mosquitto_loop(m_handle, kLoopTime, 1);
        handOver();
        sayGoodbye();
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_end == End::Drop)
            return m_endReason;
        if (m_end == End::Close && values::steadyTime() - m_endWantedAt > kCloseTimeout)
            return QStringLiteral("closed before everything was sent");
        if (m_end == End::None && isOverdue())
            return QStringLiteral("no answer within %1 s").arg(kConnectTimeout / 1000);
    }
    if (!m_lostReason.isEmpty())
        return m_lostReason;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_end == End::Close)
            return QStringLiteral("closed");
    }
    // The code alone does not tell what is wrong with a certificate.
    if (code != MOSQ_ERR_TLS || m_loggedErrors.isEmpty())
        return errorText(code);
    return QStringLiteral("%1: %2").arg(errorText(code), m_loggedErrors.join(QStringLiteral(", ")));
}

bool MosquittoConnection::isOverdue() const
{
    return !m_isConnected && values::steadyTime() - m_startedAt > kConnectTimeout;
}

void MosquittoConnection::loseWith(const QString& reason)
{
    if (m_lostReason.isEmpty())
        m_lostReason = reason;
}

void MosquittoConnection::handleConnected(int code)
{
    if (code != 0) {
        loseWith(
            QStringLiteral("the broker refuses the connection: %1")
                .arg(QString::fromLatin1(m_settings.isVersion5 ? mosquitto_reason_string(code)
                                                               : mosquitto_connack_string(code))));
        return;
    }
    for (const Subscription& subscription : m_subscriptions) {
        int packet = 0;
        if (mosquitto_subscribe(m_handle, &packet, subscription.topic.toUtf8().constData(),
                                subscription.qos) == MOSQ_ERR_SUCCESS)
            m_openSubscriptions.insert(packet);
        else
            loseWith(QStringLiteral("cannot subscribe %1").arg(subscription.topic));
    }
    if (m_subscriptions.isEmpty())
        handleSubscribed(0, true);
}

void MosquittoConnection::handleSubscribed(int packet, bool isGranted)
{
    m_openSubscriptions.erase(packet);
    if (!isGranted) {
        loseWith(QStringLiteral("the broker refuses a subscription"));
    } else if (m_openSubscriptions.empty() && !m_isConnected) {
        m_isConnected = true;
        post({BrokerEvent::Connected, {}, {}, 0});
    }
}

bool MosquittoConnection::isVital(const QString& topic) const
{
    // Some brokers tell what they keep with slashes in the place of dots.
    const auto plain = [](QString text) {
        return text.replace(QLatin1Char('.'), QLatin1Char('/'));
    };
    return std::any_of(m_subscriptions.begin(), m_subscriptions.end(),
                       [&](const Subscription& subscription) {
                           return subscription.isVital && plain(subscription.topic) == plain(topic);
                       });
}

void MosquittoConnection::handleArrived(Message message)
{
    if (isVital(message.topic)) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            ++m_vitalEvents;
            const bool isLong = message.payload.size() > kLongestVitalMessage;
            if (m_vitalEvents <= kMostVitalMessages && !isLong) {
                tell({BrokerEvent::Arrived, {}, std::move(message), 0});
                return;
            }
        }
        drop(QStringLiteral("more came on %1 than can be taken").arg(message.topic));
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_arrivedEvents >= kMostWaitingMessages || m_arrivedBytes >= kMostWaitingBytes) {
            ++m_droppedMessages;
            return;
        }
        ++m_arrivedEvents;
        m_arrivedBytes += message.payload.size();
    }
    post({BrokerEvent::Arrived, {}, std::move(message), 0});
}

void MosquittoConnection::publish(const Message& message)
{
    enqueue({false, 0, message});
}

void MosquittoConnection::askConfirmation(quint64 mark)
{
    enqueue({true, mark, {}});
}

void MosquittoConnection::enqueue(Step step)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_waiting.push_back(std::move(step));
    }
    handOver();
}

/// As much of what waits as may be on its way.
void MosquittoConnection::handOver()
{
    const std::lock_guard<std::mutex> lock(m_handleMutex);
    while (const std::optional<Step> step = takeStep()) {
        const Expected<void> handed = step->isMark ? ask(step->mark) : send(step->message);
        // What follows would hide that this is missing.
        if (!handed) {
            drop(handed.error().text);
            return;
        }
    }
}

std::optional<MosquittoConnection::Step> MosquittoConnection::takeStep()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_waiting.empty() || m_open.size() >= kMostInFlight || m_end == End::Drop)
        return {};
    std::optional<Step> step = std::move(m_waiting.front());
    m_waiting.pop_front();
    return step;
}

/// Under m_handleMutex.
Expected<void> MosquittoConnection::send(const Message& message)
{
    int packet = 0;
    int code = MOSQ_ERR_NO_CONN;
    if (m_handle) {
        code = mosquitto_publish(m_handle, &packet, message.topic.toUtf8().constData(),
                                 int(message.payload.size()), message.payload.constData(),
                                 message.qos, message.isRetained);
    }
    if (code != MOSQ_ERR_SUCCESS)
        return Error{QStringLiteral("cannot publish %1: %2").arg(message.topic, errorText(code))};
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_published;
    if (m_early.erase(packet) == 0) {
        m_open[packet] = m_published;
        m_openInOrder.insert(m_published);
    }
    return {};
}

void MosquittoConnection::handleAcknowledged(int packet)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_open.find(packet);
    if (found == m_open.end()) {
        m_early.insert(packet);
        return;
    }
    m_openInOrder.erase(found->second);
    m_open.erase(found);
    confirmMarks();
}

/// A broker answers packets in order, so the answer to one that does nothing shows that all before
/// it were taken: at QoS 0, where messages have no answer of their own, too. Under m_handleMutex.
Expected<void> MosquittoConnection::ask(quint64 mark)
{
    int packet = 0;
    const QByteArray nobodysTopic = m_clientId + "/mark";
    int code = MOSQ_ERR_NO_CONN;
    if (m_handle)
        code = mosquitto_unsubscribe(m_handle, &packet, nobodysTopic.constData());
    if (code != MOSQ_ERR_SUCCESS)
        return Error{QStringLiteral("cannot ask for a confirmation: %1").arg(errorText(code))};
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_marks.push_back({mark, m_published, packet, m_early.erase(packet) > 0});
    confirmMarks();
    return {};
}

void MosquittoConnection::handleUnsubscribed(int packet)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Mark& mark : m_marks) {
        if (mark.packet == packet && !mark.isAnswered) {
            mark.isAnswered = true;
            confirmMarks();
            return;
        }
    }
    m_early.insert(packet);
}

void MosquittoConnection::close()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_end != End::None || m_hasEnded)
            return;
        m_end = End::Close;
        m_endWantedAt = values::steadyTime();
    }
    sayGoodbye();
}

/// Behind everything else: a broker throws away what it has not taken when the goodbye comes.
void MosquittoConnection::sayGoodbye()
{
    const std::lock_guard<std::mutex> handleLock(m_handleMutex);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const bool isAllSent = m_waiting.empty() && m_openInOrder.empty();
        if (m_end != End::Close || m_isGoodbyeSaid || !isAllSent || !m_handle)
            return;
        m_isGoodbyeSaid = true;
    }
    // Sparkplug wants the death told by the broker, too, where the protocol can say so.
    if (m_settings.isVersion5)
        mosquitto_disconnect_v5(m_handle, MQTT_RC_DISCONNECT_WITH_WILL_MSG, nullptr);
    else
        mosquitto_disconnect(m_handle);
}

void MosquittoConnection::drop(const QString& reason)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_end == End::Drop)
        return;
    m_end = End::Drop;
    m_endReason = reason;
}

std::deque<BrokerEvent> MosquittoConnection::takeEvents()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_droppedMessages > 0) {
        m_events.push_front({BrokerEvent::Dropped, {}, {}, m_droppedMessages});
        m_droppedMessages = 0;
    }
    m_arrivedEvents = 0;
    m_vitalEvents = 0;
    m_arrivedBytes = 0;
    return std::exchange(m_events, {});
}

void MosquittoConnection::forgetOwner()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wake = nullptr;
}

bool MosquittoConnection::waitForEnd(int milliseconds)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_ended.wait_for(lock, std::chrono::milliseconds(milliseconds),
                            [this] { return m_hasEnded; });
}

/// Under m_mutex.
void MosquittoConnection::confirmMarks()
{
    while (!m_marks.empty()) {
        const Mark& mark = m_marks.front();
        const bool isOpen = !m_openInOrder.empty() && *m_openInOrder.begin() <= mark.behind;
        if (!mark.isAnswered || isOpen)
            return;
        tell({BrokerEvent::Confirmed, {}, {}, mark.number});
        m_marks.pop_front();
    }
}

void MosquittoConnection::post(BrokerEvent event)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    tell(std::move(event));
}

/// Under m_mutex.
void MosquittoConnection::tell(BrokerEvent event)
{
    m_events.push_back(std::move(event));
    if (m_events.size() == 1 && m_wake)
        m_wake();
}

} // namespace plc::gateway
