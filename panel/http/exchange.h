#ifndef PLC_PANEL_HTTP_EXCHANGE_H
#define PLC_PANEL_HTTP_EXCHANGE_H

#include <microhttpd.h>

#include <memory>
#include <mutex>
#include <optional>

#include "panel/http/request_fields.h"
#include "panel/http/server_core.h"

namespace plc::panel {

/// One request and its response. For the thread of its connection but for give().
class Exchange : public std::enable_shared_from_this<Exchange> {
public:
    /// `target` as in the request line.
    Exchange(ServerCore* core, std::shared_ptr<Connection> connection, MHD_Connection* handle,
             const QByteArray& target);

    /// Called when the head is there, for each part of the body, and then until there is an answer.
    /// `version`: of HTTP, as in the request line.
    MHD_Result step(const char* version, const char* method, const char* upload,
                    std::size_t* uploadSize);
    /// For any thread: the answer, of which only the first counts.
    void give(Response response);
    /// The request is over.
    void complete();

private:
    MHD_Result begin(const QByteArray& method);
    std::optional<Response> refusal(const QByteArray& method, const RequestFields& fields);
    std::optional<Response> checkHead() const;
    std::optional<Response> find(const QByteArray& method, const RequestFields& fields);
    int mostBodyBytes() const;
    void receive(const char* upload, int size);
    MHD_Result skip(std::size_t size);
    std::optional<Response> roomRefusal(qint64 bytes) const;
    void giveBack();
    void dispatch();
    MHD_Result answerOrWait();
    MHD_Result send(Response response);

    ServerCore* const m_core;
    const std::shared_ptr<Connection> m_connection;
    MHD_Connection* const m_handle;
    const QByteArray m_target;
    RouteMatch m_match;
    Request m_request;
    bool m_hasBegun = false;
    bool m_takesChunks = false; ///< The client: an answer whose size is not known goes in chunks.
    bool m_isDispatched = false;
    bool m_hasBody = false;
    std::optional<Response> m_late; ///< What is answered at the end of a body that is not taken.
    qint64 m_skipped = 0;           ///< Bytes of that body.
    qint64 m_held = 0;              ///< Bytes of a body that is taken, among those of the core.

    std::mutex m_mutex; ///< Guards all below.
    std::optional<Response> m_response;
    bool m_isAnswered = false;
};

} // namespace plc::panel

#endif
