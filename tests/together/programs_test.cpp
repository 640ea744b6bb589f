#include <gtest/gtest.h>

#include "host/wire/frame_entries.h"
#include "simulator/plc_services.h"

namespace plc {
namespace {

TEST(Programs, CanBeLinkedTogether)
{
    const QByteArray refusal = QByteArray::fromHex("BBBB000000020031");
    EXPECT_EQ(0x31, host::replyStatus(refusal));
    EXPECT_EQ(0x31, int(simulator::replyStatus(refusal)));
}

} // namespace
} // namespace plc
