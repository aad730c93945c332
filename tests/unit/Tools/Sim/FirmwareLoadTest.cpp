// The simulated receiver's side of a firmware load.
#include "sim/FirmwareLoad.h"

#include <gmock/gmock.h>

namespace {

using namespace Sim;

// S3, length 6: address, one byte of data 0xAA, and the sum's complement: ~(06 + AA) = 4F.
constexpr std::string_view kData = "S30600000000AA4F";

class SimFirmwareLoad : public testing::Test {
protected:
    void Ready(const std::string& error = "") {
        m_load = CFirmwareLoad(error);
        m_load.Reset();
    }
    void Finish() {
        while (m_load.NextStep() != kNever) {
            m_load.Advance(m_load.NextStep());
        }
    }
    std::string StatusWith(const std::string& error) {
        Ready(error);
        if (m_load.TakeRecord(kData).IsOK()) {
            EXPECT_TRUE(m_load.Commit(0).IsOK());
            Finish();
        }
        return std::string(m_load.Status());
    }

    CFirmwareLoad m_load{""};
};

} // namespace

TEST_F(SimFirmwareLoad, is_not_started_at_first_and_takes_nothing) {
    EXPECT_EQ(m_load.Status(), "NOT_STARTED");
    EXPECT_FALSE(m_load.TakeRecord(kData).IsOK());
    EXPECT_FALSE(m_load.Commit(0).IsOK());
    EXPECT_EQ(m_load.Status(), "NOT_STARTED");
    EXPECT_FALSE(m_load.IsUnderWay());
}

TEST_F(SimFirmwareLoad, is_ready_for_data_from_the_first_data_record_on) {
    Ready();
    EXPECT_EQ(m_load.Status(), "READY_FOR_SETUP");
    EXPECT_TRUE(m_load.TakeRecord("S0~V~OEM060400RN0000").IsOK());
    EXPECT_EQ(m_load.Status(), "READY_FOR_SETUP");
    EXPECT_FALSE(m_load.Commit(0).IsOK()) << "there is no data yet";
    EXPECT_TRUE(m_load.TakeRecord(kData).IsOK());
    EXPECT_EQ(m_load.Status(), "READY_FOR_DATA");
    EXPECT_TRUE(m_load.IsUnderWay());
}

TEST_F(SimFirmwareLoad, refuses_records_that_are_damaged) {
    for (const std::string_view record : {"", "S", "X30600000000AA4F", "S3", "S30600000000AA4",
                                          "S30600000000AAG0", "S30700000000AA4E"}) {
        Ready();
        EXPECT_EQ(m_load.TakeRecord(record).number, EResponse::badHexString) << record;
        EXPECT_EQ(m_load.Status(), "BAD_SRECORD") << record;
        EXPECT_FALSE(m_load.TakeRecord(kData).IsOK()) << record;
    }
    Ready();
    EXPECT_EQ(m_load.TakeRecord("S30600000000AA50").number, EResponse::invalidChecksum);
    EXPECT_EQ(m_load.Status(), "BAD_SRECORD");
}

TEST_F(SimFirmwareLoad, takes_its_time_over_each_step) {
    Ready();
    m_load.TakeRecord(kData);
    m_load.Commit(1000);
    m_load.Advance(1000);
    EXPECT_EQ(m_load.Status(), "VERIFYING_DATA");
    const Milliseconds next = m_load.NextStep();
    EXPECT_GT(next, 1000);
    m_load.Advance(next - 1);
    EXPECT_EQ(m_load.Status(), "VERIFYING_DATA");
    m_load.Advance(next);
    EXPECT_EQ(m_load.Status(), "DATA_VERIFIED");
}

TEST_F(SimFirmwareLoad, is_written_from_the_flash_on) {
    Ready();
    m_load.TakeRecord("S0~V~1.234");
    m_load.TakeRecord(kData);
    m_load.Commit(0);
    while (m_load.Status() != "WRITING_FLASH") {
        m_load.Advance(m_load.NextStep());
        EXPECT_FALSE(m_load.IsWritten());
    }
    Finish();
    EXPECT_EQ(m_load.Status(), "COMPLETE");
    EXPECT_TRUE(m_load.IsWritten());
    EXPECT_EQ(m_load.Version(), "1.234");
    EXPECT_FALSE(m_load.IsUnderWay());
}

TEST_F(SimFirmwareLoad, begins_anew_with_a_reset) {
    Ready();
    m_load.TakeRecord("S0~V~1.234");
    m_load.TakeRecord(kData);
    m_load.Commit(0);
    m_load.Advance(0);
    EXPECT_TRUE(m_load.Reset().IsOK());
    EXPECT_EQ(m_load.Status(), "READY_FOR_SETUP");
    EXPECT_EQ(m_load.NextStep(), kNever);
    EXPECT_EQ(m_load.Version(), "");
}

TEST_F(SimFirmwareLoad, ends_with_the_error_that_is_asked_for) {
    for (const std::string error :
         {"RESET_ERROR", "BAD_SRECORD", "BAD_PLATFORM", "BAD_MODULE", "BAD_AUTHCODE", "NO_MODULE",
          "NO_PLATFORM", "MODULE_MISMATCH", "OUT_OF_MEMORY", "DATA_OVERLAP", "BAD_IMAGE_CRC",
          "IMAGE_OVERSIZE", "AUTHCODE_WRITE_ERROR", "BAD_FLASH_ERASE", "BAD_FLASH_WRITE", "TIMEOUT",
          "INCOMPATIBLE_FLASH"}) {
        EXPECT_TRUE(CFirmwareLoad::IsError(error)) << error;
        EXPECT_EQ(StatusWith(error), error);
        EXPECT_FALSE(m_load.IsUnderWay()) << error;
    }
    EXPECT_FALSE(CFirmwareLoad::IsError("COMPLETE"));
    EXPECT_FALSE(CFirmwareLoad::IsError(""));
}
