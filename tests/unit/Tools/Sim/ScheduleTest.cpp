// What LOG and UNLOG ask for, and what the schedule makes of it.
#include "sim/LogRequest.h"
#include "sim/LogSchedule.h"

#include <gmock/gmock.h>

namespace {

using namespace Sim;
using Words = std::vector<std::string>;

SResponse Refusal(const Words& words) {
    const auto outcome = UnderstandLog(words, EPort::com1);
    const SResponse* response = std::get_if<SResponse>(&outcome);
    return response == nullptr ? SResponse{} : *response;
}

SLogRequest Understood(const Words& words, EPort port = EPort::com1) {
    const auto outcome = UnderstandLog(words, port);
    const auto* requests = std::get_if<std::vector<SLogRequest>>(&outcome);
    if (requests == nullptr || requests->size() != 1) {
        ADD_FAILURE() << "not one request";
        return {.what = *FindLog("VERSION")};
    }
    return requests->front();
}

std::string Found(std::string_view word) {
    const auto log = FindLog(word);
    return log ? LogName(*log) + " " + std::to_string(static_cast<int>(log->format)) : "none";
}

} // namespace

TEST(SimLogCatalog, tells_the_format_by_the_last_letter) {
    EXPECT_EQ(Found("bestposb"), "BESTPOSB 0");
    EXPECT_EQ(Found("BESTPOSA"), "BESTPOSA 1");
    EXPECT_EQ(Found("BestPos"), "BESTPOS 2");
    EXPECT_EQ(Found("gpgsa"), "GPGSA 3");
}

TEST(SimLogCatalog, does_not_take_the_last_letter_of_a_name_for_a_format) {
    EXPECT_EQ(Found("rtkdata"), "RTKDATA 2");
    EXPECT_EQ(Found("rtkdatab"), "RTKDATAB 0");
    EXPECT_EQ(Found("gpgga"), "GPGGA 3");
}

TEST(SimLogCatalog, knows_no_others) {
    for (const std::string_view word : {"", "A", "B", "BESTPO", "BESTPOSC", "GPGSVA", "GLGSV"}) {
        EXPECT_EQ(Found(word), "none") << word;
    }
}

TEST(SimLogRequest, is_for_this_port_and_once_unless_more_is_said) {
    const SLogRequest request = Understood({"bestposb"}, EPort::usb2);
    EXPECT_EQ(request.port, EPort::usb2);
    EXPECT_EQ(request.trigger, ETrigger::once);
    EXPECT_FALSE(request.isHeld);
}

TEST(SimLogRequest, has_port_trigger_period_offset_and_hold) {
    const SLogRequest request = Understood({"usb3", "rangeb", "ontime", "0.5", "0.25", "hold"});
    EXPECT_EQ(request.port, EPort::usb3);
    EXPECT_EQ(request.trigger, ETrigger::onTime);
    EXPECT_EQ(request.period, 500);
    EXPECT_EQ(request.offset, 250);
    EXPECT_TRUE(request.isHeld);
}

TEST(SimLogRequest, takes_numbers_for_names) {
    const SLogRequest request = Understood({"1696", "RANGEB", "2", "1.000000", "0.000000", "0"});
    EXPECT_EQ(request.port, EPort::usb2);
    EXPECT_EQ(request.trigger, ETrigger::onTime);
    EXPECT_EQ(request.period, 1000);
}

TEST(SimLogRequest, is_refused_for_a_log_that_does_not_exist) {
    EXPECT_EQ(Refusal({"foo"}).number, EResponse::noSuchLog);
    EXPECT_EQ(Refusal({"com9", "bestposb"}).number, EResponse::noSuchLog);
    EXPECT_EQ(Refusal({}).number, EResponse::missingField);
    EXPECT_EQ(Refusal({"com1"}).number, EResponse::missingField);
}

TEST(SimLogRequest, takes_only_the_rates_of_the_receiver) {
    for (const std::string rate : {"0.05", "0.1", "0.2", "0.25", "0.5", "1", "2", "60", "3600"}) {
        EXPECT_TRUE(Refusal({"bestposb", "ontime", rate}).IsOK()) << rate;
    }
    for (const std::string rate :
         {"0", "0.01", "0.02", "0.3", "0.75", "1.5", "-1", "0.0501", "fast", "1e300", "nan"}) {
        EXPECT_EQ(Refusal({"bestposb", "ontime", rate}).number, EResponse::rateInvalid) << rate;
    }
    EXPECT_EQ(Refusal({"bestposb", "ontime"}).number, EResponse::rateInvalid);
}

TEST(SimLogRequest, takes_only_triggers_that_suit_the_log) {
    EXPECT_EQ(Refusal({"bestposb", "onchanged"}), (SResponse{EResponse::triggerInvalid, 1}));
    EXPECT_EQ(Refusal({"gpgga", "onchanged"}), (SResponse{EResponse::triggerInvalid, 1}));
    EXPECT_EQ(Refusal({"comconfigb", "onnew"}), (SResponse{EResponse::triggerInvalid, 0}));
    EXPECT_TRUE(Refusal({"versionb", "onchanged"}).IsOK());
    EXPECT_TRUE(Refusal({"versionb", "ontime", "1"}).IsOK());
    EXPECT_TRUE(Refusal({"comconfigb", "ontime", "10"}).IsOK());
}

TEST(SimLogRequest, is_refused_with_the_number_of_the_field_that_is_wrong) {
    EXPECT_EQ(Refusal({"bestposb", "often"}), (SResponse{EResponse::invalidField, 2}));
    EXPECT_EQ(Refusal({"com1", "bestposb", "often"}), (SResponse{EResponse::invalidField, 3}));
    EXPECT_EQ(Refusal({"bestposb", "ontime", "1", "0", "maybe"}),
              (SResponse{EResponse::invalidField, 5}));
    EXPECT_EQ(Refusal({"bestposb", "ontime", "1", "0", "hold", "more"}),
              (SResponse{EResponse::invalidField, 6}));
}

TEST(SimLogRequest, to_end_a_log_names_it_alone) {
    EXPECT_TRUE(std::holds_alternative<SResponse>(UnderstandUnlog({"timeb", "1"}, EPort::com1)));
    EXPECT_FALSE(std::holds_alternative<SResponse>(UnderstandUnlog({"timeb"}, EPort::com1)));
}

TEST(SimLogSchedule, takes_no_more_than_64_requests) {
    CLogSchedule schedule;
    const std::vector<std::string> ports = {"com1", "com2", "com3", "usb1", "usb2", "usb3"};
    std::size_t accepted = 0;
    for (const std::string& port : ports) {
        for (const std::string log : {"timeb", "timea", "time", "rangeb", "rangea", "range",
                                      "bestposb", "bestposa", "bestpos", "gpgga", "gpgsa"}) {
            accepted += schedule.Add(Understood({port, log, "ontime", "1"}), 0).IsOK() ? 1U : 0U;
        }
    }
    EXPECT_EQ(accepted, 64U); // of 66
    EXPECT_EQ(schedule.Add(Understood({"gpgsv", "ontime", "1"}), 0).number, EResponse::noResources);
    EXPECT_TRUE(schedule.Add(Understood({"com1", "timeb", "ontime", "2"}), 0).IsOK())
        << "replaces another one";
    EXPECT_TRUE(schedule.Add(Understood({"gpgsv"}), 0).IsOK()) << "leaves nothing behind";
}

TEST(SimLogSchedule, replaces_a_request_for_the_same_log_on_the_same_port) {
    CLogSchedule schedule;
    schedule.Add(Understood({"timeb", "ontime", "1"}), 0);
    schedule.Add(Understood({"timeb", "ontime", "10"}), 0);
    schedule.Add(Understood({"timea", "ontime", "5"}), 0);
    schedule.Add(Understood({"usb1", "timeb", "ontime", "3"}), 0);
    EXPECT_EQ(schedule.Logs().size(), 3U);
    EXPECT_EQ(schedule.NextDue(), 3000);
    schedule.Add(Understood({"usb1", "timeb", "once"}), 0);
    EXPECT_EQ(schedule.NextDue(), 5000);
}

TEST(SimLogSchedule, has_the_first_one_due_after_the_request) {
    CLogSchedule schedule;
    schedule.Add(Understood({"timeb", "ontime", "1"}), 5000);
    EXPECT_EQ(schedule.NextDue(), 6000);
    EXPECT_TRUE(schedule.TakeDue(5999).empty());
    EXPECT_EQ(schedule.TakeDue(6000).size(), 1U);
    EXPECT_EQ(schedule.NextDue(), 7000);
}

TEST(SimLogSchedule, gives_one_that_is_long_overdue_once) {
    CLogSchedule schedule;
    schedule.Add(Understood({"timeb", "ontime", "1"}), 0);
    EXPECT_EQ(schedule.TakeDue(10'500).size(), 1U);
    EXPECT_EQ(schedule.NextDue(), 11'000);
}
