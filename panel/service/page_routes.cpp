#include "panel/service/page_routes.h"

#include "panel/page/page_files.h"

namespace plc::panel {
namespace {

Response fileResponse(const PageFile& file, const Request& request)
{
    Response response;
    response.addHeader("ETag", file.etag);
    response.addHeader("Cache-Control", "no-cache");
    if (request.ifNoneMatch == file.etag) {
        response.status = 304;
        return response;
    }
    response.contentType = file.contentType;
    response.body = file.bytes;
    return response;
}

} // namespace

QVector<Route> pageRoutes()
{
    QVector<Route> routes;
    for (const PageFile& file : pageFiles()) {
        Route route;
        route.pattern = file.path.toUtf8();
        route.summary = "A file of the page";
        route.handler = [file](const Request& request, const Responder& respond) {
            respond(fileResponse(file, request));
        };
        routes.append(route);
    }
    return routes;
}

} // namespace plc::panel
