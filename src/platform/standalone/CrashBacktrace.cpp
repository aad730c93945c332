#include "CrashBacktrace.h"

#include <algorithm>

#if defined(__powerpc__) && !defined(__powerpc64__)

#include <cstdint>
#include <ucontext.h>

namespace CrashBacktrace {

namespace {

// Indices into the registers that the kernel saves (struct pt_regs).
constexpr std::size_t kStackPointer = 1;
constexpr std::size_t kInstructionPointer = 32;
constexpr std::size_t kLinkRegister = 36;

/// The word at an address of the stack.
std::uintptr_t WordAt(std::uintptr_t address) {
    return *reinterpret_cast<const volatile std::uintptr_t*>(address);
}

} // namespace

// The compiler's unwinder passes a signal's frame only with the help of the kernel's vDSO, and
// aborts where there is none (user-mode emulation). The ABI of this processor needs no unwinder:
// the stack pointer leads to a chain of frames, each with the return address in its second word
// (Power Architecture 32-bit ABI supplement, "The Stack Frame").
void Prepare() {
}

std::size_t Collect(std::span<void*> frames, void* context) {
    const auto& registers = static_cast<const ucontext_t*>(context)->uc_mcontext.uc_regs->gregs;
    std::size_t count = 0;
    const auto add = [&](std::uintptr_t address) {
        if (count < frames.size()) {
            frames[count++] = reinterpret_cast<void*>(address);
        }
    };
    add(registers[kInstructionPointer]);
    add(registers[kLinkRegister]); // the caller, should this function have no frame of its own
    std::uintptr_t frame = registers[kStackPointer];
    while (count < frames.size()) {
        const std::uintptr_t outer = WordAt(frame);
        if (outer <= frame || outer % sizeof outer != 0) {
            break;
        }
        add(WordAt(outer + sizeof outer));
        frame = outer;
    }
    return count;
}

} // namespace CrashBacktrace

#else

#include <execinfo.h>

namespace CrashBacktrace {

void Prepare() {
    // The first call loads the unwinder's library.
    void* frame = nullptr;
    backtrace(&frame, 1);
}

std::size_t Collect(std::span<void*> frames, void*) {
    const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
    return static_cast<std::size_t>(std::max(count, 0));
}

} // namespace CrashBacktrace

#endif
