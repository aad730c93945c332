// What has gone out on a port, kept in a file.
#pragma once

#include "LogEncoder.h"

#include <cstdio>
#include <memory>
#include <string>

namespace Sim {

/// Not opened, it keeps nothing. Every byte is in the file at once, for those who read along.
class CLineCapture {
public:
    /// Empties a file that is there already. Why it failed; empty when it did not.
    std::string Open(const std::string& path);

    /// False, with the reason in errno, when this could not be kept; nothing is kept from then on,
    /// so that what is there has no hole.
    bool Add(const Bytes& bytes);

private:
    struct SClose {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::unique_ptr<std::FILE, SClose> m_file;
};

} // namespace Sim
