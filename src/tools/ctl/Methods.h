// What the daemon can be asked to do: its methods, their arguments and their answers.
#pragma once

#include <span>

namespace Ctl {

struct SMethod {
    const char* name;
    const char* arguments; ///< "name: type" with commas; empty for none
    const char* answer;    ///< "" for none
    const char* effect;
};

/// In the order in which they are shown.
std::span<const SMethod> Methods();

} // namespace Ctl
