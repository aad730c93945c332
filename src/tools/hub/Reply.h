// An answer that the web server hands on.
#pragma once

#include <string>

namespace Hub {

struct SReply {
    int status = 200; ///< of HTTP
    std::string body; ///< JSON; with another status what is wrong, in words
};

} // namespace Hub
