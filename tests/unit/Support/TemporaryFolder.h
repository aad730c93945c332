// A folder of a test's own, gone with the test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

class CTemporaryFolder {
public:
    CTemporaryFolder() {
        std::string path = std::filesystem::temp_directory_path() / "corvane-test-XXXXXX";
        if (::mkdtemp(path.data()) == nullptr) {
            std::abort();
        }
        m_path = path;
    }
    ~CTemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;

    const std::string& Path() const { return m_path; }
    std::string Path(const std::string& name) const { return m_path + "/" + name; }

    /// Writes a file and returns its path.
    std::string Write(const std::string& name, std::string_view bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

private:
    std::string m_path;
};
