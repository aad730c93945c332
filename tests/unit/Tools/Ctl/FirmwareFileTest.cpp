#include "ctl/FirmwareFile.h"

#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

using namespace Ctl;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

class FirmwareFile : public testing::Test {
protected:
    std::string WhyNot(const std::string& content) const {
        return WhyNoFirmware(m_folder.Write("firmware", content));
    }

    CTemporaryFolder m_folder;
};

} // namespace

TEST_F(FirmwareFile, begins_with_an_s_record) {
    EXPECT_EQ(WhyNot("S0~V~OEM060400RN0000\nS3...\n"), "");
    EXPECT_EQ(WhyNot("\r\n  \r\nS315000000\r\n"), "");
}

TEST_F(FirmwareFile, is_not_just_any_text) {
    for (const char* const content : {"", "\n\n", "#!/bin/sh\n", "S\n", "SX\n", ":10010000\n"}) {
        EXPECT_THAT(WhyNot(content), HasSubstr("S-records")) << content;
    }
}

TEST_F(FirmwareFile, is_there_and_a_file) {
    EXPECT_THAT(WhyNoFirmware(m_folder.Path("none")), EndsWith("no such file"));
    EXPECT_THAT(WhyNoFirmware(m_folder.Path("")), EndsWith("not a file"));
}
