// Cuts what arrives on a port into commands.
#pragma once

#include "Command.h"

#include <string_view>

namespace Sim {

/// Lines end with CR, LF or both. Lines that hold what nobody types are noise and vanish, as do
/// those that are too long for any command.
class CCommandReader {
public:
    /// The commands that these bytes complete, in order.
    std::vector<SCommand> Read(std::string_view bytes);

    /// What has begun is lost.
    void Forget();

private:
    void TakeByte(char byte, std::vector<SCommand>& commands);
    void TakeLineByte(char byte, std::vector<SCommand>& commands);
    void TakeFrameByte(char byte, std::vector<SCommand>& commands);

    std::string m_line;
    Bytes m_frame; ///< empty unless a binary message has begun
    bool m_isNoise = false;
    bool m_wasReturn = false;
};

} // namespace Sim
