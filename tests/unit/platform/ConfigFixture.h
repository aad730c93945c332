// A configuration file in a folder of a test's own, and its reading and writing as others see it.
#pragma once

#include "Support/TemporaryFolder.h"
#include "platform/Config.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <string>

class CConfigFixture : public testing::Test {
protected:
    std::string Path() const { return m_folder.Path("corvane.conf"); }
    const CTemporaryFolder& Folder() const { return m_folder; }

    /// As an editor saves it, in place.
    void Write(const std::string& text) const { m_folder.Write("corvane.conf", text); }

    static std::string Contents(const std::string& path) {
        std::stringstream contents;
        contents << std::ifstream(path, std::ios::binary).rdbuf();
        return contents.str();
    }
    std::string Contents() const { return Contents(Path()); }

private:
    CTemporaryFolder m_folder;
};
