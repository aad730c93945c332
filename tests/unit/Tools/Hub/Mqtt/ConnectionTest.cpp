#include "hub/mqtt/Connection.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {

using Hub::CMQTTConnection;
using Hub::COutbox;

} // namespace

TEST(MQTTConnection, tells_once_that_the_broker_is_away_and_ends_at_once) {
    Hub::SMQTTAccess access;
    access.host = "127.0.0.1";
    access.port = 1; // where nothing listens
    access.device = "device";
    const auto outbox = std::make_shared<COutbox>();
    outbox->QueueEvent("event", "waiting");
    testing::internal::CaptureStderr();
    const auto start = std::chrono::steady_clock::now();
    {
        const CMQTTConnection connection(access, outbox);
        std::this_thread::sleep_for(std::chrono::milliseconds(1500)); // two attempts
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "The MQTT broker 127.0.0.1:1: Connection refused; tried again until it is there\n");
    EXPECT_FALSE(outbox->IsEmpty());
}
