// Raw blocks of a port as clients of mode "raw":1 get them: lines of text as they are, all else in
// hexadecimal.
#pragma once

#include <string>
#include <string_view>

namespace Hub::GPSD {

/// One port's. A line that a block cuts is held back until its rest comes.
class CRawText {
public:
    /// A line of text is at most so long, from its "$" or "#" to its checksum.
    static constexpr std::size_t kLongestLine = 1024;
    /// So many bytes are a line in hexadecimal, at most; a binary log begins a new one.
    static constexpr std::size_t kBytesOfLine = 512;

    std::string Add(std::string_view block);

private:
    std::string m_heldBack;
};

} // namespace Hub::GPSD
