#include "simulator/wire.h"

namespace plc::simulator {

const char* statusName(Status status)
{
    switch (status) {
        case Status::Good:
            return "good";
        case Status::UnknownService:
            return "unknown service";
        case Status::BadLength:
            return "bad length";
        case Status::TrailingBytes:
            return "trailing bytes";
        case Status::BadParameter:
            return "bad parameter";
        case Status::NotLoggedIn:
            return "not logged in";
        case Status::LoginRefused:
            return "login refused";
        case Status::NoSuchFile:
            return "no such file";
        case Status::TooManyEntries:
            return "too many entries";
        case Status::ReplyTooLarge:
            return "reply too large";
        case Status::UnknownArea:
            return "unknown area";
        case Status::OutsideArea:
            return "outside area";
        case Status::WriteRefused:
            return "write refused";
    }
    return "unknown status";
}

} // namespace plc::simulator
