#include "CaptureWriter.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace Sim {

namespace {

class CCaptureFile : public CReceiverOutput {
public:
    /// Not opened yet: HasFailed. "-" is standard output.
    explicit CCaptureFile(const std::string& path)
        : m_file(path == "-" ? stdout : std::fopen(path.c_str(), "wb")) {}
    ~CCaptureFile() override { Close(); }
    CCaptureFile(const CCaptureFile&) = delete;
    CCaptureFile& operator=(const CCaptureFile&) = delete;

    void Say(const SUtterance& utterance) override {
        if (utterance.port == EPort::com1 && !HasFailed()) {
            Note(std::fwrite(utterance.bytes.data(), 1, utterance.bytes.size(), m_file) ==
                 utterance.bytes.size());
        }
    }

    /// What is left leaves for the disk.
    void Close() {
        if (m_file != nullptr) {
            Note(std::fflush(m_file) == 0);
            if (m_file != stdout) {
                Note(std::fclose(m_file) == 0);
            }
            m_file = nullptr;
        }
    }

    bool IsOpen() const { return m_file != nullptr; }
    bool HasFailed() const { return m_error != 0; }
    int Error() const { return m_error; }

private:
    void Note(bool isGood) {
        if (!isGood && m_error == 0) {
            m_error = errno;
        }
    }

    std::FILE* m_file;
    int m_error = 0;
};

int Fail(const std::string& path, int error) {
    std::fprintf(stderr, "corvane-sim: %s: %s\n", path.c_str(), std::strerror(error));
    return 1;
}

} // namespace

int WriteCapture(const SOptions& options, const std::vector<std::string>& commands) {
    CCaptureFile file(options.captureFile);
    if (!file.IsOpen()) {
        return Fail(options.captureFile, errno);
    }
    const SReceiverSettings& settings = options.receiver;
    CFaults faults(options.faults, settings.seed, settings.start, file);
    CReceiver receiver(settings, faults);
    const Milliseconds start = SinceGPSEpoch(settings.start);
    for (const std::string& command : commands) {
        receiver.Hear(EPort::com1, command + "\r\n", start);
    }
    const Milliseconds end = start + options.duration.value_or(0);
    while (receiver.NextEvent() <= end && !file.HasFailed()) {
        receiver.Advance(receiver.NextEvent());
    }
    file.Close();
    return file.HasFailed() ? Fail(options.captureFile, file.Error()) : 0;
}

} // namespace Sim
