#include "model/planned_reply.h"

#include <algorithm>
#include <random>

namespace plc::model {

namespace {

constexpr std::size_t kLargestPayload = 0xFFFF;

Bytes frameWith(const Bytes& payload)
{
    const std::size_t size = std::min(payload.size(), kLargestPayload);
    Bytes frame(6 + size, 0);
    frame[0] = frame[1] = 0xBB;
    frame[4] = std::uint8_t(size >> 8);
    frame[5] = std::uint8_t(size);
    std::copy_n(payload.begin(), size, frame.begin() + 6);
    return frame;
}

Bytes randomPayload(std::size_t size, std::uint32_t seed)
{
    std::minstd_rand random(seed);
    Bytes payload;
    for (std::size_t i = 0; i < size; ++i)
        payload.push_back(std::uint8_t(random() >> 8));
    return payload;
}

/// What the PLC answers to the request that waits.
Bytes goodReply(const DriverModel& model, std::uint32_t seed)
{
    constexpr std::size_t kIdentificationPayload = 200;
    constexpr std::size_t kFilePayload = 30;
    const Bytes acknowledgement = {0, 0};
    if (model.queue.empty())
        return frameWith(acknowledgement);
    const Bytes& request = model.queue.front().frame;
    switch (request[6]) {
        case 0x01:
            return frameWith(randomPayload(kIdentificationPayload, seed));
        case 0x31:
            return frameWith(randomPayload(kFilePayload, seed));
        case 0x2E: {
            std::size_t size = 6;
            for (const Variable& var : model.batch)
                size += 1 + std::size_t(std::uint16_t(var.length));
            Bytes payload = randomPayload(std::min(size, kLargestPayload), seed);
            std::fill(payload.begin(), payload.begin() + 6, std::uint8_t(0));
            return frameWith(payload);
        }
        default:
            return frameWith(acknowledgement);
    }
}

} // namespace

Bytes plannedReply(const ReplyPlan& plan, const DriverModel& model, const Bytes& lastReply)
{
    Bytes reply = goodReply(model, plan.seed);
    const std::size_t number = std::size_t(std::max(plan.number, 0));
    switch (plan.kind) {
        case ReplyPlan::Good:
            break;
        case ReplyPlan::Again:
            return lastReply;
        case ReplyPlan::Head:
            reply.resize(std::min(number, reply.size()));
            break;
        case ReplyPlan::Tail:
            reply.erase(reply.begin(),
                        reply.begin() + std::ptrdiff_t(std::min(number, reply.size())));
            break;
        case ReplyPlan::Longer:
            reply.resize(reply.size() + number, 0xBB);
            break;
        case ReplyPlan::Joined: {
            const Bytes second = reply;
            reply.insert(reply.end(), second.begin(), second.end());
            break;
        }
        case ReplyPlan::Status:
            reply[6] = std::uint8_t(number >> 8);
            reply[7] = std::uint8_t(number);
            break;
        case ReplyPlan::ToldLength:
            reply[4] = std::uint8_t(number >> 8);
            reply[5] = std::uint8_t(number);
            break;
        case ReplyPlan::Empty:
            reply.clear();
            break;
        case ReplyPlan::EmptyFrame:
            return frameWith(Bytes(number, 0));
        case ReplyPlan::DifferentByte:
            reply[number % reply.size()] ^= std::uint8_t(1 + plan.seed % 255);
            break;
        case ReplyPlan::LoginPayload:
            return frameWith(randomPayload(number, plan.seed));
    }
    return reply;
}

} // namespace plc::model
