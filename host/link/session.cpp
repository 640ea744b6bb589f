#include "host/link/session.h"

#include <algorithm>
#include <utility>

#include "host/driver/request_records.h"

namespace plc::host {
namespace {

Answer::Kind answerKind(int result)
{
    switch (result) {
        case PLC_RESULT_NOT_FINISHED:
            return Answer::Retried;
        case PLC_RESULT_ACCEPTED:
        case PLC_RESULT_REMOTE_ACCEPTED:
            return Answer::Accepted;
        case PLC_RESULT_LOGIN_REFUSED:
            return Answer::LoginRefused;
        default:
            return Answer::Abandoned;
    }
}

/// Good, and without a single block: the driver takes it for the end of any read and stores
/// nothing.
QByteArray emptyReply()
{
    return QByteArray::fromHex("BBBB000000020000");
}

/// Reads in a row that the PLC refuses before the login is doubted: a search by halves for one
/// refused value among a hundred seldom meets as many.
constexpr int kRefusedBeforeLogin = 4;
/// As many more in a row, and it is doubted again.
constexpr int kRefusedBetweenLogins = 64;

/// What is kept of replies that an acknowledgement is compared with.
constexpr int kMostComparedBytes = 256 * 1024;

bool isLoginService(Service service)
{
    return service == Service::Identification || service == Service::File;
}

/// The earlier of two times, of which -1 is never.
qint64 earlier(qint64 a, qint64 b)
{
    return a < 0 || b < 0 ? qMax(a, b) : qMin(a, b);
}

/// Sets a flag for as long as it lives.
class FlagScope {
public:
    explicit FlagScope(bool* flag) : m_flag(flag) { *m_flag = true; }
    ~FlagScope() { *m_flag = false; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

private:
    bool* const m_flag;
};

} // namespace

Session::Session(const DriverFunctions& driver, ComInfo* settings, const SessionTimes& times,
                 SessionObserver* observer)
    : m_driver(driver),
      m_settings(settings),
      m_times(times),
      m_observer(observer),
      m_backoff(times.reconnectDelay, times.reconnectDelayLimit)
{
}

void Session::start(qint64 now)
{
    const FlagScope inEvent(&m_isInEvent);
    if (m_state == State::Stopped)
        connectNow(now);
}

void Session::stop()
{
    const FlagScope inEvent(&m_isInEvent);
    if (m_state == State::Stopped)
        return;
    close(State::Stopped);
    m_observer->linkChanged(LinkState::Down, QStringLiteral("stopped"), -1);
}

void Session::connected(qint64 now)
{
    const FlagScope inEvent(&m_isInEvent);
    if (m_state != State::Connecting)
        return;
    m_state = State::Ready;
    m_entriesOfPass = 0;
    m_nextPassAt = now;
    m_observer->linkChanged(LinkState::Up, QString(), -1);
    requestNext(now);
}

void Session::disconnected(const QString& reason, qint64 now)
{
    const FlagScope inEvent(&m_isInEvent);
    if (m_state != State::Stopped && m_state != State::Waiting)
        loseLink(reason, now);
}

void Session::received(const QByteArray& bytes, qint64 now)
{
    const FlagScope inEvent(&m_isInEvent);
    if (m_state == State::Ready) {
        loseLink(QStringLiteral("the PLC sent %1 bytes that nobody asked for").arg(bytes.size()),
                 now);
        return;
    }
    if (m_state != State::AwaitingReply)
        return;
    m_collector.append(bytes);
    // The clock counts when the bytes are looked at: whatever held them up, they come too late.
    if (now >= m_deadline) {
        loseLink(lateReason(), now);
    } else if (!m_collector.mayBeFrame()) {
        loseLink(QStringLiteral("what answers does not speak the block protocol: its reply begins "
                                "with %1, not with BB BB")
                     .arg(m_collector.beginning()),
                 now);
    } else if (m_collector.isComplete()) {
        takeReply(now);
    }
}

void Session::tick(qint64 now)
{
    const FlagScope inEvent(&m_isInEvent);
    const qint64 deadline = nextDeadline();
    if (deadline < 0 || now < deadline)
        return;
    switch (m_state) {
        case State::Waiting:
            connectNow(now);
            break;
        case State::Connecting:
            loseLink(QStringLiteral("no connection within %1 ms").arg(m_times.connectTimeout), now);
            break;
        case State::Ready:
            requestNext(now);
            break;
        case State::AwaitingReply:
            loseLink(lateReason(), now);
            break;
        case State::Stopped:
            break;
    }
}

void Session::wake(qint64 now)
{
    if (m_isInEvent || m_state != State::Ready)
        return;
    const FlagScope inEvent(&m_isInEvent);
    requestNext(now);
}

QVector<SessionAction> Session::takeActions()
{
    QVector<SessionAction> actions;
    actions.swap(m_actions);
    return actions;
}

qint64 Session::nextDeadline() const
{
    switch (m_state) {
        case State::Stopped:
            return -1;
        case State::Ready:
            return earlier(m_idle ? -1 : m_nextPassAt, m_observer->preparesAt());
        case State::Waiting:
        case State::Connecting:
        case State::AwaitingReply:
            break;
    }
    return m_deadline;
}

LinkState Session::linkState() const
{
    switch (m_state) {
        case State::Stopped:
        case State::Waiting:
            return LinkState::Down;
        case State::Connecting:
            return LinkState::Connecting;
        case State::Ready:
        case State::AwaitingReply:
            break;
    }
    return LinkState::Up;
}

void Session::connectNow(qint64 now)
{
    m_state = State::Connecting;
    m_deadline = now + m_times.connectTimeout;
    m_actions.append({SessionAction::Connect, QByteArray()});
    m_observer->linkChanged(LinkState::Connecting, QString(), -1);
}

void Session::requestNext(qint64 now)
{
    m_state = State::Ready;
    m_idle = false;
    const bool isUrgent = m_observer->prepareRequest(now, now >= m_nextPassAt);
    if (now < m_nextPassAt && !isUrgent)
        return;
    Protocol* request = m_driver.comCommunication();
    // A null may only mean that writes or one-shot reads had their turns; it gives them new ones.
    if (!request && isUrgent)
        request = m_driver.comCommunication();
    if (!request)
        m_idle = true;
    else
        send(*request, now);
}

void Session::send(const Protocol& request, qint64 now)
{
    m_request = {request.frame, parseRequest(request.frame), request.var.category, now};
    m_sizeIsOpen = request.replyLength == PLC_REPLY_LENGTH_OPEN;
    m_collector.clear();
    m_state = State::AwaitingReply;
    m_deadline = now + m_times.replyTimeout;
    m_actions.append({SessionAction::Send, m_request.frame});
    m_observer->requestSent(m_request);
}

void Session::takeReply(qint64 now)
{
    const QByteArray reply = m_collector.frame();
    const QString misfit = misfitReason(reply);
    m_lastReplies[m_request.content.service] = reply;
    if (!misfit.isEmpty()) {
        Answer answer;
        answer.kind = Answer::Misfit;
        answer.status = replyStatus(reply);
        m_observer->requestAnswered(m_request, answer, reply, now);
        loseLink(misfit, now);
        return;
    }
    const Answer answer = judge(reply);
    m_state = State::Ready;
    if (answer.kind == Answer::Accepted)
        noteAccepted(now);
    else if (answer.kind == Answer::Refused)
        countPass(now);
    m_observer->requestAnswered(m_request, answer, reply, now);
    if (answer.kind == Answer::LoginRefused)
        loseLink(QStringLiteral("the PLC refused the login"), now);
    else if (answer.kind == Answer::Abandoned && m_request.content.isLogin())
        // With it the driver has dropped the batch that waited behind it, which no frame named.
        loseLink(QStringLiteral("the login failed: result %1").arg(answer.result), now);
    else
        requestNext(now);
}

/// Why a reply cannot be the one to this request; empty if it can. The size of a good reply to a
/// read is known beforehand, and nothing else tells it from a reply to another read. What a PLC
/// sends to a write is for the PLC to choose, but it is no second copy of what it sent to a login
/// or a read.
QString Session::misfitReason(const QByteArray& reply)
{
    const RequestContent& content = m_request.content;
    // Which of the two is the reply, and which the stray one, nobody can tell.
    if (m_collector.surplus() > 0) {
        return QStringLiteral("the PLC sent %1 bytes behind its reply").arg(m_collector.surplus());
    }
    if (replyStatus(reply) != 0) {
        if (content.service == Service::Read && m_isWriteDoubted)
            return QStringLiteral("a refusal may be that of the write before this read");
        return QString();
    }
    if (content.service == Service::Read && reply.size() != readReplySize(content.entries)) {
        return QStringLiteral("a reply of %1 bytes answers a read whose data take %2")
            .arg(reply.size())
            .arg(readReplySize(content.entries));
    }
    if (content.service == Service::Read && isLoginCopy(reply))
        return QStringLiteral("the PLC sent its reply to a login twice");
    if (content.service == Service::Write)
        return acknowledgementMisfit(reply);
    if (content.service == Service::File) {
        // A PLC may well answer both frames of a login alike; it then does so at every login.
        const bool wasAlike = std::exchange(m_loginWasAlike, isSecondCopy(reply));
        if (m_loginWasAlike && !wasAlike)
            return QStringLiteral("the PLC sent its first reply to the login twice");
    }
    return QString();
}

QString Session::acknowledgementMisfit(const QByteArray& reply)
{
    const int size = int(reply.size());
    if (!m_goodReplySizes.contains(size))
        return QString();
    if (isSecondCopy(reply) || m_compared.contains(reply))
        return QStringLiteral("the PLC sent its reply to a login or a read twice");
    if (m_comparedSizes.contains(size) && m_comparedBytes <= kMostComparedBytes)
        return QString();
    m_comparedSizes.insert(size);
    return QStringLiteral("the PLC's reply to a write is as long as one to a login or a read");
}

void Session::keepForComparison(const QByteArray& reply)
{
    if (!m_comparedSizes.contains(int(reply.size())) || m_comparedBytes > kMostComparedBytes ||
        m_compared.contains(reply))
        return;
    m_compared.insert(reply);
    m_comparedBytes += int(reply.size());
}

QString Session::lateReason() const
{
    if (m_collector.size() == 0)
        return QStringLiteral("no reply within %1 ms").arg(m_times.replyTimeout);
    if (m_collector.isComplete())
        return QStringLiteral("the reply came later than within %1 ms").arg(m_times.replyTimeout);
    return QStringLiteral("only %1 bytes of a reply within %2 ms")
        .arg(m_collector.size())
        .arg(m_times.replyTimeout);
}

/// Whether the last reply to a request of another service was the same.
bool Session::isSecondCopy(const QByteArray& reply) const
{
    return std::any_of(m_lastReplies.begin(), m_lastReplies.end(), [&](const auto& last) {
        return last.first != m_request.content.service && last.second == reply;
    });
}

bool Session::isLoginCopy(const QByteArray& reply) const
{
    return std::any_of(m_lastReplies.begin(), m_lastReplies.end(), [&reply](const auto& last) {
        return isLoginService(last.first) && last.second == reply;
    });
}

/// Has the driver judge the reply. One that refuses a read is not shown to it.
Answer Session::judge(const QByteArray& reply)
{
    const bool isRead = m_request.content.service == Service::Read;
    const int status = replyStatus(reply);
    Answer answer = isRead && status != 0 ? endRefusedRead(status) : handOver(reply);
    if (isRead && answer.kind == Answer::Accepted) {
        m_hasGivenReads = true;
        m_refusedInARow = 0;
    }
    noteSize(reply, &answer);
    return answer;
}

Answer Session::endRefusedRead(int status)
{
    ++m_refusedInARow;
    Answer answer;
    answer.kind = Answer::Refused;
    answer.status = status;
    answer.isLoginDoubted = isLoginDoubted();
    // The driver forgets its login with a request that is given up.
    if (answer.isLoginDoubted)
        giveUpRequest();
    else
        handOver(emptyReply());
    return answer;
}

bool Session::isLoginDoubted() const
{
    const int first = m_hasGivenReads ? kRefusedBeforeLogin : 1;
    return m_refusedInARow >= first && (m_refusedInARow - first) % kRefusedBetweenLogins == 0;
}

/// A write's reply of a size that was seen before may be a copy. A good reply to another request,
/// of a size that no write's reply had, is none that was left over from a write.
void Session::noteSize(const QByteArray& reply, Answer* answer)
{
    const int size = int(reply.size());
    const bool isNew = !m_replySizes.contains(size);
    m_replySizes.insert(size);
    if (m_request.content.service == Service::Write) {
        answer->mayBeCopy = !isNew || !m_isInStep;
        m_isInStep = !answer->mayBeCopy;
        m_isWriteDoubted = answer->mayBeCopy;
        m_writeReplySizes.insert(size);
        answer->isInStep = m_isInStep;
        return;
    }
    if (answer->kind == Answer::Accepted) {
        m_goodReplySizes.insert(size);
        keepForComparison(reply);
    }
    if (m_request.content.service == Service::File && m_loginWasAlike) {
        m_isInStep = false;
    } else if (answer->kind == Answer::Accepted && !m_writeReplySizes.contains(size)) {
        m_isInStep = true;
        m_isWriteDoubted = false;
    }
    answer->isInStep = m_isInStep;
}

Answer Session::handOver(QByteArray reply)
{
    const int size = int(reply.size());
    // The first call with a reply of open size only records the size.
    if (m_sizeIsOpen)
        m_driver.dataCom(&reply, size);
    Answer answer;
    answer.result = m_driver.dataCom(&reply, size)->result;
    answer.kind = answerKind(answer.result);
    answer.status = replyStatus(reply);
    return answer;
}

void Session::noteAccepted(qint64 now)
{
    // The driver counts failures over all requests and by itself never forgets them.
    m_settings->retryCount = 0;
    if (m_request.content.isLogin())
        return;
    m_backoff.reset();
    countPass(now);
}

void Session::countPass(qint64 now)
{
    if (m_request.category != kCyclicCategory || m_request.content.service != Service::Read)
        return;
    if (m_entriesOfPass == 0)
        m_passStart = m_request.sentAt;
    m_entriesOfPass += int(m_request.content.entries.size());
    if (m_entriesOfPass < m_cyclicEntries)
        return;
    m_entriesOfPass = 0;
    ++m_passes;
    m_nextPassAt = qMax(now, m_passStart + m_times.cycleTime);
}

void Session::loseLink(const QString& reason, qint64 now)
{
    const int delay = m_backoff.next();
    m_deadline = now + delay;
    close(State::Waiting);
    m_observer->linkChanged(LinkState::Down, reason, delay);
}

/// Whatever happened to the connection, it is not used again, and what was under way is given up.
void Session::close(State next)
{
    m_state = next;
    m_collector.clear();
    m_lastReplies.clear();
    m_replySizes.clear();
    m_writeReplySizes.clear();
    m_goodReplySizes.clear();
    m_compared.clear();
    m_comparedBytes = 0;
    m_isInStep = true;
    m_isWriteDoubted = false;
    m_hasGivenReads = false;
    m_refusedInARow = 0;
    m_actions.append({SessionAction::Close, QByteArray()});
    giveUpEverything();
}

/// Empties the driver's queue, write list and one-shot list, so that nothing of it is carried out
/// later, and makes the driver forget its login, which belongs to the lost connection.
///
/// Writes come first, then one-shot reads, then cyclic ones, each kind for some turns only; two
/// cyclic turns in a row mean that nothing else is left.
void Session::giveUpEverything()
{
    bool hasForgotten = false;
    int cyclicTurns = 0;
    while (cyclicTurns < 2) {
        const Protocol* request = m_driver.comCommunication();
        const bool isCyclic = !request || request->var.category == kCyclicCategory;
        cyclicTurns = isCyclic ? cyclicTurns + 1 : 0;
        if (request) {
            giveUpRequest();
            hasForgotten = true;
        }
    }
    if (!hasForgotten)
        forgetLogin();
}

/// A request is given up by empty replies until the driver has had enough.
void Session::giveUpRequest()
{
    QByteArray nothing;
    while (m_driver.dataCom(&nothing, 0)->result == PLC_RESULT_NOT_FINISHED) {
    }
}

/// The driver forgets its login only with a request that is given up; with nothing to read or write
/// it gets one for the purpose, which is never sent.
void Session::forgetLogin()
{
    RW_VAR read;
    read.category = kForgetLoginCategory;
    read.aux2 = PLC_REPLY_ACKNOWLEDGED;
    read.deviceNo = m_settings->localDeviceNo;
    read.station = PLC_ALL_STATIONS;
    read.length = 1;
    m_driver.addListOnceReadVar(&read, PLC_APPEND_ALWAYS);
    if (m_driver.comCommunication())
        giveUpRequest();
}

} // namespace plc::host
