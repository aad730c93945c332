// A listening Unix socket with a name in the file system, which is removed with it.
#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace Mux {

class CUnixListener {
public:
    CUnixListener() = default;
    ~CUnixListener() { Close(); }
    CUnixListener(const CUnixListener&) = delete;
    CUnixListener& operator=(const CUnixListener&) = delete;

    /// Listens under this path, and is reached by those only whom mode and group let. A socket that
    /// stands there and that nobody serves is replaced; anything else is left alone. Returns why it
    /// could not be done, the empty text when it was.
    std::string Open(const std::string& path, mode_t mode, std::optional<gid_t> group);
    /// Removes the name, unless it is another socket's by now.
    void Close();

    /// -1 while it does not listen.
    int Descriptor() const { return m_descriptor; }

private:
    std::string Bind(const std::string& path, mode_t mode, std::optional<gid_t> group);

    int m_descriptor = -1;
    std::string m_path;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};

} // namespace Mux
