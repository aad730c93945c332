// What the process publishes, seen by a unit test without a hub.
#pragma once

#include "HubLink.h"
#include "LinkMessage.h"

#include <algorithm>
#include <string>
#include <vector>

/// While one of these lives it keeps every message that the process publishes.
class CPublished {
public:
    CPublished() {
        CHubLink::Get().SetTap(
            [this](const SLinkMessage& message) { m_messages.push_back(message); });
    }
    ~CPublished() { CHubLink::Get().SetTap(nullptr); }
    CPublished(const CPublished&) = delete;
    CPublished& operator=(const CPublished&) = delete;

    /// Each as "method members text", without its time, in order.
    std::vector<std::string> All() const {
        std::vector<std::string> lines;
        for (const SLinkMessage& message : m_messages) {
            lines.push_back(std::string(message.method) + " " + message.members + " " +
                            message.text);
        }
        return lines;
    }

    /// The texts of the messages whose method and members contain `part`.
    std::vector<std::string> Texts(const std::string& part) const {
        std::vector<std::string> texts;
        for (const SLinkMessage& message : m_messages) {
            if ((std::string(message.method) + " " + message.members).find(part) !=
                std::string::npos) {
                texts.push_back(message.text);
            }
        }
        return texts;
    }

    int Count(const std::string& part) const { return static_cast<int>(Texts(part).size()); }
    const std::vector<SLinkMessage>& Messages() const { return m_messages; }
    void Forget() { m_messages.clear(); }

private:
    std::vector<SLinkMessage> m_messages;
};
