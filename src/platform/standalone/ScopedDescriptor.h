// A file descriptor that is closed at the end of its scope.
#pragma once

#include <unistd.h>

class CScopedDescriptor {
public:
    /// Negative: none, as open() returns it on failure.
    explicit CScopedDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~CScopedDescriptor() {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    CScopedDescriptor(const CScopedDescriptor&) = delete;
    CScopedDescriptor& operator=(const CScopedDescriptor&) = delete;

    bool IsOpen() const { return m_descriptor >= 0; }
    int Get() const { return m_descriptor; }

private:
    const int m_descriptor;
};
